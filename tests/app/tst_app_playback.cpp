// SPDX-License-Identifier: GPL-3.0-or-later
// The main state with real playback (through fakesink): what a song that
// starts or ends sets in motion, the queue and the artists screen.
#include "AppState.h"
#include "model/LocalPath.h"
#include "support/TestSupport.h"

#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

class TestAppPlayback : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<AppState> m_state;

    // Named in Latin-1, not UTF-8, as disks filled by older systems are: every
    // song is found, played, searched, grouped and tagged by its exact path.
    QString music() const { return m_dir.path() + localpath::fromBytes("/m\xfcsic"); }

    bool makeTagged(const QString &name, const QString &artist, const QString &album, double seconds)
    {
        const QString path = music() + QLatin1Char('/') + name;
        return testsupport::makeAudio(path, seconds)
            && testsupport::run(QStringLiteral("metaflac"),
                                {QStringLiteral("--set-tag=ARTIST=") + artist, QStringLiteral("--set-tag=ALBUM=") + album,
                                 QStringLiteral("--set-tag=TITLE=") + name, path})
                   .exitCode
            == 0;
    }

    // Imports the music folder and waits for the search index that names the
    // artists of the songs.
    void importAndIndex()
    {
        QSignalSpy imported(m_state->library(), &Library::folderImported);
        QSignalSpy indexed(m_state->searchIndex(), &SearchIndex::indexChanged);
        m_state->library()->importFolder(localpath::fileUrl(music()));
        QTRY_COMPARE_WITH_TIMEOUT(imported.size(), 1, 30000);
        QTRY_VERIFY_WITH_TIMEOUT(indexed.size() >= 1 && !m_state->searchIndex()->isBuilding(), 30000);
    }

    QString idOf(int row) const { return trackjson::uuidText(m_state->library()->tracks().at(row).id); }

private Q_SLOTS:
    void initTestCase()
    {
        QCoreApplication::setOrganizationName(QStringLiteral("Tarnwell"));
        QCoreApplication::setApplicationName(QStringLiteral("Tarnwell"));
        QVERIFY(m_dir.isValid());
        // The first runs out within a test; the second plays on.
        QVERIFY(makeTagged(QStringLiteral("01 First.flac"), QStringLiteral("Ada"), QStringLiteral("Dawn"), 0.6));
        QVERIFY(makeTagged(QStringLiteral("02 Second.flac"), QStringLiteral("Bo"), QStringLiteral("Dusk"), 8.0));
    }

    void init()
    {
        QSettings().clear();
        QFile::remove(m_dir.filePath(QStringLiteral("playlists.json")));
        m_state = std::make_unique<AppState>(m_dir.filePath(QStringLiteral("playlists.json")));
        importAndIndex();
    }

    void cleanup() { m_state.reset(); }

    void aFinishedSongHandsOverToTheNext()
    {
        m_state->nowPlaying()->play(idOf(0));
        QCOMPARE(m_state->nowPlaying()->trackName(), QStringLiteral("01 First"));
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
        const QVariantList songs
            = m_state->searchIndex()->search(m_state->navigation()->searchText()).value(QStringLiteral("tracks")).toList();
        QCOMPARE(songs.size(), 1);
        const QString chosen = songs.first().toMap().value(QStringLiteral("trackId")).toString();
        QCOMPARE(chosen, idOf(0));

        m_state->playFromSearch(chosen);
        QCOMPARE(m_state->nowPlaying()->trackId(), idOf(0));
        QVERIFY(!m_state->navigation()->searchActive());
        QCOMPARE(m_state->navigation()->searchText(), QString());
        // Previous goes back to the song that played before the search.
        m_state->nowPlaying()->previous();
        QCOMPARE(m_state->nowPlaying()->trackId(), idOf(1));
    }

    void theQueueFollowsTheSelectedPlaylist()
    {
        m_state->playlists()->create(QStringLiteral("Road"));
        const QString road = m_state->playlists()->entries().constFirst().toMap().value(QStringLiteral("id")).toString();
        m_state->playlists()->drop(idOf(1), road);
        QCOMPARE(m_state->queue()->tracks().size(), 2);

        m_state->navigation()->selectPlaylist(road);
        QCOMPARE(m_state->queue()->tracks().size(), 1);
        QCOMPARE(m_state->queue()->tracks().constFirst().url, m_state->library()->tracks().at(1).url);
        // The playlist's one song is followed by itself.
        m_state->nowPlaying()->play(trackjson::uuidText(m_state->queue()->tracks().constFirst().id));
        m_state->nowPlaying()->next();
        QCOMPARE(m_state->nowPlaying()->track()->url, m_state->library()->tracks().at(1).url);
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
        QCOMPARE(m_state->nowPlaying()->trackName(), QStringLiteral("02 Second"));
        m_state->navigation()->backToArtists();
        QVERIFY(m_state->navigation()->selectedArtistAlbum().isEmpty());
        QVERIFY(!m_state->artistBrowser()->showingDetail());
    }
};

QTEST_MAIN(TestAppPlayback)
#include "tst_app_playback.moc"
