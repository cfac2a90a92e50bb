// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/TestSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using testsupport::run;

namespace {

QJsonDocument cli(const QStringList &args)
{
    const testsupport::ToolResult r = run(QStringLiteral(TARNWELL_CLI), args);
    if (r.exitCode != 0)
        qWarning() << "tarnwell-cli" << args << "exited with" << r.exitCode << r.err;
    return QJsonDocument::fromJson(r.out);
}

QStringList strings(const QJsonValue &array, const QString &key = {})
{
    QStringList out;
    for (const QJsonValue &v : array.toArray())
        out.append(key.isEmpty() ? v.toString() : v.toObject().value(key).toString());
    return out;
}

} // namespace

class TestBrowseCli : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private Q_SLOTS:
    // Tags written by another tool; files that aren't songs are skipped and
    // songs that aren't audio are found by their names.
    void groupsAndSearches()
    {
        const QString dir = m_dir.path();
        QStringList paths;
        for (const auto &[file, artist, album] : {std::tuple{"01 Dawn.flac", "NOVA", "First Light"},
                                                  {"02 Noon.flac", "Nova", "First Light"},
                                                  {"03 Dusk.flac", " Alder ", "Evening"}}) {
            paths.append(dir + u'/' + QLatin1StringView(file));
            QVERIFY(testsupport::makeAudio(paths.last(), 0.1));
            QCOMPARE(run(QStringLiteral("metaflac"), {QStringLiteral("--set-tag=ARTIST=") + artist,
                                                      QStringLiteral("--set-tag=ALBUM=") + album, paths.last()})
                         .exitCode,
                     0);
        }
        const QString heart = testsupport::writeFile(dir, QStringLiteral("b/heartbeat.mp3"), "not audio");
        const QString beat = testsupport::writeFile(dir, QStringLiteral("a/Beat It.flac"), "not audio");
        testsupport::writeFile(dir, QStringLiteral("beat.txt"), "not a song");

        const QJsonArray artists = cli({ QStringLiteral("artists"), dir }).array();
        QCOMPARE(strings(artists, QStringLiteral("name")), (QStringList { "Alder", "NOVA" }));
        QCOMPARE(strings(artists.at(1).toObject().value(u"tracks")), paths.mid(0, 2));

        const QJsonObject r = cli({ QStringLiteral("search"), dir, QStringLiteral("first") }).object();
        QCOMPARE(r.keys(), (QStringList { "albums", "artists", "tracks" }));
        const QJsonObject album = r.value(u"albums").toArray().at(0).toObject();
        QCOMPARE(album.value(u"id").toString(), QStringLiteral("nova::first light"));
        QCOMPARE(album.value(u"displayName").toString(), QStringLiteral("First Light"));
        QCOMPARE(album.value(u"artist").toString(), QStringLiteral("NOVA"));
        QCOMPARE(strings(album.value(u"tracks")), paths.mid(0, 2));

        const QJsonObject nova = cli({ QStringLiteral("search"), dir, QStringLiteral("nov") }).object();
        const QJsonObject artist = nova.value(u"artists").toArray().at(0).toObject();
        QCOMPARE(artist.value(u"name").toString(), QStringLiteral("NOVA"));
        QCOMPARE(artist.value(u"trackCount").toInt(), 2);

        const QJsonObject byName = cli({ QStringLiteral("search"), dir, QStringLiteral("  BEAT ") }).object();
        QCOMPARE(strings(byName.value(u"tracks"), QStringLiteral("path")), (QStringList { beat, heart }));
        QCOMPARE(strings(byName.value(u"tracks"), QStringLiteral("name")), (QStringList { "Beat It", "heartbeat" }));
    }

    void badArguments_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("exitCode");
        QTest::newRow("search without query") << QStringList { "search", "/" } << 2;
        QTest::newRow("artists with two folders") << QStringList { "artists", "/", "/" } << 2;
        QTest::newRow("search in a missing folder") << QStringList { "search", "/no/such/folder", "x" } << 1;
        QTest::newRow("artists of a file") << QStringList { "artists", QStringLiteral(TARNWELL_CLI) } << 1;
    }

    void badArguments()
    {
        QFETCH(QStringList, args);
        const testsupport::ToolResult r = run(QStringLiteral(TARNWELL_CLI), args);
        QTEST(r.exitCode, "exitCode");
        QVERIFY(r.out.isEmpty());
        QVERIFY(!r.err.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestBrowseCli)
#include "tst_browse_cli.moc"
