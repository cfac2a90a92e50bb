// SPDX-License-Identifier: GPL-3.0-or-later
#include "ArtistDetail.h"

#include "DeliverLater.h"

ArtistDetail::ArtistDetail(QObject *parent)
    : ArtistDetail(defaultMetadataReader(), parent)
{
}

ArtistDetail::ArtistDetail(MetadataReader reader, QObject *parent)
    : QObject(parent)
    , m_reader(std::move(reader))
{
}

void ArtistDetail::load(const QString &artistName, const QList<Track> &artistTracks)
{
    if (m_cancelRunning)
        m_cancelRunning->store(true);
    m_cancelRunning = std::make_shared<std::atomic_bool>(false);
    const quint64 generation = ++m_generation;
    if (m_artistName != artistName) {
        m_artistName = artistName;
        Q_EMIT artistNameChanged();
    }
    setLoading(true);
    deliverLater(loadArtistDetail(artistTracks, m_reader, m_cancelRunning), this,
        [this, generation](const QList<TrackInfo> &infos) {
            if (generation != m_generation)
                return;
            m_infos = infos;
            m_albums.setRows(albumGroups(m_infos));
            // A reload after the library grew: albums kept their rows, maybe not their size.
            m_albums.rowsChanged([](const AlbumGroup &) { return true; }, { AlbumListModel::TrackCountRole });
            m_visible.setRows(visibleTracks(m_infos, m_selectedAlbum));
            setLoading(false);
            Q_EMIT loaded();
        });
}

void ArtistDetail::setSelectedAlbum(const QString &album)
{
    if (m_selectedAlbum == album)
        return;
    m_selectedAlbum = album;
    m_albums.setSelectedAlbum(album);
    m_visible.setRows(visibleTracks(m_infos, m_selectedAlbum));
    Q_EMIT selectedAlbumChanged();
}

std::optional<Track> ArtistDetail::selectAlbum(const QString &album)
{
    setSelectedAlbum(album);
    for (const AlbumGroup &group : m_albums.rows()) {
        if (sameAlbumName(group.name, album) && !group.tracks.isEmpty())
            return group.tracks.first();
    }
    return std::nullopt;
}

void ArtistDetail::setLoading(bool loading)
{
    if (m_loading == loading)
        return;
    m_loading = loading;
    Q_EMIT isLoadingChanged();
}
