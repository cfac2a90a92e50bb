// SPDX-License-Identifier: GPL-3.0-or-later
#include "ArtistListModel.h"

#include "DeliverLater.h"

ArtistListModel::ArtistListModel(QObject *parent)
    : ArtistListModel(defaultMetadataReader(), parent)
{
}

ArtistListModel::ArtistListModel(MetadataReader reader, QObject *parent)
    : QAbstractListModel(parent)
    , m_reader(std::move(reader))
{
}

void ArtistListModel::load(const QList<Track> &tracks)
{
    // The superseded run stops reading tags; whatever it still delivers is
    // recognised by its generation and dropped.
    if (m_cancelRunning)
        m_cancelRunning->store(true);
    m_cancelRunning = std::make_shared<std::atomic_bool>(false);
    const quint64 generation = ++m_generation;
    setLoading(true);
    deliverLater(loadArtists(tracks, m_reader, m_cancelRunning), this,
        [this, generation](const QList<ArtistGroup> &artists) {
            if (generation != m_generation)
                return;
            const int before = count();
            beginResetModel();
            m_artists = artists;
            endResetModel();
            if (count() != before)
                Q_EMIT countChanged();
            setLoading(false);
            Q_EMIT loaded();
        });
}

void ArtistListModel::setLoading(bool loading)
{
    if (m_loading == loading)
        return;
    m_loading = loading;
    Q_EMIT isLoadingChanged();
}

int ArtistListModel::indexOf(const QString &name) const
{
    const auto row = findArtist(m_artists, name);
    return row ? int(*row) : -1;
}

QList<Track> ArtistListModel::tracksOf(const QString &name) const
{
    const auto row = findArtist(m_artists, name);
    return row ? m_artists.at(*row).tracks : QList<Track>();
}

int ArtistListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant ArtistListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const ArtistGroup &artist = m_artists.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return artist.name;
    case TrackCountRole:
        return int(artist.tracks.size());
    default:
        return {};
    }
}

QHash<int, QByteArray> ArtistListModel::roleNames() const
{
    return { { NameRole, "name" }, { TrackCountRole, "trackCount" } };
}
