// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppState.h"

#include "ArtworkSources.h"
#include "LibraryImport.h"
#include "Theme.h"

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
    // With reduced motion the picture behind the window changes at once.
    , m_background(nullptr, Theme::duration(2000), Theme::duration(2100))
    , m_controller(m_player, [this] { return m_queue.tracks(); })
    , m_mpris(m_player, m_controller)
    , m_indexing(m_artworkLoader)
    , m_library(m_folderMonitor)
    , m_queue(m_library, m_navigation, m_playlistStore)
    , m_nowPlaying({m_player, m_controller, m_mpris, m_artworkLoader, m_background, m_preferences, *m_indexing.searchIndex()},
                   [this](const QString &id) { return findSong(id); })
    , m_playlists(m_playlistStore, m_banner, [this](const QString &id) { return findSong(id); })
    , m_tagEditor(m_banner, [this](const QString &id) { return findSong(id); })
    , m_artistBrowser(m_navigation, m_indexing.tagReader())
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
    // Songs join the library at its end: the ones appended are new to the index.
    connect(&m_library, &Library::tracksAppended, this,
            [this](int first, int count) { m_indexing.add(m_library.tracks().mid(first, count)); });
    // The artists screen, when shown, groups the new songs too.
    connect(&m_indexing, &SongIndexing::songsIndexed, this, [this] {
        if (m_navigation.screen() == Navigation::Screen::Artists)
            m_artistBrowser.load(m_library.tracks());
    });
    // However songs arrive (an import, a watched folder), the welcome is done.
    connect(&m_library, &Library::tracksChanged, this, [this] {
        if (m_library.trackCount() > 0)
            m_preferences.completeOnboarding();
    });
    connect(&m_library, &Library::folderImported, this, [this](const QUrl &folder) {
        // A folder forgotten while it was imported is not watched, nor remembered.
        if (m_folderMonitor.watchedFolders().contains(folder))
            m_preferences.addLibraryFolder(folder);
    });
    connect(&m_library, &Library::folderForgotten, this, [this](const QUrl &folder) {
        m_preferences.removeLibraryFolder(folder);
        m_indexing.retain(m_library.tracks());
        groupShownScreen();
    });
    connect(&m_library, &Library::filesDiscovered, this, [this](int, int count) {
        m_banner.show(import::discoveredMessage(count), Banner::Animation::Default, discoveredMessageMs);
    });

    // The artists and the untagged songs are grouped anew each time their screen is opened.
    connect(&m_navigation, &Navigation::screenChanged, this, &AppState::groupShownScreen);
    // A song prepared to follow the playing one is chosen again from the new queue.
    connect(&m_queue, &CurrentQueue::changed, this, [this] { m_controller.queueChanged(); });
    connect(&m_artistBrowser, &ArtistBrowser::playRequested, this,
            [this](const Track &first) { m_nowPlaying.play(first); });

    // Albums and artists without a picture on disk show their songs' own.
    connect(&m_artworkLoader.albumPictures(), &AlbumPictures::replaced, this, &ArtworkSources::announceReplaced);

    // Song lists show tags read from the files: after a save they read again.
    const auto tagsWritten = [this](const QList<Track> &songs) {
        for (const Track &song : songs)
            m_indexing.rewritten(song, m_library.find(song.id).has_value());
        m_queue.model()->forgetFileInfo();
        m_artistBrowser.detail()->tracks()->forgetFileInfo();
    };
    connect(&m_tagEditor, &TagEditorSession::tagsWritten, this, tagsWritten);
    connect(&m_untagged, &UntaggedSongs::tagsWritten, this, tagsWritten);
}

void AppState::groupShownScreen()
{
    if (m_navigation.screen() == Navigation::Screen::Artists)
        m_artistBrowser.load(m_library.tracks());
    else if (m_navigation.screen() == Navigation::Screen::Untagged)
        m_untagged.load(m_library.tracks());
}

void AppState::importLibraryFolders()
{
    m_library.importFolders(m_preferences.libraryFolders());
}

void AppState::forgetLibraryFolder(const QUrl &folder)
{
    m_preferences.removeLibraryFolder(folder);
    m_library.forgetFolder(folder);
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
