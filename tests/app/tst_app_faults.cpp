// SPDX-License-Identifier: GPL-3.0-or-later
// The main state on real files with real playback (through fakesink): what a
// song that starts or ends sets in motion, and answers that arrive late or from
// an earlier run: a playlist song the library no longer holds, song-list
// answers for rows that moved, and the tag editor asked for one song and then
// another.
#include "AppTest.h"
#include "model/LocalPath.h"
#include "tags/TagReader.h"

#include <QSemaphore>
#include <QSettings>
#include <QTemporaryDir>
#include <QThreadPool>

#include <memory>

class TestAppFaults : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<AppState> m_state;

    QString playlistFile() const { return m_dir.filePath(QStringLiteral("playlists.json")); }
    // Named in Latin-1, not UTF-8, as disks filled by older systems are: every
    // song is found, played, searched, grouped and tagged by its exact path.
    QString folder(const char *name) const { return m_dir.path() + u'/' + localpath::fromBytes(name); }

    // A new playlist holding these rows of the library, as the sidebar makes it; its id.
    QString makePlaylist(const QList<int> &rows)
    {
        m_state->playlists()->create(QStringLiteral("Road"));
        const QString id = m_state->playlists()->entries().constLast().toMap().value(QStringLiteral("id")).toString();
        for (int row : rows)
            m_state->playlists()->drop(idOf(row), id);
        return id;
    }

    void import(const QString &folder) { QVERIFY(apptest::importAndWait(*m_state, localpath::fileUrl(folder))); }
    QString idOf(int row) const { return apptest::idOf(*m_state, row); }

    SongListModel &songs() { return *m_state->queue()->model(); }

    // The artist the song list shows in a row, once its file has been read.
    QString shownArtist(int row) { return songs().data(songs().index(row), SongListModel::ArtistRole).toString(); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        // The first runs out within a test; the second plays on.
        QVERIFY(apptest::makeSong(folder("m\xfcsic/Ada.flac"), {"ARTIST=Ada", "ALBUM=Dawn"}, 0.6));
        QVERIFY(apptest::makeSong(folder("m\xfcsic/Bo.flac"), {"ARTIST=Bo", "ALBUM=Dusk"}, 8.0));
        QVERIFY(apptest::makeSong(folder("two/Cy.flac"), {"ARTIST=Cy"}));
    }

    void init()
    {
        QSettings().clear();
        QFile::remove(playlistFile());
        m_state = std::make_unique<AppState>(playlistFile());
        import(folder("m\xfcsic"));
    }

    void cleanup() { m_state.reset(); }

    void aFinishedSongHandsOverToTheNext()
    {
        m_state->nowPlaying()->play(idOf(0));
        QCOMPARE(m_state->nowPlaying()->trackName(), QStringLiteral("Ada"));
        QCOMPARE(m_state->preferences()->recentArtists(), QStringList{QStringLiteral("Ada")});
        QTRY_COMPARE_WITH_TIMEOUT(m_state->nowPlaying()->trackId(), idOf(1), 30000);
        QTRY_VERIFY_WITH_TIMEOUT(m_state->nowPlaying()->isPlaying(), 30000);
        QCOMPARE(m_state->preferences()->recentArtists(), (QStringList{QStringLiteral("Bo"), QStringLiteral("Ada")}));
    }

    void aSongChosenInTheSearchPlaysAndGoesAfterThePlayingOne()
    {
        m_state->nowPlaying()->play(idOf(1));
        m_state->navigation()->setSearchActive(true);
        m_state->navigation()->setSearchText(QStringLiteral("fir"));
        m_state->playFromSearch(idOf(0));
        QCOMPARE(m_state->nowPlaying()->trackId(), idOf(0));
        QVERIFY(!m_state->navigation()->searchActive());
        QCOMPARE(m_state->navigation()->searchText(), QString());
        // Previous goes back to the song that played before the search.
        m_state->nowPlaying()->previous();
        QCOMPARE(m_state->nowPlaying()->trackId(), idOf(1));
    }

    void anAlbumChosenElsewhereSurvivesTheArtistsLoadAndPlays()
    {
        // As from the search: artist and album at once, before anything loaded.
        m_state->navigation()->openAlbum(QStringLiteral("Bo"), QStringLiteral("Dusk"));
        QTRY_VERIFY_WITH_TIMEOUT(m_state->artistBrowser()->showingDetail()
                                     && !m_state->artistBrowser()->detail()->isLoading(), 30000);
        QCOMPARE(m_state->artistBrowser()->detail()->selectedAlbum(), QStringLiteral("Dusk"));
        QCOMPARE(m_state->navigation()->selectedArtistAlbum(), QStringLiteral("Dusk"));
        QCOMPARE(m_state->artistBrowser()->detail()->albums()->count(), 1);
        m_state->artistBrowser()->selectAlbum(QStringLiteral("Dusk"));
        QCOMPARE(m_state->nowPlaying()->trackName(), QStringLiteral("Bo"));
        m_state->navigation()->backToArtists();
        QVERIFY(m_state->navigation()->selectedArtistAlbum().isEmpty());
        QVERIFY(!m_state->artistBrowser()->showingDetail());
    }
    // After a restart the library is empty until an import; the playlist
    // still holds its songs and they play.
    void playlistSongOutsideTheLibraryPlays()
    {
        const QString road = makePlaylist({1});
        const QString bo = idOf(1);
        m_state.reset();

        m_state = std::make_unique<AppState>(playlistFile());
        QCOMPARE(m_state->library()->tracks().size(), 0);
        m_state->navigation()->selectPlaylist(road);
        QCOMPARE(songs().rowCount(), 1);
        m_state->nowPlaying()->play(bo);
        QVERIFY(m_state->nowPlaying()->isPlaying());
        // The playlist's one song is followed by itself.
        m_state->nowPlaying()->next();
        QCOMPARE(m_state->nowPlaying()->trackId(), bo);
    }

    // A list that grew at its end inserts rows, so the view keeps its place;
    // another list resets it.
    void songListAppendsOrResets()
    {
        QSignalSpy inserted(&songs(), &QAbstractItemModel::rowsInserted);
        QSignalSpy reset(&songs(), &QAbstractItemModel::modelReset);
        import(folder("two"));
        QCOMPARE(songs().rowCount(), 3);
        QCOMPARE(inserted.size(), 1);
        QCOMPARE(inserted.first().at(1).toInt(), 2);
        QCOMPARE(inserted.first().at(2).toInt(), 2);
        QCOMPARE(reset.size(), 0);

        m_state->navigation()->selectPlaylist(makePlaylist({}));
        QCOMPARE(songs().rowCount(), 0);
        QCOMPARE(reset.size(), 1);
    }

    // The file of a row is read later; when the list was replaced meanwhile,
    // the answer goes to the row where its song is now.
    void lateAnswerFindsItsSongsNewRow()
    {
        const QString reversed = makePlaylist({1, 0});
        QSignalSpy changed(&songs(), &QAbstractItemModel::dataChanged);
        QCOMPARE(shownArtist(1), QString()); // Bo, asked
        m_state->navigation()->selectPlaylist(reversed);
        QTRY_VERIFY_WITH_TIMEOUT(!changed.isEmpty(), 60000);
        QCOMPARE(changed.first().at(0).value<QModelIndex>().row(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(shownArtist(0), QStringLiteral("Bo"), 60000);
        QTRY_COMPARE_WITH_TIMEOUT(shownArtist(1), QStringLiteral("Ada"), 60000);
    }

    // After a save the file holds the new tags, and the rows and the search
    // read them instead of the old ones.
    void listsAndSearchFollowATagEdit()
    {
        QTRY_COMPARE_WITH_TIMEOUT(shownArtist(0), QStringLiteral("Ada"), 60000);
        // The names of the artists or albums a search finds.
        const auto found = [this](const char *text, const char *section = "artists", const char *key = "name") {
            QStringList names;
            const QVariantMap results = m_state->searchIndex()->search(QLatin1String(text));
            for (const QVariant &entry : results.value(QLatin1String(section)).toList())
                names.append(entry.toMap().value(QLatin1String(key)).toString());
            return names;
        };
        QCOMPARE(found("Ada"), QStringList{QStringLiteral("Ada")});
        m_state->tagEditor()->open(idOf(0));
        QTRY_VERIFY_WITH_TIMEOUT(m_state->tagEditor()->isOpen(), 60000);
        QCOMPARE(m_state->tagEditor()->meta().value(QStringLiteral("artist")), QStringLiteral("Ada"));
        m_state->tagEditor()->save(QStringLiteral("Morning"), QStringLiteral("Lind"), QStringLiteral("Dawn"));
        QTRY_COMPARE_WITH_TIMEOUT(m_state->banner()->text(), QStringLiteral("Tags saved"), 60000);
        QVERIFY(!m_state->tagEditor()->isOpen());
        QCOMPARE(readMetadata(m_state->library()->tracks().at(0).path()).artist, std::optional<QString>(QStringLiteral("Lind")));
        QTRY_COMPARE_WITH_TIMEOUT(shownArtist(0), QStringLiteral("Lind"), 60000);
        QTRY_COMPARE_WITH_TIMEOUT(found("Lind"), QStringList{QStringLiteral("Lind")}, 60000);
        QCOMPARE(found("Dawn", "albums", "displayName"), QStringList{QStringLiteral("Dawn")});
        QVERIFY(found("Ada").isEmpty());
    }

    // The editor shows the song of the last request, with that song's tags,
    // whichever read answers last; a close keeps it closed.
    void editorFollowsTheLastRequest_data()
    {
        QTest::addColumn<QStringList>("requests"); // a row to open, or "close"
        QTest::addColumn<int>("shown");            // the row open at the end, -1 for none
        QTest::newRow("one, then another") << QStringList{"0", "1"} << 1;
        QTest::newRow("one, then closed") << QStringList{"0", "close"} << -1;
        QTest::newRow("one, closed, another") << QStringList{"0", "close", "1"} << 1;
    }

    void editorFollowsTheLastRequest()
    {
        QFETCH(QStringList, requests);
        QFETCH(int, shown);
        TagEditorSession &editor = *m_state->tagEditor();
        QThreadPool &pool = *QThreadPool::globalInstance();
        // Every read waits behind these until the last request is made, so each answers late.
        QSemaphore gate;
        for (int i = 0; i < pool.maxThreadCount(); ++i)
            pool.start([&gate] { gate.acquire(); });
        for (const QString &request : requests)
            request == u"close" ? editor.close() : editor.open(idOf(request.toInt()));
        QStringList opened;
        QObject recorder;
        connect(&editor, &TagEditorSession::changed, &recorder, [&] {
            if (editor.isOpen())
                opened.append(editor.trackId());
        });
        gate.release(pool.maxThreadCount());
        pool.waitForDone();
        // The answers were posted by now: this call comes after them.
        bool answered = false;
        QMetaObject::invokeMethod(&recorder, [&answered] { answered = true; }, Qt::QueuedConnection);
        QTRY_VERIFY_WITH_TIMEOUT(answered, 30000);
        QCOMPARE(opened, shown < 0 ? QStringList() : QStringList{idOf(shown)});
        QCOMPARE(editor.isOpen(), shown >= 0);
        if (shown >= 0) {
            QCOMPARE(editor.meta().value(QStringLiteral("artist")).toString(), shown ? QStringLiteral("Bo") : QStringLiteral("Ada"));
            QCOMPARE(editor.fileName(), shown ? QStringLiteral("Bo") : QStringLiteral("Ada"));
        }
    }
};

QTEST_MAIN(TestAppFaults)
#include "tst_app_faults.moc"
