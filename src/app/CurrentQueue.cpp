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
    // Songs new to the library join the end of the list; a playlist's list
    // does not change.
    connect(&library, &Library::tracksAppended, this, [this](int first, int count) {
        if (isPlaylist())
            return;
        m_model.appendTracks(m_library.tracks().mid(first, count));
        Q_EMIT changed();
    });
    connect(&library, &Library::folderForgotten, this, &CurrentQueue::refresh);
    connect(&navigation, &Navigation::selectedPlaylistIDChanged, this, [this] {
        const std::optional<QUuid> id = m_navigation.selectedPlaylist();
        if (const Playlist *playlist = id ? m_playlists.playlist(*id) : nullptr)
            qCDebug(lcApp).nospace() << "playlist: " << playlist->name << ", " << playlist->tracks.size() << " songs";
        refresh();
    });
    connect(&playlists, &PlaylistStore::playlistsChanged, this, &CurrentQueue::refresh);
}

void CurrentQueue::refresh()
{
    m_model.setTracks(tracks());
    Q_EMIT changed();
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
