// SPDX-License-Identifier: GPL-3.0-or-later
// What the desktop hands Tarnwell to open, and the songs the desktop entry and
// the AppStream data offer it for.
#include "SingleInstance.h"
#include "library/FolderScan.h"
#include "model/LocalPath.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QMimeDatabase>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

#include <algorithm>

using testsupport::writeFile;

namespace {

// The source tree's data folder, where the desktop entry and metainfo live.
const QString dataFolder = QStringLiteral(TARNWELL_DATA_DIR);

// The MIME types the desktop entry declares, or the metainfo's media types.
QStringList declaredTypes(bool metainfo)
{
    QFile file(dataFolder + (metainfo ? QStringLiteral("/org.tarnwell.tarnwell.metainfo.xml")
                                      : QStringLiteral("/org.tarnwell.tarnwell.desktop")));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList types;
    if (!metainfo) {
        for (const QByteArray &line : file.readAll().split('\n')) {
            if (line.startsWith("MimeType="))
                types = QString::fromUtf8(line.mid(9)).split(u';', Qt::SkipEmptyParts);
        }
        return types;
    }
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
        for (const char *path : {"Music/Album/01 One.flac", "Music/Album/02 Two.MP3", "Music/Album/notes.txt",
                                 "Music/Album/Disc 2/01 Three.m4a", "Music2/05 Five.flac"})
            writeFile(m_base.path(), QString::fromLatin1(path));
    }

    // What a command line or a desktop's Open asks for: the folders to import
    // and the song to play, spelled as the scan will spell them.
    void planOpen_data()
    {
        QTest::addColumn<QStringList>("given");
        QTest::addColumn<QStringList>("folders");
        QTest::addColumn<QString>("song"); // and the folder it is imported with
        QTest::addColumn<QString>("songFolder");
        QTest::newRow("songs of one folder: the folder once, the first plays")
            << QStringList{"Music/./Album/02 Two.MP3", "Music/Album/01 One.flac"} << QStringList{"Music/Album"}
            << "Music/Album/02 Two.MP3" << "Music/Album";
        QTest::newRow("a song inside a folder given: that folder brings it in")
            << QStringList{"Music/Album/Disc 2/01 Three.m4a", "Music"} << QStringList{"Music"}
            << "Music/Album/Disc 2/01 Three.m4a" << "Music";
        QTest::newRow("a folder does not hold its name's extensions")
            << QStringList{"Music", "Music2/05 Five.flac"} << QStringList{"Music", "Music2"} << "Music2/05 Five.flac"
            << "Music2";
        QTest::newRow("not a song, missing, a bare prefix: nothing")
            << QStringList{"Music/Album/notes.txt", "Music/Gone", "Mus"} << QStringList{} << "" << "";
    }

    void planOpen()
    {
        QFETCH(QStringList, given);
        QFETCH(QStringList, folders);
        QFETCH(QString, song);
        QFETCH(QString, songFolder);
        QList<QUrl> urls, expectedFolders;
        for (const QString &path : given)
            urls.append(url(path));
        for (const QString &folder : folders)
            expectedFolders.append(url(folder));
        const OpenPlan plan = SingleInstance::planOpen(urls);
        QCOMPARE(plan.folders, expectedFolders);
        QCOMPARE(plan.song.value_or(QUrl()), song.isEmpty() ? QUrl() : url(song));
        QCOMPARE(plan.songFolder, songFolder.isEmpty() ? QUrl() : url(songFolder));
        // Spelled as the import spells it, or it never plays.
        QVERIFY(!plan.song || scanFolder(plan.songFolder).contains(*plan.song));
    }

    // The command line: relative paths from the working folder, file URLs as
    // given by file managers; anything else is left out. A name in Latin-1
    // comes as its bytes or as %XX in a URL.
    void urlsFromArguments()
    {
        const QUrl latin1 = localpath::fileUrl(writeFile(m_base.path(), localpath::fromBytes("Elsewhere/caf\xe9.mp3")));
        const QStringList arguments = {QStringLiteral("Album/01 One.flac"), QStringLiteral("Album/notes.txt"),
                                       url("Elsewhere").toString(), QStringLiteral("https://example.org/a.mp3"),
                                       localpath::fromBytes("../Elsewhere/caf\xe9.mp3"), QString::fromLatin1(latin1.toEncoded())};
        const QList<QUrl> urls = SingleInstance::urlsFrom(arguments, m_base.filePath(QStringLiteral("Music")));
        QCOMPARE(urls, (QList<QUrl> { url("Music/Album/01 One.flac"), url("Elsewhere"), latin1, latin1 }));
        QVERIFY(latin1.toEncoded().endsWith("/Elsewhere/caf%E9.mp3"));
    }

    // Every kind of file the library takes is offered to Tarnwell by the
    // desktop (desktop entry) and by software centres (metainfo), alike.
    void everySongTypeIsDeclared()
    {
        QStringList declared = declaredTypes(false);
        for (const char *extension : audioExtensions) {
            const QMimeType type = QMimeDatabase().mimeTypeForFile(QStringLiteral("song.") + QLatin1String(extension),
                                                                   QMimeDatabase::MatchExtension);
            // CAF is missing from the shared MIME database; its usual name is declared.
            const QStringList names = type.isDefault() ? QStringList{QStringLiteral("audio/x-caf")} : type.aliases() << type.name();
            QVERIFY2(std::any_of(names.cbegin(), names.cend(), [&](const QString &n) { return declared.contains(n); }),
                     qPrintable(names.join(u' ') + QStringLiteral(" is not in MimeType")));
        }
        QStringList metainfo = declaredTypes(true);
        declared.sort();
        metainfo.sort();
        QCOMPARE(metainfo, declared);
    }

private:
    QUrl url(const QString &relative) const { return QUrl::fromLocalFile(m_base.filePath(relative)); }

    QTemporaryDir m_root;
    QDir m_base;
};

QTEST_GUILESS_MAIN(TestDesktopIntegration)
#include "tst_desktop_integration.moc"
