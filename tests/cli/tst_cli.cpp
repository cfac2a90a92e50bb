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

} // namespace

class TestCli : public QObject
{
    Q_OBJECT

    QString m_music;

    // A song of the fixture: its exact path, and the path and URL the JSON gives.
    struct Song
    {
        QString path;
        QString shown;
        QByteArray url;
    };
    QList<Song> m_songs;

    Song song(const QByteArray &relative, const QString &shownRelative, const QByteArray &urlRelative)
    {
        return { fromBytes(localpath::toBytes(m_music) + '/' + relative), m_music + u'/' + shownRelative,
            QByteArray("file://") + QUrl::toPercentEncoding(m_music, "/") + '/' + urlRelative };
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_music = qEnvironmentVariable("TARNWELL_TEST_ROOT", QDir::tempPath()) + QStringLiteral("/library");
        m_songs = {
            song("Bj\xf6rk/caf\xe9.flac", u"Bj\uFFFDrk/caf\uFFFD.flac"_qs, "Bj%F6rk/caf%E9.flac"),
            song("Bj\xf6rk/\x93night\x94.mp3", u"Bj\uFFFDrk/\uFFFDnight\uFFFD.mp3"_qs,
                "Bj%F6rk/%93night%94.mp3"),
            song("na\xefve \xc3\xa9.wav", u"na\uFFFDve é.wav"_qs, "na%EFve%20%C3%A9.wav"),
        };
        for (const Song &s : std::as_const(m_songs))
            QVERIFY(testsupport::makeAudio(s.path));
    }

    // Each song is found, read, written, grouped and played by the name the
    // file system gave it (search and grouping themselves: tst_browse_cli).
    void namesThatAreNotUtf8()
    {
        ToolResult r = run(cli, { "scan", m_music });
        QCOMPARE(r.exitCode, 0);
        QList<QByteArray> lines = r.out.trimmed().split('\n');
        std::sort(lines.begin(), lines.end());
        for (const Song &s : std::as_const(m_songs)) // in byte order
            QCOMPARE(lines.takeFirst(), localpath::toBytes(s.path));

        // Written by path and by URL, read back by ourselves and by another tool.
        r = run(cli, { "write", m_songs[0].path, QString::fromLatin1(m_songs[1].url), "--artist", "Lund" });
        QVERIFY2(r.exitCode == 0, r.err.constData());
        QCOMPARE(
            run(QStringLiteral("metaflac"), { "--show-tag=ARTIST", m_songs[0].path }).out, "ARTIST=Lund\n");
        for (const Song &s : std::as_const(m_songs)) {
            r = run(cli, { "tags", s.path });
            QCOMPARE(r.exitCode, 0);
            const QJsonObject tags = jsonLine(r.out);
            QCOMPARE(tags.value(u"path").toString(), s.shown);
            QCOMPARE(tags.value(u"url").toString().toLatin1(), s.url);
            QCOMPARE(tags.value(u"artist").toString(), s.path.endsWith(u".wav") ? QString() : u"Lund"_qs);
            // The URL names the same file.
            QCOMPARE(run(cli, { "tags", tags.value(u"url").toString() }).out, r.out);
        }

        const QJsonArray groups = QJsonDocument::fromJson(run(cli, { "artists", m_music }).out).array();
        QCOMPARE(groups.size(), 1);
        QStringList urls = groups[0].toObject().value(u"urls").toVariant().toStringList();
        urls.sort();
        QCOMPARE(
            urls, (QStringList { QString::fromLatin1(m_songs[1].url), QString::fromLatin1(m_songs[0].url) }));

        r = run(cli, { "play", m_songs[2].path, m_songs[0].path });
        QVERIFY2(r.exitCode == 0, r.err.constData());
        const qsizetype first = r.out.indexOf("playing " + m_songs[2].shown.toUtf8() + '\n');
        QVERIFY2(first >= 0 && r.out.indexOf("playing " + m_songs[0].shown.toUtf8() + '\n', first) > first,
            r.out.constData());
    }

    // A command loads only what it needs: TagLib (with the module that holds
    // it) only for formats our own parsers don't read whole, GStreamer and Qt
    // GUI only to play or find pictures.
    void loadsOnlyWhatItNeeds_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QStringList>("loaded");
        QTest::addColumn<QStringList>("notLoaded");
        const auto row = [](const char *what, const QStringList &args, const QStringList &loaded,
                             const QStringList &notLoaded) { QTest::newRow(what) << args << loaded << notLoaded; };
        const QStringList media { "libgst", "libQt6Gui", "libavformat" };
        const QStringList taglib { "/tarnwell-cli-library.so", "libtag.so" };
        row("scan", { "scan", m_music }, {}, taglib + media);
        row("tags of FLAC", { "tags", m_songs[0].path }, {}, taglib + media);
        row("tags of MP3", { "tags", m_songs[0].path, m_songs[1].path }, taglib, media);
        row("artists", { "artists", m_music }, taglib, media);
        row("play", { "play", m_songs[2].path }, media, {});
    }

    void loadsOnlyWhatItNeeds()
    {
        QFETCH(QStringList, args);
        QFETCH(QStringList, loaded);
        QFETCH(QStringList, notLoaded);
        // The dynamic loader names each file it opens.
        const ToolResult r = run(QStringLiteral("env"), QStringList { "LD_DEBUG=files", cli } + args);
        QCOMPARE(r.exitCode, 0);
        const auto opened = [&r](const QString &name) { return r.err.contains(name.toUtf8()); };
        for (const QString &name : loaded)
            QVERIFY2(opened(name), qPrintable(name + u" was not loaded"_qs));
        for (const QString &name : notLoaded)
            QVERIFY2(!opened(name), qPrintable(name + u" was loaded"_qs));
    }

    void helpAndUsage_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("exitCode"); // 0: the text is on stdout, else on stderr
        QTest::addColumn<QByteArray>("says");
        const auto row = [](const char *what, const QStringList &args, int code, const QByteArray &says) {
            QTest::newRow(what) << args << code << says;
        };
        const QByteArray overview = "usage: tarnwell-cli COMMAND [ARGUMENT...]\n";
        row("nothing", {}, 2, overview);
        row("unknown command", { "frob" }, 2, "tarnwell-cli: unknown command 'frob'\n" + overview);
        row("tags -h after files", { "tags", "a.mp3", "-h" }, 0, "usage: tarnwell-cli tags FILE...\n");
        row("a title that reads --help", { "write", "/none.mp3", "--title", "--help" }, 1,
            "/none.mp3: there");
        row("--help after --", { "tags", "--", "--help" }, 1, "tarnwell-cli: ");
        row("unknown option", { "play", "--loud", "a.wav" }, 2, "play: unknown option '--loud'\n");
        row("flag with a value", { "play", "--shuffle=yes", "a.wav" }, 2, "play: --shuffle takes no value");
        row("value missing", { "write", "a.mp3", "--album" }, 2, "write: --album needs a value\n");
    }

    void helpAndUsage()
    {
        QFETCH(QStringList, args);
        QFETCH(int, exitCode);
        QFETCH(QByteArray, says);
        const ToolResult r = run(cli, args);
        QCOMPARE(r.exitCode, exitCode);
        QVERIFY2((exitCode == 0 ? r.out : r.err).contains(says), (r.out + r.err).constData());
        QVERIFY((exitCode == 0 ? r.err : r.out).isEmpty());
    }

    // What a command says of a path it can't use, on stderr, with exit 1; only
    // a folder passed over leaves the rest of the output.
    void pathProblems_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("named");
        QTest::addColumn<QString>("says");
        const auto row = [](const char *what, const QStringList &args, const QString &named,
                             const QString &says) { QTest::newRow(what) << args << named << says; };
        const QString dir = m_music + QStringLiteral("-problems");
        const QString locked = dir + QStringLiteral("/locked");
        const QString song = testsupport::writeFile(dir, fromBytes("open/a\xe9.mp3"), "not audio");
        testsupport::writeFile(locked, QStringLiteral("hidden.mp3"));
        ::chmod(localpath::toBytes(locked).constData(), 0);
        const QString missing = dir + QStringLiteral("/missing");
        const QString fifo = dir + QStringLiteral("/fifo.mp3");
        ::mkfifo(localpath::toBytes(fifo).constData(), 0644);
        const QString unreadable = QStringLiteral("the folder cannot be read (Permission denied)");
        row("scan of a missing folder", { "scan", missing }, missing, "there is no such folder");
        row("scan of a file", { "scan", song }, song, "it is a file, not a folder");
        row("scan passing over one", { "scan", dir }, locked, unreadable + u"; its songs are left out"_qs);
        row("tags of a FIFO", { "tags", fifo }, fifo, "it is not a regular file");
        row("tags of a folder", { "tags", dir }, dir, "it is a folder, not a file");
        row("play of what isn't audio", { "play", song }, song, "the file cannot be played");
        row("a URL of no file", { "tags", "file:///none%E9.mp3" }, fromBytes("/none\xe9.mp3"),
            "there is no such file");
    }

    void pathProblems()
    {
        QFETCH(QStringList, args);
        QFETCH(QString, named);
        QFETCH(QString, says);
        const ToolResult r = runWithoutOverride(args);
        QCOMPARE(r.exitCode, 1);
        const QByteArray line
            = "tarnwell-cli: " + localpath::readable(named).toUtf8() + ": " + says.toUtf8() + '\n';
        QVERIFY2(r.err.contains(line), r.err.constData());
        QCOMPARE(!r.out.isEmpty(), says.endsWith(u"left out"));
    }
};

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"
