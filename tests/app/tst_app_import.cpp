// SPDX-License-Identifier: GPL-3.0-or-later
// Folders imported into the main state, and the artwork requests their songs
// plan.
#include "AppState.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using testsupport::writeFile;

class TestAppImport : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString music() const { return m_dir.filePath(QStringLiteral("music")); }
    QUrl folder(const QString &sub) const { return QUrl::fromLocalFile(sub.isEmpty() ? music() : music() + u'/' + sub); }

    static QStringList fileNames(AppState &s)
    {
        QStringList names;
        for (const Track &t : s.library()->tracks())
            names.append(QFileInfo(t.path()).fileName());
        return names;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QCoreApplication::setOrganizationName(QStringLiteral("Tarnwell"));
        QCoreApplication::setApplicationName(QStringLiteral("Tarnwell"));
    }

    void init()
    {
        QSettings().clear();
        QDir(music()).removeRecursively();
        QDir().mkpath(music());
    }

    // Each import is a list of folders under the music folder ("" for itself),
    // asked for in one call.
    void importsAudioFilesInOrder_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QList<QStringList>>("imports");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("audio only, by name")
            << QStringList{"b/2 two.mp3", "a/3 three.flac", "1 one.wav", "cover.jpg"} << QList<QStringList>{{""}}
            << QStringList{"1 one.wav", "2 two.mp3", "3 three.flac"};
        QTest::newRow("a parent adds only what is new") << QStringList{"inner/b.mp3", "a.mp3", "c.mp3"}
                                                        << QList<QStringList>{{"inner"}, {""}}
                                                        << QStringList{"b.mp3", "a.mp3", "c.mp3"};
        QTest::newRow("folders in the order asked")
            << QStringList{"one/z.mp3", "two/a.mp3"} << QList<QStringList>{{"one", "two"}} << QStringList{"z.mp3", "a.mp3"};
        QTest::newRow("an empty folder") << QStringList{} << QList<QStringList>{{""}} << QStringList{};
    }

    void importsAudioFilesInOrder()
    {
        QFETCH(QStringList, files);
        QFETCH(QList<QStringList>, imports);
        QFETCH(QStringList, names);
        for (const QString &file : files)
            writeFile(music(), file);
        AppState s(m_dir.filePath(QStringLiteral("playlists.json")));
        QSignalSpy imported(s.library(), &Library::folderImported);
        qsizetype asked = 0;
        for (const QStringList &call : imports) {
            QList<QUrl> folders;
            for (const QString &sub : call)
                folders.append(folder(sub));
            s.library()->importFolders(folders);
            asked += folders.size();
            QTRY_COMPARE_WITH_TIMEOUT(imported.size(), asked, 30000);
        }
        QCOMPARE(fileNames(s), names);
        QVERIFY(!s.library()->isImporting());
        // The welcome ends with the first songs; an empty folder is remembered all the same.
        QCOMPARE(s.preferences()->didCompleteOnboarding(), !names.isEmpty());
        QCOMPARE(QSettings().value(Preferences::onboardingKey).toBool(), !names.isEmpty());
        QVERIFY(s.preferences()->libraryFolders().contains(folder(imports.last().last())));
        QVERIFY(s.banner()->text().isEmpty());
    }

    void artworkIsPlannedOncePerArtistAndAlbum()
    {
        struct Song { const char *name, *artist, *album; };
        const Song songs[] = {
            {"1.flac", "Nadia", "Blue"}, {"2.flac", "Nadia", "Blue"}, {"3.flac", "nadia", "Blue"},
            {"4.flac", "Other", "Blue"}, {"5.flac", nullptr, "Lonely"}, {"6.flac", " Nadia\t", "Blue"},
            {"7.flac", "Solo", nullptr},
        };
        for (const Song &song : songs) {
            const QString path = music() + u'/' + QLatin1String(song.name);
            QStringList args{path};
            if (song.album)
                args.prepend(QStringLiteral("--set-tag=ALBUM=") + QLatin1String(song.album));
            if (song.artist)
                args.prepend(QStringLiteral("--set-tag=ARTIST=") + QLatin1String(song.artist));
            QVERIFY(testsupport::makeAudio(path, 0.1));
            QCOMPARE(testsupport::run(QStringLiteral("metaflac"), args).exitCode, 0);
        }
        AppState s(m_dir.filePath(QStringLiteral("playlists.json")));
        QSignalSpy planned(&s.artworkPrefetch(), &ArtworkPrefetch::planned);
        QSignalSpy imported(s.library(), &Library::folderImported);
        s.library()->importFolder(folder({}));
        QTRY_COMPARE_WITH_TIMEOUT(planned.size(), 1, 30000);
        QStringList artists = planned.last().at(0).toStringList();
        artists.sort();
        QCOMPARE(artists, (QStringList{"Nadia", "Other", "Solo", "nadia"}));
        QCOMPARE(planned.last().at(1).toInt(), 3);

        // Imported again: no new song, so no new requests.
        const QList<Track> first = s.library()->tracks();
        s.library()->importFolder(folder({}));
        QTRY_COMPARE_WITH_TIMEOUT(imported.size(), 2, 30000);
        QCOMPARE(imported.last().at(1).toInt(), 0);
        QCOMPARE(s.library()->tracks(), first);
        QVERIFY(!s.searchIndex()->isBuilding());
        QCOMPARE(planned.size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestAppImport)
#include "tst_app_import.moc"
