// SPDX-License-Identifier: GPL-3.0-or-later
#include "SearchIndex.h"

#include "DeliverLater.h"

#include "model/Log.h"

#include <QElapsedTimer>

SearchIndex::SearchIndex(QObject *parent)
    : SearchIndex(defaultMetadataReader(), parent)
{
}

SearchIndex::SearchIndex(MetadataReader reader, QObject *parent)
    : QObject(parent)
    , m_reader(std::move(reader))
{
}

void SearchIndex::rebuild(const QList<Track> &tracks)
{
    if (m_running++ == 0)
        Q_EMIT isBuildingChanged();
    auto timer = std::make_shared<QElapsedTimer>();
    timer->start();
    deliverLater(buildTrackIndex(tracks, m_reader), this, [this, timer](const TrackIndex &index) {
        qCDebug(lcBrowse) << "search index of" << index.size() << "songs built in" << timer->elapsed()
                          << "ms";
        m_index = index;
        Q_EMIT indexChanged();
        if (--m_running == 0)
            Q_EMIT isBuildingChanged();
    });
}

SearchResults SearchIndex::results(const QString &searchText) const
{
    return computeSearchResults(searchText, m_index);
}

QStringList SearchIndex::allArtistNames() const
{
    return ::allArtistNames(m_index);
}

std::optional<QString> SearchIndex::artistForTrack(const QUuid &trackId) const
{
    return ::artistForTrack(m_index, trackId);
}

QVariantMap SearchIndex::search(const QString &searchText) const
{
    return results(searchText).toVariantMap();
}
