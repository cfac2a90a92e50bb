// SPDX-License-Identifier: GPL-3.0-or-later
#include "Playlists.h"

#include "Banner.h"
#include "model/PlaylistStore.h"

#include <QTimer>

Playlists::Playlists(PlaylistStore &store, Banner &banner, SongLookup lookup, QObject *parent)
    : QObject(parent)
    , m_store(store)
    , m_banner(banner)
    , m_lookup(std::move(lookup))
{
    connect(&m_store, &PlaylistStore::playlistsChanged, this, &Playlists::entriesChanged);
}

QVariantList Playlists::entries() const
{
    QVariantList list;
    for (const Playlist &p : m_store.playlists()) {
        list.append(QVariantMap{{QStringLiteral("id"), trackjson::uuidText(p.id)},
                                {QStringLiteral("name"), p.name},
                                {QStringLiteral("count"), int(p.tracks.size())}});
    }
    return list;
}

void Playlists::setShowingCreate(bool on)
{
    if (on == m_showingCreate)
        return;
    m_showingCreate = on;
    Q_EMIT showingCreateChanged();
}

void Playlists::create(const QString &name)
{
    m_store.createPlaylist(name);
    setShowingCreate(false);
}

void Playlists::cancelCreate()
{
    setShowingCreate(false);
}

QString Playlists::draggingTrackId() const
{
    return m_draggingTrack ? trackjson::uuidText(m_draggingTrack->id) : QString();
}

void Playlists::beginDrag(const QString &trackId)
{
    if (const std::optional<Track> track = m_lookup(trackId))
        setDraggingTrack(track);
}

void Playlists::setDraggingTrack(const std::optional<Track> &track)
{
    if (track == m_draggingTrack)
        return;
    m_draggingTrack = track;
    Q_EMIT draggingTrackChanged();
    // Never cancelled: it forgets whatever drag is current when it fires.
    if (track)
        QTimer::singleShot(dragResetMs, this, [this] { setDraggingTrack(std::nullopt); });
}

void Playlists::drop(const QString &trackId, const QString &playlistId)
{
    const std::optional<Track> track = m_lookup(trackId);
    if (!track) {
        setDraggingTrack(std::nullopt);
        return;
    }
    drop(*track, trackjson::parseUuid(playlistId).value_or(QUuid()));
}

void Playlists::drop(const Track &track, const QUuid &playlistId)
{
    setDraggingTrack(std::nullopt);
    const bool added = m_store.addTrack(track, playlistId);
    const Playlist *playlist = m_store.playlist(playlistId);
    const QString name = playlist ? playlist->name : QStringLiteral("playlist");
    m_banner.show((added ? QStringLiteral("Added to ") : QStringLiteral("Already in ")) + name,
                  Banner::Animation::Spring, droppedMessageMs);
}
