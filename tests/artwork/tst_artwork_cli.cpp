// SPDX-License-Identifier: GPL-3.0-or-later
// tarnwell-cli artwork against the loopback stand-in for the web services.
#include "ArtworkTestUtil.h"
#include "artwork/ImageCodec.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace artworktest;
using testsupport::writeFile;

namespace {

const QColor red(220, 20, 20);
const QColor blue(30, 40, 230);

struct Run
{
    int exitCode = -1;
    QByteArray err;
};

} // namespace

class TestArtworkCli : public QObject
{
    Q_OBJECT

    FakeWebServer m_server;
    QTemporaryDir m_dir;

    // Runs the command while this process keeps serving the fake services.
    Run cli(const QStringList &args)
    {
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        const ArtworkServices s = servicesOf(m_server);
        env.insert(QStringLiteral("TARNWELL_MUSICBRAINZ_URL"), s.musicBrainz);
        env.insert(QStringLiteral("TARNWELL_COVERART_URL"), s.coverArt);
        env.insert(QStringLiteral("TARNWELL_WIKIPEDIA_URL"), s.wikipedia);
        env.insert(QStringLiteral("TARNWELL_COMMONS_URL"), s.commons);
        env.insert(QStringLiteral("TARNWELL_CONTACT_URL"), s.contact);
        p.setProcessEnvironment(env);
        QSignalSpy finished(&p, &QProcess::finished);
        p.start(QStringLiteral(TARNWELL_CLI), QStringList{QStringLiteral("artwork")} + args);
        if (!finished.wait(20000)) {
            p.kill();
            p.waitForFinished();
        }
        return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, p.readAllStandardError()};
    }

    QString out() const { return m_dir.filePath(QStringLiteral("out.jpg")); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(!qEnvironmentVariableIsEmpty("TARNWELL_TEST_ROOT"), "run me through tests/support/isolated.sh");
        QVERIFY(m_server.start());
    }

    void init()
    {
        m_server.reset();
        m_server.clearRequests();
        QFile::remove(out());
    }

    void albumFromTheCoverArtArchive()
    {
        m_server.script(QStringLiteral("mb"), {FakeWebServer::json(FakeWebServer::releases({QStringLiteral("r1")}))});
        m_server.script(QStringLiteral("caa"),
                        {FakeWebServer::image(FakeWebServer::png(FakeWebServer::solidImage(red, QSize(120, 90))))});

        const Run r = cli({QStringLiteral("--artist"), QStringLiteral("Salt & Cedar"), QStringLiteral("--album"),
                           QStringLiteral("Low/Tide"), QStringLiteral("--out"), out()});
        QCOMPARE(r.exitCode, 0);
        const std::optional<QImage> written = artwork::loadImageFile(out());
        QVERIFY(looksLike(written, red));
        QCOMPARE(written->size(), QSize(120, 90));
        QVERIFY(testsupport::readFile(out()).startsWith("\xff\xd8\xff"));
        QCOMPARE(trail(m_server),
                 (QStringList{QStringLiteral("mb /ws/2/release/?query=artist:%22Salt%20%26%20Cedar%22%20AND%20"
                                             "release:%22Low/Tide%22&fmt=json&limit=5"),
                              QStringLiteral("caa /release/r1/front")}));
        QCOMPARE(m_server.requests().first().headers.value("user-agent"),
                 QByteArray("Tarnwell/1.0 (") + contactUrl + ')');
        // The program's own copy, found next time without the network.
        const QString music = QStandardPaths::standardLocations(QStandardPaths::MusicLocation).value(0);
        QVERIFY(QFile::exists(music + QStringLiteral("/Salt & Cedar/Low-Tide/folder.jpg")));
        m_server.stop();
        QFile::remove(out());
        QCOMPARE(cli({QStringLiteral("--artist"), QStringLiteral("Salt & Cedar"), QStringLiteral("--album"),
                      QStringLiteral("Low/Tide"), QStringLiteral("--out"), out()})
                     .exitCode,
                 0);
        QVERIFY(looksLike(artwork::loadImageFile(out()), red));
        QVERIFY(m_server.start());
    }

    void artistFromWikipedia()
    {
        m_server.script(QStringLiteral("wiki"), {FakeWebServer::json(FakeWebServer::pageImages(
                                                    m_server.serviceUrl(QStringLiteral("upload")) + "/t.png"))});
        m_server.script(QStringLiteral("upload"), {FakeWebServer::image(FakeWebServer::png(FakeWebServer::solidImage(blue)))});
        QCOMPARE(cli({QStringLiteral("--artist"), QStringLiteral("Low"), QStringLiteral("--out"), out()}).exitCode, 0);
        QVERIFY(looksLike(artwork::loadImageFile(out()), blue));
    }

    void songPictureBesideTheFile()
    {
        const QString song = writeFile(m_dir.path(), QStringLiteral("album/one.flac"), "x");
        writeFile(m_dir.path(), QStringLiteral("album/cover.png"), FakeWebServer::png(FakeWebServer::solidImage(blue)));
        QCOMPARE(cli({QStringLiteral("--file"), song, QStringLiteral("--out"), out()}).exitCode, 0);
        QVERIFY(looksLike(artwork::loadImageFile(out()), blue));
        QCOMPARE(m_server.requests().size(), 0);
    }

    void nothingFound()
    {
        const Run r = cli({QStringLiteral("--album"), QStringLiteral("Nowhere"), QStringLiteral("--out"), out()});
        QCOMPARE(r.exitCode, 1);
        QVERIFY(r.err.contains("no picture found"));
        QVERIFY(!QFile::exists(out()));
    }

    void badArguments_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("exitCode");
        QTest::newRow("no output") << QStringList{"--artist", "A"} << 2;
        QTest::newRow("nothing to look for") << QStringList{"--out", "x.jpg"} << 2;
        QTest::newRow("unknown option") << QStringList{"--artist", "A", "--size", "3", "--out", "x.jpg"} << 2;
        QTest::newRow("missing value") << QStringList{"--out", "x.jpg", "--artist"} << 2;
        QTest::newRow("no such song") << QStringList{"--file", "/nonexistent.flac", "--out", "x.jpg"} << 1;
    }

    void badArguments()
    {
        QFETCH(QStringList, args);
        QFETCH(int, exitCode);
        const Run r = cli(args);
        QCOMPARE(r.exitCode, exitCode);
        QVERIFY(!r.err.isEmpty());
        QCOMPARE(m_server.requests().size(), 0);
    }
};

QTEST_GUILESS_MAIN(TestArtworkCli)
#include "tst_artwork_cli.moc"
