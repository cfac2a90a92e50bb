// SPDX-License-Identifier: GPL-3.0-or-later
// tarnwell-cli as a script uses it: file names that are not UTF-8 through every
// command, help, and what each command says about paths it can't use.
#include "model/LocalPath.h"
#include "support/TestSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using localpath::fromBytes;
using testsupport::run;
using testsupport::ToolResult;

namespace {

const QString cli = QStringLiteral(TARNWELL_CLI);

// Root reads every folder whatever its permissions; without these two
// capabilities it reads as everyone else does.
ToolResult runWithoutOverride(const QStringList &args)
{
    if (::geteuid() != 0)
        return run(cli, args);
    return run(QStringLiteral("setpriv"),
               QStringList { QStringLiteral("--bounding-set=-dac_override,-dac_read_search"), cli } + args);
}

QJsonObject jsonLine(const QByteArray &line)
{
    return QJsonDocument::fromJson(line).object();
}

QStringList strings(const QJsonValue &array)
{
    QStringList out;
    for (const QJsonValue &v : array.toArray())
        out.append(v.toString());
    return out;
}

QString peerTag(const QString &path, const char *name)
{
    const ToolResult r = run(QStringLiteral("ffprobe"),
                             { QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_entries"),
                               QStringLiteral("format_tags=") + QLatin1StringView(name), QStringLiteral("-of"),
                               QStringLiteral("default=nw=1:nk=1"), path });
    return QString::fromUtf8(r.out).trimmed();
}

} // namespace

class TestCli : public QObject
{
    Q_OBJECT

    QString m_root;
    QString m_music;

    // A song of the library fixture: its exact path, the path and URL the JSON
    // gives for it, and the tags it was made with.
    struct Song
    {
        QString path;
        QString shown;
        QByteArray url;
        QString artist;
    };
    QList<Song> m_songs;

    Song song(const QByteArray &relative, const QString &shownRelative, const QByteArray &urlRelative,
              const QString &artist = {})
    {
        return { fromBytes(localpath::toBytes(m_music) + '/' + relative), m_music + u'/' + shownRelative,
                 QByteArray("file://") + QUrl::toPercentEncoding(m_music, "/") + '/' + urlRelative, artist };
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_root = qEnvironmentVariable("TARNWELL_TEST_ROOT", QDir::tempPath());
        m_music = m_root + QStringLiteral("/library");
        m_songs = {
            song("Bj\xf6rk/caf\xe9.flac", u"Bj\uFFFDrk/caf\uFFFD.flac"_qs, "Bj%F6rk/caf%E9.flac", u"Nadia Lund"_qs),
            song("Bj\xf6rk/\x93night\x94.mp3", u"Bj\uFFFDrk/\uFFFDnight\uFFFD.mp3"_qs, "Bj%F6rk/%93night%94.mp3",
                 u"Nadia Lund"_qs),
            song("na\xefve \xc3\xa9.wav", u"na\uFFFDve é.wav"_qs, "na%EFve%20%C3%A9.wav"),
        };
        QVERIFY(testsupport::makeAudio(m_songs[0].path));
        QCOMPARE(run(QStringLiteral("metaflac"),
                     { QStringLiteral("--set-tag=ARTIST=Nadia Lund"), QStringLiteral("--set-tag=TITLE=Café"),
                       m_songs[0].path })
                     .exitCode,
                 0);
        QCOMPARE(run(QStringLiteral("ffmpeg"),
                     { "-nostdin", "-v", "error", "-f", "lavfi", "-i", "sine=duration=1", "-metadata",
                       "artist=Nadia Lund", "-metadata", "title=Night", "-c:a", "libmp3lame", m_songs[1].path })
                     .exitCode,
                 0);
        QVERIFY(testsupport::makeAudio(m_songs[2].path));
    }

    // Each song is found, read, written, searched, grouped and played by the
    // name the file system gave it.
    void namesThatAreNotUtf8()
    {
        ToolResult r = run(cli, { QStringLiteral("scan"), m_music });
        QCOMPARE(r.exitCode, 0);
        QList<QByteArray> lines = r.out.split('\n');
        QCOMPARE(lines.takeLast(), QByteArray());
        std::sort(lines.begin(), lines.end());
        QList<QByteArray> made;
        for (const Song &s : std::as_const(m_songs))
            made.append(localpath::toBytes(s.path));
        std::sort(made.begin(), made.end());
        QCOMPARE(lines, made);

        for (const Song &s : std::as_const(m_songs)) {
            r = run(cli, { QStringLiteral("tags"), s.path });
            QCOMPARE(r.exitCode, 0);
            const QJsonObject tags = jsonLine(r.out);
            QCOMPARE(tags.value(u"path").toString(), s.shown);
            QCOMPARE(tags.value(u"url").toString().toLatin1(), s.url);
            QCOMPARE(tags.value(u"artist").toString(), s.artist);
            QVERIFY(tags.value(u"duration").toDouble() > 0.9);
            // The URL names the same file.
            QCOMPARE(run(cli, { QStringLiteral("tags"), tags.value(u"url").toString() }).out, r.out);
        }

        // Written by path and by URL, read back by other tools.
        r = run(cli, { QStringLiteral("write"), m_songs[0].path, QString::fromLatin1(m_songs[1].url),
                       QStringLiteral("--album"), QStringLiteral("Harbour Songs") });
        QVERIFY2(r.exitCode == 0, r.err.constData());
        QCOMPARE(run(QStringLiteral("metaflac"), { QStringLiteral("--show-tag=ALBUM"), m_songs[0].path }).out,
                 QByteArray("ALBUM=Harbour Songs\n"));
        QCOMPARE(peerTag(m_songs[1].path, "album"), u"Harbour Songs"_qs);
        QCOMPARE(peerTag(m_songs[1].path, "title"), u"Night"_qs);

        r = run(cli, { QStringLiteral("search"), m_music, QStringLiteral("harbour") });
        QCOMPARE(r.exitCode, 0);
        const QJsonArray albums = jsonLine(r.out).value(u"albums").toArray();
        QCOMPARE(albums.size(), 1);
        QCOMPARE(albums[0].toObject().value(u"artist").toString(), u"Nadia Lund"_qs);
        QCOMPARE(strings(albums[0].toObject().value(u"urls")).size(), 2);
        r = run(cli, { QStringLiteral("search"), m_music, QStringLiteral("night") });
        const QJsonArray tracks = jsonLine(r.out).value(u"tracks").toArray();
        QCOMPARE(tracks.size(), 1);
        QCOMPARE(tracks[0].toObject().value(u"name").toString(), u"\uFFFDnight\uFFFD"_qs);
        QCOMPARE(tracks[0].toObject().value(u"artist").toString(), u"Nadia Lund"_qs);
        QCOMPARE(tracks[0].toObject().value(u"url").toString().toLatin1(), m_songs[1].url);

        r = run(cli, { QStringLiteral("artists"), m_music });
        QCOMPARE(r.exitCode, 0);
        const QJsonArray groups = QJsonDocument::fromJson(r.out).array();
        QCOMPARE(groups.size(), 1);
        QCOMPARE(groups[0].toObject().value(u"name").toString(), u"Nadia Lund"_qs);
        QStringList urls = strings(groups[0].toObject().value(u"urls"));
        std::sort(urls.begin(), urls.end());
        QCOMPARE(urls, (QStringList { QString::fromLatin1(m_songs[1].url), QString::fromLatin1(m_songs[0].url) }));
        QCOMPARE(strings(groups[0].toObject().value(u"tracks")).size(), 2);

        r = run(cli, { QStringLiteral("play"), m_songs[2].path, m_songs[0].path });
        QVERIFY2(r.exitCode == 0, r.err.constData());
        const qsizetype first = r.out.indexOf("playing " + m_songs[2].shown.toUtf8() + '\n');
        QVERIFY2(first >= 0 && r.out.indexOf("playing " + m_songs[0].shown.toUtf8() + '\n', first) > first,
                 r.out.constData());
    }

    void helpAndUsage_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<bool>("onStdout");
        QTest::addColumn<QByteArray>("starts");
        const QByteArray overview = "usage: tarnwell-cli COMMAND [ARGUMENT...]\n";
        QTest::newRow("--help") << QStringList { "--help" } << 0 << true << overview;
        QTest::newRow("-h") << QStringList { "-h" } << 0 << true << overview;
        QTest::newRow("nothing") << QStringList {} << 2 << false << overview;
        QTest::newRow("unknown command") << QStringList { "frob" } << 2 << false
                                         << QByteArray("tarnwell-cli: unknown command 'frob'\n" + overview);
        QTest::newRow("scan --help") << QStringList { "scan", "--help" } << 0 << true
                                     << QByteArray("usage: tarnwell-cli scan DIR\n\nLists");
        QTest::newRow("tags -h after files") << QStringList { "tags", "a.mp3", "-h" } << 0 << true
                                             << QByteArray("usage: tarnwell-cli tags FILE...\n");
        QTest::newRow("artwork -h") << QStringList { "artwork", "-h" } << 0 << true
                                    << QByteArray("usage: tarnwell-cli artwork [--artist A]");
        QTest::newRow("a title that reads --help") << QStringList { "write", "/none.mp3", "--title", "--help" } << 1
                                                   << false
                                                   << QByteArray("tarnwell-cli: /none.mp3: there is no such file\n");
        QTest::newRow("--help after --") << QStringList { "tags", "--", "--help" } << 1 << false
                                         << QByteArray("tarnwell-cli: ");
        QTest::newRow("unknown option") << QStringList { "play", "--loud", "a.wav" } << 2 << false
                                        << QByteArray("tarnwell-cli: play: unknown option '--loud'\n"
                                                      "usage: tarnwell-cli play [--shuffle]");
        QTest::newRow("flag with a value") << QStringList { "play", "--shuffle=yes", "a.wav" } << 2 << false
                                           << QByteArray("tarnwell-cli: play: --shuffle takes no value\n");
        QTest::newRow("value missing") << QStringList { "write", "a.mp3", "--album" } << 2 << false
                                       << QByteArray("tarnwell-cli: write: --album needs a value\n");
        QTest::newRow("two folders") << QStringList { "scan", "/", "/" } << 2 << false
                                     << QByteArray("tarnwell-cli: scan: give one folder\n");
        QTest::newRow("no query") << QStringList { "search", "/" } << 2 << false
                                  << QByteArray("tarnwell-cli: search: give a folder and a query\n");
    }

    void helpAndUsage()
    {
        QFETCH(QStringList, args);
        QFETCH(bool, onStdout);
        QFETCH(QByteArray, starts);
        const ToolResult r = run(cli, args);
        QTEST(r.exitCode, "exitCode");
        QVERIFY2((onStdout ? r.out : r.err).startsWith(starts), (onStdout ? r.out : r.err).constData());
        QVERIFY((onStdout ? r.err : r.out).isEmpty());
    }

    // What a command says of a path it can't use, on stderr, with exit 1.
    void pathProblems_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("named");
        QTest::addColumn<QString>("says");
        QTest::addColumn<bool>("printsOutput");
        const QString dir = m_root + QStringLiteral("/problems");
        const QString locked = dir + QStringLiteral("/locked");
        const QString song = testsupport::writeFile(dir, fromBytes("open/a\xe9.mp3"), "not audio");
        testsupport::writeFile(locked, QStringLiteral("hidden.mp3"));
        ::chmod(localpath::toBytes(locked).constData(), 0);
        const QString open = dir + QStringLiteral("/open");
        const QString missing = dir + QStringLiteral("/missing");
        const QString noFolder = QStringLiteral("there is no such folder");
        const QString unreadable = QStringLiteral("the folder cannot be read (Permission denied)");
        QTest::newRow("scan of a missing folder") << QStringList { "scan", missing } << missing << noFolder << false;
        QTest::newRow("scan of a file") << QStringList { "scan", song } << song
                                        << u"it is a file, not a folder"_qs << false;
        QTest::newRow("scan of an unreadable folder") << QStringList { "scan", locked } << locked << unreadable << false;
        QTest::newRow("scan passing over one") << QStringList { "scan", dir } << locked
                                               << unreadable + u"; its songs are left out"_qs << true;
        QTest::newRow("search in a missing folder") << QStringList { "search", missing, "x" } << missing << noFolder
                                                    << false;
        QTest::newRow("artists passing over one") << QStringList { "artists", dir } << locked
                                                  << unreadable + u"; its songs are left out"_qs << true;
        QTest::newRow("tags of a folder") << QStringList { "tags", open } << open << u"it is a folder, not a file"_qs
                                          << false;
        QTest::newRow("tags of a missing file") << QStringList { "tags", missing } << missing
                                                << u"there is no such file"_qs << false;
        QTest::newRow("play of a folder") << QStringList { "play", open } << open << u"it is a folder, not a file"_qs
                                          << false;
        QTest::newRow("play of what isn't audio") << QStringList { "play", song } << song
                                                  << u"the file cannot be played"_qs << false;
        QTest::newRow("a URL of no file") << QStringList { "tags", "file:///none%E9.mp3" } << fromBytes("/none\xe9.mp3")
                                          << u"there is no such file"_qs << false;
    }

    void pathProblems()
    {
        QFETCH(QStringList, args);
        QFETCH(QString, named);
        QFETCH(QString, says);
        QFETCH(bool, printsOutput);
        const ToolResult r = runWithoutOverride(args);
        QCOMPARE(r.exitCode, 1);
        const QByteArray line = "tarnwell-cli: " + localpath::readable(named).toUtf8() + ": " + says.toUtf8() + '\n';
        QVERIFY2(r.err.contains(line), r.err.constData());
        QCOMPARE(!r.out.isEmpty(), printsOutput);
    }
};

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"
