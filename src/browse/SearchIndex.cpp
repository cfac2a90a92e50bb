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

void SearchIndex::add(const QList<Track> &songs)
{
    if (songs.isEmpty())
        return;
    m_waiting.append(songs);
    if (m_building)
        return;
    m_building = true;
    Q_EMIT isBuildingChanged();
    startBuild();
}

void SearchIndex::startBuild()
{
    auto timer = std::make_shared<QElapsedTimer>();
    timer->start();
    const QList<Track> songs = std::exchange(m_waiting, {});
    deliverLater(extendTrackIndex(m_index, songs, m_reader), this, [this, timer](const TrackIndex &index) {
        const auto first = int(m_index.size());
        qCDebug(lcBrowse) << "search index of" << index.size() << "songs," << index.size() - first << "new, built in"
                          << timer->elapsed() << "ms";
        m_index = index;
        Q_EMIT indexChanged();
        Q_EMIT songsIndexed(first, int(m_index.size()) - first);
        if (!m_waiting.isEmpty()) {
            startBuild();
            return;
        }
        m_building = false;
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
