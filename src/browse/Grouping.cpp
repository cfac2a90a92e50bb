// SPDX-License-Identifier: GPL-3.0-or-later
#include "Grouping.h"

#include "FoldedColumn.h"
#include "model/NameOrder.h"
#include "model/TextUtil.h"

#include <QHash>
#include <QtConcurrent>

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

// The positions 0..names.size()-1 in the stable locale order of the names.
std::vector<qsizetype> localeOrder(const QStringList &names)
{
    const NameOrder order(text::localeCollator());
    std::vector<NameOrder::Key> keys;
    keys.reserve(size_t(names.size()));
    for (const QString &n : names)
        keys.push_back(order.key(n));
    std::vector<qsizetype> positions(size_t(names.size()));
    std::iota(positions.begin(), positions.end(), 0);
    std::stable_sort(positions.begin(), positions.end(),
        [&](qsizetype a, qsizetype b) { return order.compare(keys[size_t(a)], keys[size_t(b)]) < 0; });
    return positions;
}

template<typename Group> QList<Group> sortedByName(QList<Group> groups)
{
    QStringList names;
    names.reserve(groups.size());
    for (const Group &g : groups)
        names.append(g.name);
    QList<Group> sorted;
    sorted.reserve(groups.size());
    for (const qsizetype i : localeOrder(names))
        sorted.append(std::move(groups[i]));
    return sorted;
}

// Album names are compared exactly, case and accents included, but a name
// spelled with combining accents is the same name as its precomposed spelling.
QString composed(const QString &s)
{
    for (const QChar c : s) {
        if (c.unicode() >= 0x300)
            return s.normalized(QString::NormalizationForm_C);
    }
    return s;
}

TrackMetadata readUnlessCancelled(
    const MetadataReader &reader, const QString &path, const CancelFlag &cancelled)
{
    if (cancelled && cancelled->load(std::memory_order_relaxed))
        return {};
    return reader(path);
}

} // namespace

std::optional<QString> groupingTag(const std::optional<QString> &tag)
{
    if (!tag)
        return std::nullopt;
    QString trimmed = text::trimmedHorizontal(*tag);
    if (trimmed.isEmpty())
        return std::nullopt;
    return trimmed;
}

QList<ArtistGroup> groupArtists(const QList<std::pair<QString, Track>> &pairs)
{
    QList<ArtistGroup> groups;
    QHash<QString, qsizetype> groupOf;
    for (const auto &[artist, track] : pairs) {
        // The same key as the search index, so the two screens agree on who is
        // one artist.
        const QString key = foldForSearch(artist);
        auto it = groupOf.constFind(key);
        if (it == groupOf.constEnd()) {
            it = groupOf.insert(key, groups.size());
            groups.append({ artist, {} });
        }
        groups[*it].tracks.append(track);
    }
    return sortedByName(std::move(groups));
}

QFuture<QList<ArtistGroup>> loadArtists(
    const QList<Track> &tracks, const MetadataReader &reader, const CancelFlag &cancelled)
{
    return QtConcurrent::mapped(QThreadPool::globalInstance(), tracks,
        [reader, cancelled](const Track &track) {
            return groupingTag(readUnlessCancelled(reader, track.path(), cancelled).artist);
        })
        .then([tracks](QFuture<std::optional<QString>> artists) {
            const QList<std::optional<QString>> found = artists.results();
            QList<std::pair<QString, Track>> pairs;
            for (qsizetype i = 0; i < found.size() && i < tracks.size(); ++i) {
                if (found.at(i))
                    pairs.append({ *found.at(i), tracks.at(i) });
            }
            return groupArtists(pairs);
        });
}

std::optional<qsizetype> findArtist(const QList<ArtistGroup> &artists, const QString &name)
{
    for (qsizetype i = 0; i < artists.size(); ++i) {
        if (artists.at(i).name == name)
            return i;
    }
    return std::nullopt;
}

QList<TrackInfo> sortedByFileName(QList<TrackInfo> infos)
{
    QStringList names;
    names.reserve(infos.size());
    for (const TrackInfo &info : infos)
        names.append(text::displayName(info.track.path()));
    QList<TrackInfo> sorted;
    sorted.reserve(infos.size());
    for (const qsizetype i : localeOrder(names))
        sorted.append(std::move(infos[i]));
    return sorted;
}

QFuture<QList<TrackInfo>> loadArtistDetail(
    const QList<Track> &artistTracks, const MetadataReader &reader, const CancelFlag &cancelled)
{
    return QtConcurrent::mapped(QThreadPool::globalInstance(), artistTracks,
        [reader, cancelled](const Track &track) {
            const TrackMetadata tags = readUnlessCancelled(reader, track.path(), cancelled);
            return TrackInfo { track, groupingTag(tags.album) };
        })
        .then([](QFuture<TrackInfo> infos) { return sortedByFileName(infos.results()); });
}

QList<AlbumGroup> albumGroups(const QList<TrackInfo> &infos)
{
    QList<AlbumGroup> groups;
    QHash<QString, qsizetype> groupOf;
    for (const TrackInfo &info : infos) {
        if (!info.album)
            continue;
        const QString key = composed(*info.album);
        auto it = groupOf.constFind(key);
        if (it == groupOf.constEnd()) {
            it = groupOf.insert(key, groups.size());
            groups.append({ *info.album, {} });
        }
        groups[*it].tracks.append(info.track);
    }
    return sortedByName(std::move(groups));
}

bool sameAlbumName(const QString &a, const QString &b)
{
    return a == b || composed(a) == composed(b);
}

QList<TrackInfo> visibleTracks(const QList<TrackInfo> &infos, const QString &selectedAlbum)
{
    if (selectedAlbum.isEmpty())
        return infos;
    QList<TrackInfo> visible;
    for (const TrackInfo &info : infos) {
        if (info.album && sameAlbumName(*info.album, selectedAlbum))
            visible.append(info);
    }
    return visible;
}
