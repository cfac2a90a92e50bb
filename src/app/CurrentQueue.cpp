// SPDX-License-Identifier: GPL-3.0-or-later
#include "CurrentQueue.h"

#include "Library.h"
#include "Navigation.h"
#include "model/Log.h"
#include "model/PlaylistStore.h"
#include "playback/PlaybackController.h"

CurrentQueue::CurrentQueue(const Library &library, const Navigation &navigation, const PlaylistStore &playlists,
                           QObject *parent)
    : QObject(parent)
    , m_library(library)
    , m_navigation(navigation)
    , m_playlists(playlists)
{
    connect(&library, &Library::tracksChanged, this, &CurrentQueue::changed);
    connect(&navigation, &Navigation::selectedPlaylistIDChanged, this, [this] {
        const std::optional<QUuid> id = m_navigation.selectedPlaylist();
        if (const Playlist *playlist = id ? m_playlists.playlist(*id) : nullptr)
            qCDebug(lcApp).nospace() << "playlist: " << playlist->name << ", " << playlist->tracks.size() << " songs";
        Q_EMIT changed();
    });
    connect(&playlists, &PlaylistStore::playlistsChanged, this, &CurrentQueue::changed);
    connect(this, &CurrentQueue::changed, this, [this] { m_model.setTracks(tracks()); });
}

QList<Track> CurrentQueue::tracks() const
{
    return playbackQueue(m_navigation.selectedPlaylist(), m_playlists.playlists(), m_library.tracks());
}

QString CurrentQueue::title() const
{
    const std::optional<QUuid> id = m_navigation.selectedPlaylist();
    const Playlist *playlist = id ? m_playlists.playlist(*id) : nullptr;
    return playlist ? playlist->name : QStringLiteral("All Songs");
}

bool CurrentQueue::isPlaylist() const
{
    const std::optional<QUuid> id = m_navigation.selectedPlaylist();
    return id && m_playlists.playlist(*id);
}
