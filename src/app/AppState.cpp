// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppState.h"

#include "LibraryImport.h"

#include <QQmlEngine>

namespace {

AppState *s_instance = nullptr;

} // namespace

AppState::AppState(QObject *parent)
    : AppState(PlaylistStore::defaultSaveFile(), parent)
{
}

AppState::AppState(const QString &playlistFile, QObject *parent)
    : QObject(parent)
    , m_playlistStore(playlistFile)
    , m_controller(m_player, [this] { return m_queue.tracks(); })
    , m_mpris(m_player, m_controller)
    , m_searchIndex(m_tags.reader())
    , m_library(m_folderMonitor)
    , m_queue(m_library, m_navigation, m_playlistStore)
    , m_nowPlaying({m_player, m_controller, m_mpris, m_artworkLoader, m_background, m_preferences, m_searchIndex},
                   [this](const QString &id) { return findSong(id); })
    , m_playlists(m_playlistStore, m_banner, [this](const QString &id) { return findSong(id); })
    , m_tagEditor(m_banner, [this](const QString &id) { return findSong(id); })
    , m_artistBrowser(m_navigation, m_tags.reader())
    , m_artworkPrefetch(m_artworkLoader)
    , m_keyPressFilter([this](const KeyPressFilter::KeyPress &press) { return m_nowPlaying.handleKeyPress(press); })
{
    connectRooms();
}

AppState::~AppState()
{
    m_mpris.unregisterFromBus();
    if (s_instance == this)
        s_instance = nullptr;
}

AppState *AppState::create(QQmlEngine *engine, QJSEngine *)
{
    if (s_instance) {
        QQmlEngine::setObjectOwnership(s_instance, QQmlEngine::CppOwnership);
        return s_instance;
    }
    // An engine without a program around it (a Qt Quick test): it owns this one.
    return new AppState(engine);
}

void AppState::setInstance(AppState *state)
{
    s_instance = state;
}

void AppState::connectRooms()
{
    connect(&m_library, &Library::folderImported, this, &AppState::afterImport);
    connect(&m_library, &Library::filesDiscovered, this, &AppState::afterDiscovery);
    connect(&m_searchIndex, &SearchIndex::songsIndexed, this, &AppState::afterIndexing);
    connect(&m_tagEditor, &TagEditorSession::changed, this, [this] {
        if (m_tagEditor.isOpen())
            m_editedSong = m_tagEditor.trackId();
    });

    // The artists and the untagged songs are grouped anew each time their
    // screen is opened; the artists also each time songs are indexed while
    // their screen is open (afterIndexing).
    connect(&m_navigation, &Navigation::screenChanged, this, [this] {
        if (m_navigation.screen() == Navigation::Screen::Artists)
            m_artistBrowser.load(m_library.tracks());
        else if (m_navigation.screen() == Navigation::Screen::Untagged)
            m_untagged.load(m_library.tracks());
    });
    // A song prepared to follow the playing one is chosen again from the new queue.
    connect(&m_queue, &CurrentQueue::changed, this, [this] { m_controller.queueChanged(); });
    connect(&m_artistBrowser, &ArtistBrowser::playRequested, this,
            [this](const Track &first) { m_nowPlaying.play(first); });

    // Song lists show tags read from the files: after a save they read again.
    const auto tagsWritten = [this] {
        m_queue.model()->forgetFileInfo();
        m_artistBrowser.detail()->tracks()->forgetFileInfo();
    };
    connect(&m_tagEditor, &TagEditorSession::saved, this, [this, tagsWritten] {
        if (const std::optional<Track> song = findSong(m_editedSong))
            m_tags.forget(song->path());
        tagsWritten();
    });
    connect(&m_untagged, &UntaggedSongs::saveFinished, this, [this, tagsWritten] {
        // The batch editor writes untagged songs only.
        for (const Track &song : m_library.tracks()) {
            const std::optional<TrackMetadata> meta = m_untagged.metadata(song.id);
            if (meta && UntaggedSongs::isUntagged(*meta))
                m_tags.forget(song.path());
        }
        tagsWritten();
    });
}

void AppState::afterImport()
{
    if (m_library.tracks().isEmpty())
        return;
    m_preferences.completeOnboarding();
    indexNewSongs();
}

void AppState::afterDiscovery(int, int count)
{
    indexNewSongs();
    m_banner.show(import::discoveredMessage(count), Banner::Animation::Default, discoveredMessageMs);
}

void AppState::indexNewSongs()
{
    // The library only grows at its end: what the index has not been given is its tail.
    m_searchIndex.add(m_library.tracks().mid(m_songsGivenToIndex));
    m_songsGivenToIndex = m_library.tracks().size();
}

void AppState::afterIndexing(int first, int count)
{
    m_artworkPrefetch.start(m_searchIndex.trackIndex().entries().mid(first, count));
    // The tags are in memory by now: grouping again reads no file.
    if (m_navigation.screen() == Navigation::Screen::Artists)
        m_artistBrowser.load(m_library.tracks());
}

std::optional<Track> AppState::findSong(const QString &trackId) const
{
    const std::optional<QUuid> id = trackjson::parseUuid(trackId);
    if (!id)
        return std::nullopt;
    if (std::optional<Track> song = m_library.find(*id))
        return song;
    for (const Playlist &p : m_playlistStore.playlists()) {
        for (const Track &t : p.tracks) {
            if (t.id == *id)
                return t;
        }
    }
    return std::nullopt;
}

void AppState::playFromSearch(const QString &trackId)
{
    m_navigation.dismissSearch();
    m_nowPlaying.play(trackId);
}

void AppState::selectTheme(int themeIndex)
{
    m_preferences.selectTheme(themeIndex);
    m_navigation.setShowThemePicker(false);
}
