// SPDX-License-Identifier: GPL-3.0-or-later
// The main state's rooms that need no playback: preferences, the banner, the
// sidebar's playlists, folders imported and songs reported by the watched folders.
#include "AppTest.h"

#include <QDir>
#include <QSettings>
#include <QTemporaryDir>

using testsupport::writeFile;

class TestAppState : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString playlistFile() const { return m_dir.filePath(QStringLiteral("playlists.json")); }
    QString music() const { return m_dir.filePath(QStringLiteral("music")); }
    QUrl folder(const QString &sub) const { return QUrl::fromLocalFile(sub.isEmpty() ? music() : music() + u'/' + sub); }
    static QList<QUrl> urls(const QStringList &names)
    {
        QList<QUrl> out;
        for (const QString &n : names)
            out.append(QUrl::fromLocalFile(QStringLiteral("/music/") + n));
        return out;
    }

private Q_SLOTS:
    void init()
    {
        QSettings().clear();
        QFile::remove(playlistFile());
        QDir(music()).removeRecursively();
        QDir().mkpath(music());
    }

    void keepsTenRecentArtistsNewestFirst_data()
    {
        QTest::addColumn<QStringList>("played");
        QTest::addColumn<QStringList>("recent");
        QTest::newRow("repeat moves to front") << QStringList{"A", "B", "A", ""} << QStringList{"A", "B"};
        QTest::newRow("eleven keep ten") << QStringList{"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11"}
                                         << QStringList{"11", "10", "9", "8", "7", "6", "5", "4", "3", "2"};
        QTest::newRow("commas, quotes, spaces") << QStringList{"Crosby, Stills", "\"Weird\" Al", " padded "}
                                                << QStringList{" padded ", "\"Weird\" Al", "Crosby, Stills"};
    }

    void keepsTenRecentArtistsNewestFirst()
    {
        QFETCH(QStringList, played);
        QFETCH(QStringList, recent);
        {
            Preferences preferences;
            for (const QString &artist : played)
                preferences.recordRecentArtist(artist);
        }
        // Stored, and read back by the next run.
        QCOMPARE(Preferences().recentArtists(), recent);
    }

    void anEarlierTimerCutsALaterMessageShort()
    {
        Banner banner;
        banner.show(QStringLiteral("first"), Banner::Animation::Spring, 200);
        banner.show(QStringLiteral("second"), Banner::Animation::Default, 600000);
        QTRY_VERIFY_WITH_TIMEOUT(banner.text().isEmpty(), 30000);
        // It leaves as the last text entered.
        QCOMPARE(banner.animation(), Banner::Animation::Default);
    }

    void dropOnPlaylistReportsTheOutcome()
    {
        AppState s(playlistFile());
        s.library()->addDiscoveredFiles(urls({"a.mp3"}));
        const QString song = apptest::idOf(s, 0);
        Playlists &playlists = *s.playlists();
        playlists.create(QStringLiteral("  Road ")); // named "Road"
        const QString roadId = playlists.entries().first().toMap().value(QStringLiteral("id")).toString();

        playlists.beginDrag(song);
        playlists.drop(song, roadId);
        QCOMPARE(s.banner()->text(), QStringLiteral("Added to Road"));
        QVERIFY(playlists.draggingTrackId().isEmpty());
        playlists.drop(song, roadId);
        QCOMPARE(s.banner()->text(), QStringLiteral("Already in Road"));
        playlists.drop(song, trackjson::uuidText(QUuid::createUuid()));
        QCOMPARE(s.banner()->text(), QStringLiteral("Already in playlist"));
        QCOMPARE(playlists.entries().first().toMap().value(QStringLiteral("count")), 1);
        // A drag that is never dropped is forgotten.
        playlists.beginDrag(song);
        QTRY_VERIFY_WITH_TIMEOUT(playlists.draggingTrackId().isEmpty(), 30000);
    }

    void discoveredFilesBecomeSongs_data()
    {
        QTest::addColumn<QStringList>("library");
        QTest::addColumn<QStringList>("discovered");
        QTest::addColumn<QStringList>("added");
        QTest::addColumn<QString>("message");
        QTest::newRow("three, in the order reported")
            << QStringList{} << QStringList{"c.mp3", "a.mp3", "b.flac", "a.mp3"} << QStringList{"c.mp3", "a.mp3", "b.flac"}
            << "3 new songs added";
        QTest::newRow("only known files") << QStringList{"a.mp3", "b.mp3"} << QStringList{"b.mp3", "a.mp3"}
                                          << QStringList{} << "";
        QTest::newRow("known and new") << QStringList{"a.mp3"} << QStringList{"a.mp3", "z.mp3"} << QStringList{"z.mp3"}
                                       << "1 new song added";
    }

    void discoveredFilesBecomeSongs()
    {
        QFETCH(QStringList, library);
        QFETCH(QStringList, discovered);
        QFETCH(QStringList, added);
        QFETCH(QString, message);
        AppState s(playlistFile());
        Library &lib = *s.library();
        lib.addDiscoveredFiles(urls(library));
        s.banner()->clear();
        QSignalSpy appended(&lib, &Library::tracksAppended);
        lib.addDiscoveredFiles(urls(discovered));
        QCOMPARE(s.banner()->text(), message);
        QCOMPARE(appended.size(), added.isEmpty() ? 0 : 1);
        QList<QUrl> all;
        for (const Track &t : lib.tracks())
            all.append(t.url);
        QCOMPARE(all, urls(library + added));
    }

    // Each import is a list of folders under the music folder ("" for itself),
    // asked for in one call.
    void importsAudioFilesInOrder_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QList<QStringList>>("imports");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("a parent adds only what is new")
            << QStringList{"inner/b.mp3", "a.mp3", "c.mp3", "cover.jpg"} << QList<QStringList>{{"inner"}, {""}}
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
        AppState s(playlistFile());
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
        QStringList found;
        for (const Track &t : s.library()->tracks())
            found.append(QFileInfo(t.path()).fileName());
        QCOMPARE(found, names);
        // The welcome ends with the first songs; an empty folder is remembered all the same.
        QCOMPARE(QSettings().value(Preferences::onboardingKey).toBool(), !names.isEmpty());
        QVERIFY(s.preferences()->libraryFolders().contains(folder(imports.last().last())));
        QVERIFY(s.banner()->text().isEmpty());
    }

    // More songs than one slice: the song list grows by insertions, never a
    // reset; a folder forgotten while it is listed or while its songs arrive
    // leaves none behind, not even in the lookups, so importing it again
    // brings every song.
    void aLargeImportJoinsInSlices_data()
    {
        QTest::addColumn<bool>("whileListed");
        QTest::newRow("forgotten while listed") << true;
        QTest::newRow("forgotten as its songs arrive") << false;
    }

    void aLargeImportJoinsInSlices()
    {
        QFETCH(bool, whileListed);
        constexpr int count = 10000;
        for (int i = 0; i < count; ++i)
            writeFile(music(), QStringLiteral("many/%1.mp3").arg(i, 5, 10, QLatin1Char('0')));
        AppState s(playlistFile());
        Library &lib = *s.library();
        SongListModel *rows = s.queue()->model();
        QSignalSpy resets(rows, &QAbstractItemModel::modelReset);
        QSignalSpy inserts(rows, &QAbstractItemModel::rowsInserted);
        QSignalSpy imported(&lib, &Library::folderImported);
        const QMetaObject::Connection forget = connect(&lib, &Library::tracksAppended, this, [&] {
            QObject::disconnect(forget);
            lib.forgetFolder(folder("many"));
        });
        lib.importFolder(folder("many"));
        if (whileListed) {
            QObject::disconnect(forget);
            lib.forgetFolder(folder("many"));
        }
        QTRY_COMPARE_WITH_TIMEOUT(imported.size(), 1, 30000);
        QCOMPARE(lib.trackCount(), 0);
        QCOMPARE(rows->rowCount(), 0);

        resets.clear();
        inserts.clear();
        lib.importFolder(folder("many"));
        QTRY_COMPARE_WITH_TIMEOUT(imported.size(), 2, 30000);
        QCOMPARE(lib.trackCount(), count);
        QCOMPARE(rows->rowCount(), count);
        QVERIFY2(inserts.size() > 1, "one insertion: the songs did not come in slices");
        QCOMPARE(resets.size(), 0);
        for (int i : {0, count / 2, count - 1}) {
            const Track &song = lib.tracks().at(i);
            QCOMPARE(QFileInfo(song.path()).fileName(), QStringLiteral("%1.mp3").arg(i, 5, 10, QLatin1Char('0')));
            QCOMPARE(lib.find(song.id)->url, song.url);
            QCOMPARE(rows->rows().at(i).track.id, song.id);
        }
    }

    void artworkIsPlannedOncePerArtistAndAlbum()
    {
        const QList<QStringList> songs = {{"ARTIST=Nadia", "ALBUM=Blue"}, {"ARTIST=Nadia", "ALBUM=Blue"},
                                          {"ARTIST=nadia", "ALBUM=Blue"}, {"ARTIST=Other", "ALBUM=Blue"},
                                          {"ALBUM=Lonely"}, {"ARTIST= Nadia\t", "ALBUM=Blue"}, {"ARTIST=Solo"}};
        for (qsizetype i = 0; i < songs.size(); ++i)
            QVERIFY(apptest::makeSong(music() + QStringLiteral("/%1.flac").arg(i), songs.at(i), 0.1));
        AppState s(playlistFile());
        QSignalSpy planned(&s.artworkPrefetch(), &ArtworkPrefetch::planned);
        QVERIFY(apptest::importAndWait(s, folder({})));
        QTRY_COMPARE_WITH_TIMEOUT(planned.size(), 1, 30000);
        QStringList artists = planned.last().at(0).toStringList();
        artists.sort();
        QCOMPARE(artists, (QStringList{"Nadia", "Other", "Solo", "nadia"}));
        QCOMPARE(planned.last().at(1).toInt(), 3);

        // Imported again: no new song, so no new requests.
        const QList<Track> first = s.library()->tracks();
        QVERIFY(apptest::importAndWait(s, folder({})));
        QCOMPARE(s.library()->tracks(), first);
        QCOMPARE(planned.size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestAppState)
#include "tst_app_state.moc"
