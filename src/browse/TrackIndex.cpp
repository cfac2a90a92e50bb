// SPDX-License-Identifier: GPL-3.0-or-later
#include "TrackIndexData.h"

#include "model/TextUtil.h"

#include <QCollator>
#include <QtConcurrent>

#include <algorithm>
#include <numeric>

namespace {

QString trimmedTag(const std::optional<QString> &tag)
{
    return tag ? text::trimmedHorizontal(*tag) : QString();
}

// The case-insensitive locale order of the artist names, stable.
QStringList sortedCaseInsensitive(QStringList names)
{
    const QCollator collator = text::caseInsensitiveCollator();
    std::vector<QCollatorSortKey> keys;
    keys.reserve(size_t(names.size()));
    for (const QString &n : names)
        keys.push_back(collator.sortKey(n));
    std::vector<qsizetype> order(size_t(names.size()));
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
        [&](qsizetype a, qsizetype b) { return keys[size_t(a)].compare(keys[size_t(b)]) < 0; });
    QStringList sorted;
    sorted.reserve(names.size());
    for (const qsizetype i : order)
        sorted.append(std::move(names[i]));
    return sorted;
}

} // namespace

TrackIndex::TrackIndex()
    : d(std::make_shared<const Data>())
{
}

TrackIndex::TrackIndex(QList<TrackSearchEntry> entries)
{
    auto data = std::make_shared<Data>();
    const size_t n = size_t(entries.size());
    data->names.reserve(n, n * 24);
    data->firstEntryOf.reserve(qsizetype(n));

    QHash<QString, size_t> artistOf;
    QHash<std::pair<QString, QString>, size_t> pairOf;
    QHash<QString, size_t> albumOf;
    QStringList artistSpellings;

    for (qsizetype i = 0; i < entries.size(); ++i) {
        const TrackSearchEntry &e = entries.at(i);
        data->names.append(foldForSearch(e.name));
        if (!data->firstEntryOf.contains(e.track.id))
            data->firstEntryOf.insert(e.track.id, i);

        const QString artistKey = foldForSearch(e.artist);
        if (!artistKey.isEmpty()) {
            auto it = artistOf.constFind(artistKey);
            if (it == artistOf.constEnd()) {
                it = artistOf.insert(artistKey, data->artists.size());
                data->artists.push_back({ artistKey, i, 0 });
                data->artistKeys.append(artistKey);
                artistSpellings.append(e.artist);
            }
            ++data->artists[*it].trackCount;
        }

        if (!e.album.isEmpty()) {
            const QString albumKey = foldForSearch(e.album);
            const QString id = artistKey + QStringLiteral("::") + albumKey;
            auto album = albumOf.constFind(id);
            if (album == albumOf.constEnd()) {
                album = albumOf.insert(id, data->albums.size());
                data->albums.push_back({ id, {} });
            }
            data->albums[*album].tracks.append(e.track);
            const std::pair<QString, QString> pair { artistKey, albumKey };
            if (!pairOf.contains(pair)) {
                pairOf.insert(pair, data->albumPairs.size());
                data->albumPairs.push_back({ i, *album });
                data->albumKeys.append(albumKey);
            }
        }
    }
    data->artistNames = sortedCaseInsensitive(std::move(artistSpellings));
    data->entries = std::move(entries);
    d = std::move(data);
}

const QList<TrackSearchEntry> &TrackIndex::entries() const
{
    return d->entries;
}

TrackSearchEntry makeSearchEntry(const Track &track, const TrackMetadata &metadata)
{
    return { track, text::displayName(track.path()), trimmedTag(metadata.artist),
        trimmedTag(metadata.album) };
}

QFuture<TrackIndex> buildTrackIndex(const QList<Track> &tracks, const MetadataReader &reader)
{
    return QtConcurrent::mapped(QThreadPool::globalInstance(), tracks, [reader](const Track &track) {
        return makeSearchEntry(track, reader(track.path()));
    }).then([](QFuture<TrackSearchEntry> entries) { return TrackIndex(entries.results()); });
}

QStringList allArtistNames(const TrackIndex &index)
{
    return index.data().artistNames;
}

std::optional<QString> artistForTrack(const TrackIndex &index, const QUuid &trackId)
{
    const auto it = index.data().firstEntryOf.constFind(trackId);
    if (it == index.data().firstEntryOf.constEnd())
        return std::nullopt;
    const QString &artist = index.entries().at(*it).artist;
    if (artist.isEmpty())
        return std::nullopt;
    return artist;
}
