// SPDX-License-Identifier: GPL-3.0-or-later
// What the desktop hands Tarnwell: folders and songs to open (from the command
// line or a second start), and the songs it offers Tarnwell for, as the desktop
// entry and the AppStream data declare them.
#include "SingleInstance.h"
#include "library/FolderScan.h"
#include "model/LocalPath.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

using testsupport::writeFile;

namespace {

// The source tree's data folder, where the desktop entry and metainfo live.
const QString dataFolder = QStringLiteral(TARNWELL_DATA_DIR);

QStringList desktopMimeTypes()
{
    QFile file(dataFolder + QStringLiteral("/org.tarnwell.tarnwell.desktop"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith("MimeType="))
            return QString::fromUtf8(line.mid(9)).split(u';', Qt::SkipEmptyParts);
    }
    return {};
}

QStringList metainfoMediaTypes()
{
    QFile file(dataFolder + QStringLiteral("/org.tarnwell.tarnwell.metainfo.xml"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList types;
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == u"mediatype")
            types.append(xml.readElementText());
    }
    return types;
}

} // namespace

class TestDesktopIntegration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_root.isValid());
        m_base = QDir(QFileInfo(m_root.path()).canonicalFilePath());
        // Songs, a text file, a nested album, and a folder whose name starts
        // with another's.
        for (const char *path :
            { "Music/Album/01 One.flac", "Music/Album/02 Two.MP3", "Music/Album/notes.txt",
                "Music/Album/Disc 2/01 Three.m4a", "Elsewhere/04 Four.wav", "Music2/05 Five.flac" })
            writeFile(m_base.path(), QString::fromLatin1(path));
    }

    void planOpen_data()
    {
        QTest::addColumn<QStringList>("given");
        QTest::addColumn<QStringList>("folders");
        QTest::addColumn<QString>("song");
        QTest::addColumn<QString>("songFolder");

        QTest::newRow("a folder") << QStringList { "Music" } << QStringList { "Music" } << ""
                                  << "";
        QTest::newRow("a song: its folder, then it plays")
            << QStringList { "Music/Album/01 One.flac" } << QStringList { "Music/Album" }
            << "Music/Album/01 One.flac"
            << "Music/Album";
        QTest::newRow("two songs of one folder: the folder once, the first plays")
            << QStringList { "Music/Album/02 Two.MP3", "Music/Album/01 One.flac" }
            << QStringList { "Music/Album" } << "Music/Album/02 Two.MP3"
            << "Music/Album";
        QTest::newRow("a song inside a folder given: that folder brings it in")
            << QStringList { "Music/Album/Disc 2/01 Three.m4a", "Music" } << QStringList { "Music" }
            << "Music/Album/Disc 2/01 Three.m4a"
            << "Music";
        QTest::newRow("songs of two folders")
            << QStringList { "Elsewhere/04 Four.wav", "Music/Album/01 One.flac" }
            << QStringList { "Elsewhere", "Music/Album" } << "Elsewhere/04 Four.wav"
            << "Elsewhere";
        QTest::newRow("a folder does not hold its name's extensions")
            << QStringList { "Music", "Music2/05 Five.flac" } << QStringList { "Music", "Music2" }
            << "Music2/05 Five.flac"
            << "Music2";
        QTest::newRow("not a song, missing, a bare prefix: nothing")
            << QStringList { "Music/Album/notes.txt", "Music/Gone", "Mus" } << QStringList {} << ""
            << "";
    }

    // What a command line or a desktop's Open asks for: the folders to import
    // and the song to play, spelled as the scan will spell them.
    void planOpen()
    {
        QFETCH(QStringList, given);
        QFETCH(QStringList, folders);
        QFETCH(QString, song);
        QFETCH(QString, songFolder);

        QList<QUrl> urls;
        for (const QString &path : given)
            urls.append(QUrl::fromLocalFile(m_base.filePath(path)));
        const OpenPlan plan = SingleInstance::planOpen(urls);

        QList<QUrl> expectedFolders;
        for (const QString &folder : folders)
            expectedFolders.append(url(folder));
        QCOMPARE(plan.folders, expectedFolders);
        QCOMPARE(plan.song.value_or(QUrl()), song.isEmpty() ? QUrl() : url(song));
        QCOMPARE(plan.songFolder, songFolder.isEmpty() ? QUrl() : url(songFolder));
    }

    // A song's URL equals the one the import gives the track, or it never plays.
    void plannedSongIsTheScannedOne()
    {
        const OpenPlan plan
            = SingleInstance::planOpen({ QUrl::fromLocalFile(m_base.filePath("Music/./Album/01 One.flac")) });
        QVERIFY(plan.song);
        QVERIFY(scanFolder(plan.songFolder).contains(*plan.song));
    }

    // The command line: relative paths from the working folder, file URLs as
    // given by file managers; anything else is left out. A name in Latin-1
    // comes as its bytes or as %XX in a URL.
    void urlsFromArguments()
    {
        const QUrl latin1 = localpath::fileUrl(writeFile(m_base.path(), localpath::fromBytes("Elsewhere/caf\xe9.mp3")));
        const QStringList arguments
            = { QStringLiteral("Album/01 One.flac"), QStringLiteral("Album/notes.txt"),
                  url("Elsewhere").toString(), QStringLiteral("https://example.org/a.mp3"),
                  localpath::fromBytes("../Elsewhere/caf\xe9.mp3"), QString::fromLatin1(latin1.toEncoded()) };
        const QList<QUrl> urls
            = SingleInstance::urlsFrom(arguments, m_base.filePath(QStringLiteral("Music")));
        QCOMPARE(urls, (QList<QUrl> { url("Music/Album/01 One.flac"), url("Elsewhere"), latin1, latin1 }));
        QVERIFY(latin1.toEncoded().endsWith("/Elsewhere/caf%E9.mp3"));
    }

    void everySongTypeIsDeclared_data()
    {
        QTest::addColumn<QString>("extension");
        for (const char *extension : audioExtensions)
            QTest::newRow(extension) << QString::fromLatin1(extension);
    }

    // Every kind of file the library takes is offered to Tarnwell by the
    // desktop (desktop entry) and by software centres (metainfo).
    void everySongTypeIsDeclared()
    {
        QFETCH(QString, extension);
        const QStringList declared = desktopMimeTypes();
        QVERIFY(!declared.isEmpty());
        const QMimeType type = QMimeDatabase().mimeTypeForFile(
            QStringLiteral("song.") + extension, QMimeDatabase::MatchExtension);
        // CAF is missing from the shared MIME database; its usual name is declared.
        const QStringList names = type.isDefault() ? QStringList { QStringLiteral("audio/x-caf") }
                                                   : type.aliases() << type.name();
        bool found = false;
        for (const QString &name : names)
            found = found || declared.contains(name);
        QVERIFY2(found, qPrintable(QStringLiteral("none of %1 is in MimeType").arg(names.join(u' '))));
    }

    void desktopEntryAndMetainfoAgree()
    {
        QStringList desktop = desktopMimeTypes();
        QStringList metainfo = metainfoMediaTypes();
        desktop.sort();
        metainfo.sort();
        QCOMPARE(metainfo, desktop);
    }

private:
    QUrl url(const QString &relative) const { return QUrl::fromLocalFile(m_base.filePath(relative)); }

    QTemporaryDir m_root;
    QDir m_base;
};

QTEST_GUILESS_MAIN(TestDesktopIntegration)
#include "tst_desktop_integration.moc"
