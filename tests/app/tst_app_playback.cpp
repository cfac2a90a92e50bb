// SPDX-License-Identifier: GPL-3.0-or-later
// The main state with real playback (through fakesink): what a song that
// starts or ends sets in motion, the space bar, the queue and the tag writer.
#include "AppState.h"
#include "support/TestSupport.h"
#include "tags/TagReader.h"

#include <QKeyEvent>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
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

    QString music() const { return m_dir.filePath(QStringLiteral("music")); }

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
        QSignalSpy imported(m_state.get(), &AppState::folderImported);
        QSignalSpy indexed(m_state->searchIndex(), &SearchIndex::indexChanged);
        m_state->importFolder(QUrl::fromLocalFile(music()));
        QTRY_COMPARE_WITH_TIMEOUT(imported.size(), 1, 5000);
        QTRY_VERIFY_WITH_TIMEOUT(indexed.size() >= 1 && !m_state->searchIndex()->isBuilding(), 5000);
    }

    QString idOf(int row) const { return trackjson::uuidText(m_state->tracks().at(row).id); }

private Q_SLOTS:
    void initTestCase()
    {
        QCoreApplication::setOrganizationName(QStringLiteral("Tarnwell"));
        QCoreApplication::setApplicationName(QStringLiteral("Tarnwell"));
        QVERIFY(m_dir.isValid());
        QVERIFY(QDir().mkpath(music()));
        // Long enough to press keys while it plays, short enough to run out.
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
        m_state->playTrack(idOf(0));
        QCOMPARE(m_state->playingTrackId(), idOf(0));
        QCOMPARE(m_state->playingTrackName(), QStringLiteral("01 First"));
        QCOMPARE(m_state->recentArtists(), QStringList{QStringLiteral("Ada")});
        QCOMPARE(m_state->mpris().metadata().value(QStringLiteral("xesam:title")).toString(),
                 QStringLiteral("01 First"));

        QTRY_COMPARE_WITH_TIMEOUT(m_state->playingTrackId(), idOf(1), 5000);
        QTRY_VERIFY_WITH_TIMEOUT(m_state->isPlaying(), 3000);
        QCOMPARE(m_state->recentArtists(), (QStringList{QStringLiteral("Bo"), QStringLiteral("Ada")}));
        QCOMPARE(m_state->mpris().metadata().value(QStringLiteral("xesam:title")).toString(),
                 QStringLiteral("02 Second"));
    }

    void spaceBarTogglesPlaybackUnlessTyping_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<bool>("autoRepeat");
        QTest::addColumn<bool>("typing");
        QTest::addColumn<bool>("toggles");

        QTest::newRow("space") << int(Qt::Key_Space) << int(Qt::NoModifier) << false << false << true;
        QTest::newRow("held down") << int(Qt::Key_Space) << int(Qt::NoModifier) << true << false << false;
        QTest::newRow("with Ctrl") << int(Qt::Key_Space) << int(Qt::ControlModifier) << false << false << false;
        QTest::newRow("in a text field") << int(Qt::Key_Space) << int(Qt::NoModifier) << false << true << false;
        QTest::newRow("another key") << int(Qt::Key_K) << int(Qt::NoModifier) << false << false << false;
    }

    void spaceBarTogglesPlaybackUnlessTyping()
    {
        QFETCH(int, key);
        QFETCH(int, modifiers);
        QFETCH(bool, autoRepeat);
        QFETCH(bool, typing);
        QFETCH(bool, toggles);

        m_state->playTrack(idOf(1));
        QTRY_VERIFY_WITH_TIMEOUT(m_state->isPlaying(), 3000);

        QQuickWindow window;
        window.installEventFilter(m_state->keyPressFilter());
        QQmlEngine engine;
        QQmlComponent field(&engine);
        field.setData("import QtQuick\nTextInput { width: 100; height: 20 }", QUrl());
        std::unique_ptr<QObject> input(field.create());
        QVERIFY(input);
        if (typing) {
            auto *item = qobject_cast<QQuickItem *>(input.get());
            item->setParentItem(window.contentItem());
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            item->forceActiveFocus();
            QVERIFY(item->hasActiveFocus());
        }

        QKeyEvent press(QEvent::KeyPress, key, Qt::KeyboardModifiers(modifiers), QString(), autoRepeat);
        QCoreApplication::sendEvent(&window, &press);
        if (toggles)
            QTRY_VERIFY_WITH_TIMEOUT(!m_state->isPlaying(), 3000);
        else
            QTest::qWait(150);
        QCOMPARE(m_state->isPlaying(), !toggles);
        QCOMPARE(m_state->playingTrackId(), idOf(1));
    }

    void aSongChosenInTheSearchPlaysAndGoesAfterThePlayingOne()
    {
        m_state->playTrack(idOf(1));
        m_state->setSearchActive(true);
        m_state->setSearchText(QStringLiteral("fir"));
        const QVariantList songs
            = m_state->searchIndex()->search(m_state->searchText()).value(QStringLiteral("tracks")).toList();
        QCOMPARE(songs.size(), 1);
        const QString chosen = songs.first().toMap().value(QStringLiteral("trackId")).toString();
        QCOMPARE(chosen, idOf(0));

        m_state->playFromSearch(chosen);
        QCOMPARE(m_state->playingTrackId(), idOf(0));
        QCOMPARE(m_state->controller().history().size(), 1);
        QCOMPARE(m_state->controller().history().last().id, m_state->tracks().at(1).id);
        QVERIFY(!m_state->searchActive());
        QCOMPARE(m_state->searchText(), QString());
        // Previous goes back to the song that played before the search.
        m_state->playPrevious();
        QCOMPARE(m_state->playingTrackId(), idOf(1));
    }

    void theQueueFollowsTheSelectedPlaylist()
    {
        QSignalSpy queueChanged(m_state.get(), &AppState::currentQueueChanged);
        m_state->playlistStore().createPlaylist(QStringLiteral("Road"));
        const QUuid road = m_state->playlistStore().playlists().constFirst().id;
        m_state->dropOnPlaylist(m_state->tracks().at(1), road);
        QVERIFY(queueChanged.size() >= 2);
        QCOMPARE(m_state->currentQueue().size(), 2);

        m_state->setSelectedPlaylistID(trackjson::uuidText(road));
        QCOMPARE(m_state->currentQueue().size(), 1);
        QCOMPARE(m_state->currentQueue().constFirst().url, m_state->tracks().at(1).url);

        // The playlist's one song is followed by itself.
        m_state->playTrack(trackjson::uuidText(m_state->currentQueue().constFirst().id));
        m_state->playNext();
        QCOMPARE(m_state->playingTrack()->url, m_state->tracks().at(1).url);
    }

    void anAlbumOfTheShownArtistPlaysFromItsFirstSong()
    {
        // A name the grid doesn't have shows the grid.
        m_state->openArtist(QStringLiteral("Nobody"));
        QVERIFY(m_state->artists()->isLoading());
        QTRY_VERIFY_WITH_TIMEOUT(!m_state->artists()->isLoading(), 5000);
        QCOMPARE(m_state->artists()->count(), 2);
        QVERIFY(!m_state->showingArtistDetail());

        m_state->setSelectedArtistName(QStringLiteral("Ada"));
        QVERIFY(m_state->showingArtistDetail());
        QTRY_VERIFY_WITH_TIMEOUT(!m_state->artistDetail()->isLoading(), 5000);
        QCOMPARE(m_state->artistDetail()->albums()->count(), 1);

        m_state->selectAlbum(QStringLiteral("Dawn"));
        QCOMPARE(m_state->playingTrackName(), QStringLiteral("01 First"));
        QCOMPARE(m_state->selectedArtistAlbum(), QStringLiteral("Dawn"));
        QCOMPARE(m_state->artistDetail()->tracks()->count(), 1);

        m_state->backToArtists();
        QVERIFY(m_state->selectedArtistName().isEmpty());
        QVERIFY(m_state->selectedArtistAlbum().isEmpty());
        QVERIFY(!m_state->showingArtistDetail());
    }

    void anAlbumChosenElsewhereSurvivesTheArtistsLoad()
    {
        // As from the search: artist and album at once, before anything loaded.
        m_state->openAlbum(QStringLiteral("Bo"), QStringLiteral("Dusk"));
        QTRY_VERIFY_WITH_TIMEOUT(m_state->showingArtistDetail() && !m_state->artistDetail()->isLoading(), 5000);
        QCOMPARE(m_state->artistDetail()->selectedAlbum(), QStringLiteral("Dusk"));
        QCOMPARE(m_state->selectedArtistAlbum(), QStringLiteral("Dusk"));
    }

    void savedTagsReachTheFile()
    {
        QSignalSpy editor(m_state.get(), &AppState::tagEditorChanged);
        m_state->openTagEditor(idOf(0));
        QTRY_VERIFY_WITH_TIMEOUT(m_state->tagEditorOpen(), 3000);
        QCOMPARE(m_state->tagEditorMeta().value(QStringLiteral("artist")).toString(), QStringLiteral("Ada"));

        m_state->saveSingleTrackTags(QStringLiteral("New Title"), QString(), QStringLiteral("Album"), idOf(0));
        QTRY_COMPARE_WITH_TIMEOUT(m_state->successMessage(), QStringLiteral("Tags saved"), 5000);
        QVERIFY(!m_state->tagEditorOpen());
        const TrackMetadata meta = readMetadata(m_state->tracks().at(0).path());
        QCOMPARE(meta.title, std::optional<QString>(QStringLiteral("New Title")));
        QCOMPARE(meta.artist, std::nullopt);
        QCOMPARE(meta.album, std::optional<QString>(QStringLiteral("Album")));
    }
};

QTEST_MAIN(TestAppPlayback)
#include "tst_app_playback.moc"
