// SPDX-License-Identifier: GPL-3.0-or-later
#include "SearchIndex.h"

#include "DeliverLater.h"
#include "TrackIndexData.h"

#include "model/Log.h"

#include <QElapsedTimer>
#include <QtConcurrent>

SearchIndex::SearchIndex(QObject *parent)
    : SearchIndex(defaultMetadataReader(), parent)
{
}

SearchIndex::SearchIndex(MetadataReader reader, QObject *parent)
    : QObject(parent)
    , m_reader(std::move(reader))
    , m_artists({{"name", [](const QString &name) { return QVariant(name); }}}, std::equal_to<QString>())
{
}

void SearchIndex::setIndex(const TrackIndex &index)
{
    m_index = index;
    m_artists.setRows(allArtistNames());
    Q_EMIT indexChanged();
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

void SearchIndex::retain(const QList<Track> &songs)
{
    QSet<QUuid> kept;
    kept.reserve(songs.size());
    for (const Track &song : songs)
        kept.insert(song.id);
    const auto gone = [&kept](const Track &song) { return !kept.contains(song.id); };
    m_waiting.removeIf(gone);
    // Songs being indexed now go in the build after theirs.
    for (const Track &song : std::as_const(m_inFlight)) {
        if (gone(song))
            m_removed.insert(song.id);
    }
    for (const TrackSearchEntry &entry : m_index.entries()) {
        if (gone(entry.track))
            m_removed.insert(entry.track.id);
    }
    if (m_removed.isEmpty() || m_building)
        return;
    m_building = true;
    Q_EMIT isBuildingChanged();
    startBuild();
}

void SearchIndex::reindex(const Track &song)
{
    // The old entry goes in a build of its own before the song is read again.
    m_removed.insert(song.id);
    add({song});
}

void SearchIndex::startBuild()
{
    auto timer = std::make_shared<QElapsedTimer>();
    timer->start();
    if (!m_removed.isEmpty()) {
        // The remaining entries keep their tags: the index is laid out anew from them.
        deliverLater(QtConcurrent::run([index = m_index, removed = std::exchange(m_removed, {})] {
                         QList<TrackSearchEntry> entries = index.entries().toList();
                         entries.removeIf([&removed](const TrackSearchEntry &e) { return removed.contains(e.track.id); });
                         return TrackIndex(std::move(entries));
                     }),
                     this, [this, timer](const TrackIndex &index) {
                         qCDebug(lcBrowse) << "search index of" << index.size() << "songs," << m_index.size() - index.size()
                                           << "removed, in" << timer->elapsed() << "ms";
                         setIndex(index);
                         Q_EMIT songsRemoved();
                         finishBuild();
                     });
        return;
    }
    const QList<Track> songs = std::exchange(m_waiting, {});
    m_inFlight = songs;
    deliverLater(extendTrackIndex(m_index, songs, m_reader), this, [this, timer](const TrackIndex &index) {
        const auto first = int(m_index.size());
        qCDebug(lcBrowse) << "search index of" << index.size() << "songs," << index.size() - first << "new, built in"
                          << timer->elapsed() << "ms";
        setIndex(index);
        m_inFlight.clear();
        Q_EMIT songsIndexed(first, int(m_index.size()) - first);
        finishBuild();
    });
}

void SearchIndex::finishBuild()
{
    if (!m_waiting.isEmpty() || !m_removed.isEmpty()) {
        startBuild();
        return;
    }
    m_building = false;
    Q_EMIT isBuildingChanged();
}

SearchResults SearchIndex::results(const QString &searchText) const
{
    return computeSearchResults(searchText, m_index);
}

QStringList SearchIndex::allArtistNames() const
{
    return ::allArtistNames(m_index);
}

QStringList SearchIndex::knownArtists(const QStringList &names) const
{
    const QStringList &artists = m_index.data().artistNames;
    QStringList known;
    for (const QString &name : names) {
        if (artists.contains(name, Qt::CaseInsensitive))
            known.append(name);
    }
    return known;
}

std::optional<QString> SearchIndex::artistForTrack(const QUuid &trackId) const
{
    return ::artistForTrack(m_index, trackId);
}

QVariantMap SearchIndex::search(const QString &searchText) const
{
    return results(searchText).toVariantMap();
}
