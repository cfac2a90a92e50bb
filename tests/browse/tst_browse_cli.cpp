// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/TestSupport.h"
#include "tags/TagReader.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using testsupport::run;
using testsupport::writeFile;

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
    void searchesFileNames()
    {
        const QString heart
            = writeFile(m_dir.path(), QStringLiteral("untagged/b/heartbeat.mp3"), "not audio");
        const QString beat = writeFile(m_dir.path(), QStringLiteral("untagged/a/Beat It.flac"), "not audio");
        writeFile(m_dir.path(), QStringLiteral("untagged/quiet.wav"), "not audio");
        writeFile(m_dir.path(), QStringLiteral("untagged/beat.txt"), "not a song");

        const QJsonObject r = cli({ QStringLiteral("search"), m_dir.filePath(QStringLiteral("untagged")),
                                      QStringLiteral("  BEAT ") })
                                  .object();
        QCOMPARE(r.keys(), (QStringList { "albums", "artists", "tracks" }));
        QCOMPARE(strings(r.value(u"tracks"), QStringLiteral("path")), (QStringList { beat, heart }));
        QCOMPARE(
            strings(r.value(u"tracks"), QStringLiteral("name")), (QStringList { "Beat It", "heartbeat" }));
        QCOMPARE(r.value(u"artists").toArray().size(), 0);

        const QJsonDocument artists
            = cli({ QStringLiteral("artists"), m_dir.filePath(QStringLiteral("untagged")) });
        QVERIFY(artists.isArray());
        QCOMPARE(artists.array().size(), 0);
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

    void groupsAndSearchesRealTags()
    {
        if (!testsupport::haveTool(QStringLiteral("metaflac")))
            QSKIP("metaflac is not installed");
        const QString dir = m_dir.filePath(QStringLiteral("tagged"));
        struct Song
        {
            const char *file, *artist, *album;
        };
        const Song songs[] = { { "01 Dawn.flac", "NOVA", "First Light" },
            { "02 Noon.flac", "Nova", "First Light" }, { "03 Dusk.flac", " Alder ", "Evening" } };
        QStringList paths;
        for (const Song &s : songs) {
            const QString path = dir + u'/' + QLatin1StringView(s.file);
            QVERIFY(testsupport::makeAudio(path, 0.1));
            QCOMPARE(run(QStringLiteral("metaflac"),
                         { QStringLiteral("--set-tag=ARTIST=%1").arg(QLatin1StringView(s.artist)),
                             QStringLiteral("--set-tag=ALBUM=%1").arg(QLatin1StringView(s.album)), path })
                         .exitCode,
                0);
            paths.append(path);
        }
        if (!readMetadata(paths.first()).artist)
            QSKIP("the tag reader does not read FLAC tags yet");

        const QJsonArray artists = cli({ QStringLiteral("artists"), dir }).array();
        QCOMPARE(strings(artists, QStringLiteral("name")), (QStringList { "Alder", "NOVA" }));
        QCOMPARE(strings(artists.at(1).toObject().value(u"tracks")), paths.mid(0, 2));

        const QJsonObject r = cli({ QStringLiteral("search"), dir, QStringLiteral("first") }).object();
        const QJsonObject album = r.value(u"albums").toArray().at(0).toObject();
        QCOMPARE(album.value(u"id").toString(), QStringLiteral("nova::first light"));
        QCOMPARE(album.value(u"displayName").toString(), QStringLiteral("First Light"));
        QCOMPARE(album.value(u"artist").toString(), QStringLiteral("NOVA"));
        QCOMPARE(strings(album.value(u"tracks")), paths.mid(0, 2));

        const QJsonObject nova = cli({ QStringLiteral("search"), dir, QStringLiteral("nov") }).object();
        const QJsonObject artist = nova.value(u"artists").toArray().at(0).toObject();
        QCOMPARE(artist.value(u"name").toString(), QStringLiteral("NOVA"));
        QCOMPARE(artist.value(u"trackCount").toInt(), 2);
    }
};

QTEST_GUILESS_MAIN(TestBrowseCli)
#include "tst_browse_cli.moc"
