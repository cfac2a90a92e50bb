// SPDX-License-Identifier: GPL-3.0-or-later
// The main state with real playback (through fakesink): what a song that
// starts or ends sets in motion, the space bar, the queue and the tag writer.
#include "AppState.h"
#include "model/LocalPath.h"
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
        QTRY_COMPARE_WITH_TIMEOUT(imported.size(), 1, 5000);
        QTRY_VERIFY_WITH_TIMEOUT(indexed.size() >= 1 && !m_state->searchIndex()->isBuilding(), 5000);
    }

    QString idOf(int row) const { return trackjson::uuidText(m_state->library()->tracks().at(row).id); }

private Q_SLOTS:
    void initTestCase()
    {
        QCoreApplication::setOrganizationName(QStringLiteral("Tarnwell"));
        QCoreApplication::setApplicationName(QStringLiteral("Tarnwell"));
        QVERIFY(m_dir.isValid());
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
        m_state->nowPlaying()->play(idOf(0));
        QCOMPARE(m_state->nowPlaying()->trackId(), idOf(0));
        QCOMPARE(m_state->nowPlaying()->trackName(), QStringLiteral("01 First"));
        QCOMPARE(m_state->preferences()->recentArtists(), QStringList{QStringLiteral("Ada")});
        QCOMPARE(m_state->mpris().metadata().value(QStringLiteral("xesam:title")).toString(),
                 QStringLiteral("01 First"));

        QTRY_COMPARE_WITH_TIMEOUT(m_state->nowPlaying()->trackId(), idOf(1), 5000);
        QTRY_VERIFY_WITH_TIMEOUT(m_state->nowPlaying()->isPlaying(), 3000);
        QCOMPARE(m_state->preferences()->recentArtists(), (QStringList{QStringLiteral("Bo"), QStringLiteral("Ada")}));
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

        m_state->nowPlaying()->play(idOf(1));
        QTRY_VERIFY_WITH_TIMEOUT(m_state->nowPlaying()->isPlaying(), 3000);

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
            QTRY_VERIFY_WITH_TIMEOUT(!m_state->nowPlaying()->isPlaying(), 3000);
        else
            QTest::qWait(150);
        QCOMPARE(m_state->nowPlaying()->isPlaying(), !toggles);
        QCOMPARE(m_state->nowPlaying()->trackId(), idOf(1));
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
        QCOMPARE(m_state->controller().history().size(), 1);
        QCOMPARE(m_state->controller().history().last().id, m_state->library()->tracks().at(1).id);
        QVERIFY(!m_state->navigation()->searchActive());
        QCOMPARE(m_state->navigation()->searchText(), QString());
        // Previous goes back to the song that played before the search.
        m_state->nowPlaying()->previous();
        QCOMPARE(m_state->nowPlaying()->trackId(), idOf(1));
    }

    void theQueueFollowsTheSelectedPlaylist()
    {
        QSignalSpy queueChanged(m_state->queue(), &CurrentQueue::changed);
        m_state->playlistStore().createPlaylist(QStringLiteral("Road"));
        const QUuid road = m_state->playlistStore().playlists().constFirst().id;
        m_state->playlists()->drop(m_state->library()->tracks().at(1), road);
        QVERIFY(queueChanged.size() >= 2);
        QCOMPARE(m_state->queue()->tracks().size(), 2);

        m_state->navigation()->selectPlaylist(trackjson::uuidText(road));
        QCOMPARE(m_state->queue()->tracks().size(), 1);
        QCOMPARE(m_state->queue()->tracks().constFirst().url, m_state->library()->tracks().at(1).url);

        // The playlist's one song is followed by itself.
        m_state->nowPlaying()->play(trackjson::uuidText(m_state->queue()->tracks().constFirst().id));
        m_state->nowPlaying()->next();
        QCOMPARE(m_state->nowPlaying()->track()->url, m_state->library()->tracks().at(1).url);
    }

    void anAlbumOfTheShownArtistPlaysFromItsFirstSong()
    {
        // A name the grid doesn't have shows the grid.
        m_state->navigation()->openArtist(QStringLiteral("Nobody"));
        QVERIFY(m_state->artistBrowser()->artists()->isLoading());
        QTRY_VERIFY_WITH_TIMEOUT(!m_state->artistBrowser()->artists()->isLoading(), 5000);
        QCOMPARE(m_state->artistBrowser()->artists()->count(), 2);
        QVERIFY(!m_state->artistBrowser()->showingDetail());

        m_state->navigation()->setSelectedArtistName(QStringLiteral("Ada"));
        QVERIFY(m_state->artistBrowser()->showingDetail());
        QTRY_VERIFY_WITH_TIMEOUT(!m_state->artistBrowser()->detail()->isLoading(), 5000);
        QCOMPARE(m_state->artistBrowser()->detail()->albums()->count(), 1);

        m_state->artistBrowser()->selectAlbum(QStringLiteral("Dawn"));
        QCOMPARE(m_state->nowPlaying()->trackName(), QStringLiteral("01 First"));
        QCOMPARE(m_state->navigation()->selectedArtistAlbum(), QStringLiteral("Dawn"));
        QCOMPARE(m_state->artistBrowser()->detail()->tracks()->count(), 1);

        m_state->navigation()->backToArtists();
        QVERIFY(m_state->navigation()->selectedArtistName().isEmpty());
        QVERIFY(m_state->navigation()->selectedArtistAlbum().isEmpty());
        QVERIFY(!m_state->artistBrowser()->showingDetail());
    }

    void anAlbumChosenElsewhereSurvivesTheArtistsLoad()
    {
        // As from the search: artist and album at once, before anything loaded.
        m_state->navigation()->openAlbum(QStringLiteral("Bo"), QStringLiteral("Dusk"));
        QTRY_VERIFY_WITH_TIMEOUT(m_state->artistBrowser()->showingDetail() && !m_state->artistBrowser()->detail()->isLoading(), 5000);
        QCOMPARE(m_state->artistBrowser()->detail()->selectedAlbum(), QStringLiteral("Dusk"));
        QCOMPARE(m_state->navigation()->selectedArtistAlbum(), QStringLiteral("Dusk"));
    }

    void savedTagsReachTheFile()
    {
                m_state->tagEditor()->open(idOf(0));
        QTRY_VERIFY_WITH_TIMEOUT(m_state->tagEditor()->isOpen(), 3000);
        QCOMPARE(m_state->tagEditor()->meta().value(QStringLiteral("artist")).toString(), QStringLiteral("Ada"));

        m_state->tagEditor()->save(QStringLiteral("New Title"), QString(), QStringLiteral("Album"));
        QTRY_COMPARE_WITH_TIMEOUT(m_state->banner()->text(), QStringLiteral("Tags saved"), 5000);
        QVERIFY(!m_state->tagEditor()->isOpen());
        const TrackMetadata meta = readMetadata(m_state->library()->tracks().at(0).path());
        QCOMPARE(meta.title, std::optional<QString>(QStringLiteral("New Title")));
        QCOMPARE(meta.artist, std::nullopt);
        QCOMPARE(meta.album, std::optional<QString>(QStringLiteral("Album")));
    }
};

QTEST_MAIN(TestAppPlayback)
#include "tst_app_playback.moc"
