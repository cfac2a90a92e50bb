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

// The names of both sorted lists in one sorted list; of two names that sort
// alike, one of `old` comes first, as it was seen first.
QStringList mergedSorted(QStringList old, QStringList added)
{
    if (added.isEmpty())
        return old;
    if (old.isEmpty())
        return added;
    const QCollator collator = text::caseInsensitiveCollator();
    QStringList merged;
    merged.reserve(old.size() + added.size());
    std::merge(std::make_move_iterator(old.begin()), std::make_move_iterator(old.end()),
        std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()), std::back_inserter(merged),
        [&](const QString &a, const QString &b) { return collator.compare(a, b) < 0; });
    return merged;
}

} // namespace

TrackIndex::TrackIndex()
    : d(std::make_shared<const Data>())
{
}

TrackIndex::TrackIndex(QList<TrackSearchEntry> entries)
{
    auto data = std::make_shared<Data>();
    data->append(std::move(entries));
    d = std::move(data);
}

TrackIndex TrackIndex::appended(QList<TrackSearchEntry> more) const
{
    if (more.isEmpty())
        return *this;
    auto data = std::make_shared<Data>(*d);
    data->append(std::move(more));
    TrackIndex index;
    index.d = std::move(data);
    return index;
}

void TrackIndex::Data::append(QList<TrackSearchEntry> more)
{
    const size_t total = size_t(entries.size() + more.size());
    names.reserve(total, total * 24);
    QStringList newSpellings;

    const qsizetype offset = entries.size();
    for (qsizetype j = 0; j < more.size(); ++j) {
        const TrackSearchEntry &e = more.at(j);
        const qsizetype i = offset + j;
        names.append(foldForSearch(e.name));

        const QString artistKey = foldForSearch(e.artist);
        if (!artistKey.isEmpty()) {
            auto it = artistOf.constFind(artistKey);
            if (it == artistOf.constEnd()) {
                it = artistOf.insert(artistKey, artists.size());
                artists.push_back({ artistKey, i, 0 });
                artistKeys.append(artistKey);
                newSpellings.append(e.artist);
            }
            ++artists[*it].trackCount;
        }

        if (!e.album.isEmpty()) {
            const QString albumKey = foldForSearch(e.album);
            const QString id = artistKey + QStringLiteral("::") + albumKey;
            auto album = albumOf.constFind(id);
            if (album == albumOf.constEnd()) {
                album = albumOf.insert(id, albums.size());
                albums.push_back({ id, {} });
            }
            albums[*album].tracks.append(e.track);
            const std::pair<QString, QString> pair { artistKey, albumKey };
            if (!pairOf.contains(pair)) {
                pairOf.insert(pair, albumPairs.size());
                albumPairs.push_back({ i, *album });
                albumKeys.append(albumKey);
            }
        }
    }
    artistNames = mergedSorted(std::move(artistNames), sortedCaseInsensitive(std::move(newSpellings)));
    entries.append(std::move(more));
}

const TrackEntries &TrackIndex::entries() const
{
    return d->entries;
}

TrackSearchEntry makeSearchEntry(const Track &track, const TrackMetadata &metadata)
{
    return { track, text::displayName(track.path()), trimmedTag(metadata.artist),
        trimmedTag(metadata.album), metadata.hasPicture };
}

QFuture<TrackIndex> buildTrackIndex(const QList<Track> &tracks, const MetadataReader &reader)
{
    return extendTrackIndex(TrackIndex(), tracks, reader);
}

QFuture<TrackIndex> extendTrackIndex(const TrackIndex &base, const QList<Track> &tracks, const MetadataReader &reader)
{
    return QtConcurrent::mapped(QThreadPool::globalInstance(), tracks, [reader](const Track &track) {
        return makeSearchEntry(track, reader(track.path()));
    }).then([base](QFuture<TrackSearchEntry> entries) { return base.appended(entries.results()); });
}

QStringList allArtistNames(const TrackIndex &index)
{
    return index.data().artistNames;
}

std::optional<QString> artistForTrack(const TrackIndex &index, const QUuid &trackId)
{
    // Asked once a song starts: a pass over the entries costs less than a
    // lookup table kept up to date by every import.
    const TrackEntries &entries = index.entries();
    const auto it = std::find_if(entries.begin(), entries.end(),
                                 [&trackId](const TrackSearchEntry &e) { return e.track.id == trackId; });
    if (it == entries.end() || it->artist.isEmpty())
        return std::nullopt;
    return it->artist;
}
