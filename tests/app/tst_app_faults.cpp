// SPDX-License-Identifier: GPL-3.0-or-later
// The main state where answers arrive late or from an earlier run: a playlist
// song the library no longer holds, song-list answers for rows that moved,
// and the tag editor asked for one song and then another.
#include "AppState.h"
#include "support/TestSupport.h"

#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>

#include <memory>

class TestAppFaults : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<AppState> m_state;

    QString playlistFile() const { return m_dir.filePath(QStringLiteral("playlists.json")); }
    QString folder(const char *name) const { return m_dir.filePath(QLatin1StringView(name)); }

    // A FLAC file of the given artist, named after its song.
    static bool makeSong(const QString &path, const QString &artist)
    {
        return testsupport::makeAudio(path, 0.5)
            && testsupport::run(QStringLiteral("metaflac"), {QStringLiteral("--set-tag=ARTIST=") + artist, path})
                       .exitCode
            == 0;
    }

    void import(const QString &folder)
    {
        QSignalSpy imported(m_state->library(), &Library::folderImported);
        m_state->library()->importFolder(QUrl::fromLocalFile(folder));
        QTRY_COMPARE_WITH_TIMEOUT(imported.size(), 1, 60000);
    }

    QString idOf(int row) const { return trackjson::uuidText(m_state->library()->tracks().at(row).id); }

    SongListModel &songs() { return *m_state->queue()->model(); }

    // The artist the song list shows in a row, once its file has been read.
    QString shownArtist(int row) { return songs().data(songs().index(row), SongListModel::ArtistRole).toString(); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(makeSong(folder("one/Ada.flac"), QStringLiteral("Ada")));
        QVERIFY(makeSong(folder("one/Bo.flac"), QStringLiteral("Bo")));
        QVERIFY(makeSong(folder("two/Cy.flac"), QStringLiteral("Cy")));
    }

    void init()
    {
        QSettings().clear();
        QFile::remove(playlistFile());
        m_state = std::make_unique<AppState>(playlistFile());
        import(folder("one"));
    }

    void cleanup() { m_state.reset(); }

    // After a restart the library is empty until an import; the playlist
    // still holds its songs and they play.
    void playlistSongOutsideTheLibraryPlays()
    {
        m_state->playlistStore().createPlaylist(QStringLiteral("Road"));
        const QUuid road = m_state->playlistStore().playlists().constFirst().id;
        const QString bo = idOf(1);
        QVERIFY(m_state->playlistStore().addTrack(m_state->library()->tracks().at(1), road));
        m_state.reset();

        m_state = std::make_unique<AppState>(playlistFile());
        QCOMPARE(m_state->library()->tracks().size(), 0);
        m_state->navigation()->selectPlaylist(trackjson::uuidText(road));
        QCOMPARE(songs().rowCount(), 1);
        m_state->nowPlaying()->play(bo);
        QCOMPARE(m_state->nowPlaying()->trackId(), bo);
        QVERIFY(m_state->nowPlaying()->isPlaying());
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

        m_state->playlistStore().createPlaylist(QStringLiteral("Road"));
        const QUuid road = m_state->playlistStore().playlists().constFirst().id;
        m_state->navigation()->selectPlaylist(trackjson::uuidText(road));
        QCOMPARE(songs().rowCount(), 0);
        QCOMPARE(reset.size(), 1);
    }

    // The file of a row is read later; when the list was replaced meanwhile,
    // the answer goes to the row where its song is now.
    void lateAnswerFindsItsSongsNewRow()
    {
        m_state->playlistStore().createPlaylist(QStringLiteral("Reversed"));
        const QUuid reversed = m_state->playlistStore().playlists().constFirst().id;
        QVERIFY(m_state->playlistStore().addTrack(m_state->library()->tracks().at(1), reversed));
        QVERIFY(m_state->playlistStore().addTrack(m_state->library()->tracks().at(0), reversed));

        QSignalSpy changed(&songs(), &QAbstractItemModel::dataChanged);
        QCOMPARE(songs().data(songs().index(1), SongListModel::ArtistRole).toString(), QString()); // Bo, asked
        m_state->navigation()->selectPlaylist(trackjson::uuidText(reversed));
        QTRY_VERIFY_WITH_TIMEOUT(!changed.isEmpty(), 60000);
        QCOMPARE(changed.first().at(0).value<QModelIndex>().row(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(shownArtist(0), QStringLiteral("Bo"), 60000);
        QTRY_COMPARE_WITH_TIMEOUT(shownArtist(1), QStringLiteral("Ada"), 60000);
    }

    // After a save the rows read their files again instead of showing the old tags.
    void rowsFollowATagEdit()
    {
        QTRY_COMPARE_WITH_TIMEOUT(shownArtist(0), QStringLiteral("Ada"), 60000);
        QSignalSpy saved(m_state->tagEditor(), &TagEditorSession::tagsWritten);
        m_state->tagEditor()->open(idOf(0));
        QTRY_VERIFY_WITH_TIMEOUT(m_state->tagEditor()->isOpen(), 60000);
        m_state->tagEditor()->save(QStringLiteral("Ada"), QStringLiteral("Ada Lind"), QString());
        QTRY_COMPARE_WITH_TIMEOUT(saved.size(), 1, 60000);
        QTRY_COMPARE_WITH_TIMEOUT(shownArtist(0), QStringLiteral("Ada Lind"), 60000);
    }

    // Opened for one song and at once for another: the second stays open,
    // whichever read finishes last.
    void editorOpensTheLatestSong()
    {
        TagEditorSession &editor = *m_state->tagEditor();
        QStringList opened;
        connect(&editor, &TagEditorSession::changed, this, [&] {
            if (editor.isOpen())
                opened.append(editor.trackId());
        });
        editor.open(idOf(0));
        editor.open(idOf(1));
        QTRY_VERIFY_WITH_TIMEOUT(editor.isOpen(), 60000);
        // Both reads have answered once the pool is idle and its answers delivered.
        QThreadPool::globalInstance()->waitForDone();
        QCoreApplication::sendPostedEvents();
        QCOMPARE(editor.trackId(), idOf(1));
        // A read done before the second open may show the first song for a moment.
        QCOMPARE(opened.last(), idOf(1));
    }
};

QTEST_MAIN(TestAppFaults)
#include "tst_app_faults.moc"
