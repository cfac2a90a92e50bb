// SPDX-License-Identifier: GPL-3.0-or-later
#include "ArtistListModel.h"

#include "DeliverLater.h"

namespace {

QList<RowListModel<ArtistGroup>::Column> artistColumns()
{
    return {
        {"name", [](const ArtistGroup &artist) { return QVariant(artist.name); }},
        {"trackCount", [](const ArtistGroup &artist) { return QVariant(int(artist.tracks.size())); }},
    };
}

} // namespace

ArtistListModel::ArtistListModel(QObject *parent)
    : ArtistListModel(defaultMetadataReader(), parent)
{
}

ArtistListModel::ArtistListModel(MetadataReader reader, QObject *parent)
    : RowListModel<ArtistGroup>(artistColumns(), [](const ArtistGroup &a, const ArtistGroup &b) { return a.name == b.name; },
                                parent)
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
            // Rows of the same artist stay where they are, new artists are
            // inserted: the grid keeps its place while the library grows.
            QHash<QString, qsizetype> counts;
            counts.reserve(rows().size());
            for (const ArtistGroup &artist : rows())
                counts.insert(artist.name, artist.tracks.size());
            setRows(artists);
            rowsChanged(
                [&](const ArtistGroup &artist) {
                    const auto before = counts.constFind(artist.name);
                    return before != counts.cend() && *before != artist.tracks.size();
                },
                { TrackCountRole });
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
    const auto row = findArtist(rows(), name);
    return row ? int(*row) : -1;
}

QList<Track> ArtistListModel::tracksOf(const QString &name) const
{
    const auto row = findArtist(rows(), name);
    return row ? rows().at(*row).tracks : QList<Track>();
}
