// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppState.h"

#include "ArtworkSources.h"
#include "LibraryImport.h"
#include "Theme.h"
#include "artwork/AlbumPictures.h"

#include <QtConcurrent>

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
    connect(&m_library, &Library::folderForgotten, this, &AppState::afterForget);
    // Songs join the library at its end: the ones appended are new to the index.
    connect(&m_library, &Library::tracksAppended, this,
            [this](int first, int count) { m_searchIndex.add(m_library.tracks().mid(first, count)); });
    connect(&m_searchIndex, &SearchIndex::songsIndexed, this, &AppState::afterIndexing);
    connect(&m_searchIndex, &SearchIndex::songsRemoved, this,
            [this] { pictureSongs(m_searchIndex.trackIndex().entries(), true); });
    // However songs arrive (an import, a watched folder), the welcome is done.
    connect(&m_library, &Library::tracksChanged, this, [this] {
        if (m_library.trackCount() > 0)
            m_preferences.completeOnboarding();
    });
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

    // Albums and artists without a picture on disk show their songs' own
    // (pictureSongs, as songs are indexed).
    connect(&m_artworkLoader.albumPictures(), &AlbumPictures::replaced, this, &ArtworkSources::announceReplaced);

    // Song lists show tags read from the files: after a save they read again.
    const auto tagsWritten = [this] {
        m_queue.model()->forgetFileInfo();
        m_artistBrowser.detail()->tracks()->forgetFileInfo();
    };
    connect(&m_tagEditor, &TagEditorSession::saved, this, [this, tagsWritten] {
        if (const std::optional<Track> song = findSong(m_editedSong)) {
            m_tags.forget(song->path());
            // Search finds the song by its new tags.
            if (m_library.find(song->id))
                m_searchIndex.reindex(*song);
        }
        tagsWritten();
    });
    connect(&m_untagged, &UntaggedSongs::saveFinished, this, [this, tagsWritten] {
        // The batch editor writes untagged songs only.
        for (const Track &song : m_library.tracks()) {
            const std::optional<TrackMetadata> meta = m_untagged.metadata(song.id);
            if (meta && UntaggedSongs::isUntagged(*meta)) {
                m_tags.forget(song.path());
                m_searchIndex.reindex(song);
            }
        }
        tagsWritten();
    });
}

void AppState::afterImport(const QUrl &folder)
{
    // A folder forgotten while it was imported is not watched, nor remembered.
    if (m_folderMonitor.watchedFolders().contains(folder))
        m_preferences.addLibraryFolder(folder);
}

void AppState::afterDiscovery(int, int count)
{
    m_banner.show(import::discoveredMessage(count), Banner::Animation::Default, discoveredMessageMs);
}

void AppState::afterIndexing(int first, int count)
{
    const QList<TrackSearchEntry> added = m_searchIndex.trackIndex().entries().mid(first, count);
    m_artworkPrefetch.start(added);
    pictureSongs(added, false);
    // The tags are in memory by now: grouping again reads no file.
    if (m_navigation.screen() == Navigation::Screen::Artists)
        m_artistBrowser.load(m_library.tracks());
}

void AppState::pictureSongs(QList<TrackSearchEntry> entries, bool whole)
{
    // One step after the other, so an album's songs keep library order.
    m_albumIndexing = m_albumIndexing.then(QtFuture::Launch::Async, [entries = std::move(entries)](const AlbumPictures::Index &) {
        QList<AlbumPictures::Song> songs;
        songs.reserve(entries.size());
        for (const TrackSearchEntry &entry : entries)
            songs.append({entry.track.url, entry.artist, entry.album});
        return AlbumPictures::makeIndex(songs);
    });
    m_albumIndexing.then(this, [this, whole](const AlbumPictures::Index &index) {
        if (whole)
            m_artworkLoader.albumPictures().setIndex(index);
        else
            m_artworkLoader.albumPictures().add(index);
    });
}

void AppState::afterForget(const QUrl &folder)
{
    m_preferences.removeLibraryFolder(folder);
    // Tags read from the forgotten songs are not kept: imported again, they are read again.
    QSet<QUuid> kept;
    kept.reserve(m_library.tracks().size());
    for (const Track &song : m_library.tracks())
        kept.insert(song.id);
    for (const TrackSearchEntry &entry : m_searchIndex.trackIndex().entries()) {
        if (!kept.contains(entry.track.id))
            m_tags.forget(entry.track.path());
    }
    m_searchIndex.retain(m_library.tracks());
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
