// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "MetadataReader.h"
#include "SearchResults.h"
#include "TrackEntries.h"

#include <QFuture>
#include <QList>
#include <QStringList>
#include <QUuid>

#include <memory>
#include <optional>

// The search index: one entry per song of the library, in library order.
//
// Besides the entries it holds what every query would otherwise work out
// again: the folded (lower-cased, composed) forms of names, artists and albums
// laid out for fast scanning, the artists and albums of the library with their
// song counts and song lists, and the sorted artist names.
// All of it is made when the index is built, off the GUI thread. An index
// never changes after that; copies share their data, so handing one to the GUI
// thread or replacing it is cheap and a query never sees half an index. New
// songs make a new index from the old one (appended()), which works out only
// what the new entries add and shares the old entries rather than copying them.
class TrackIndex
{
public:
    TrackIndex();
    explicit TrackIndex(QList<TrackSearchEntry> entries);

    // This index with `more` entries after its own.
    TrackIndex appended(QList<TrackSearchEntry> more) const;

    const TrackEntries &entries() const;
    qsizetype size() const { return entries().size(); }
    bool isEmpty() const { return entries().isEmpty(); }

    struct Data;
    const Data &data() const { return *d; }

private:
    std::shared_ptr<const Data> d;
};

// The index entry of one song: its file name without extension, and its
// artist and album tags trimmed of horizontal whitespace (empty when absent).
// The title tag is not indexed.
TrackSearchEntry makeSearchEntry(const Track &track, const TrackMetadata &metadata);

// Reads the tags of a snapshot of the library on the thread pool, all songs
// in parallel, and builds the index from them, also on the pool. The future's
// result keeps the snapshot's order. An empty snapshot gives an empty index.
QFuture<TrackIndex> buildTrackIndex(
    const QList<Track> &tracks, const MetadataReader &reader = defaultMetadataReader());
// The same for songs added to `base`: only their tags are read.
QFuture<TrackIndex> extendTrackIndex(const TrackIndex &base, const QList<Track> &tracks,
    const MetadataReader &reader = defaultMetadataReader());

// The answer to a query. The text is trimmed of horizontal whitespace (not of
// line breaks) and lower-cased; a name, artist or album matches when its
// lower-cased form contains that text as a contiguous substring (inner spaces
// included, no accent folding; spellings that differ only in Unicode
// composition are the same). Artists come merged by lower-cased name with
// their song count over the whole index; songs match by name only; albums
// match by album name and are told apart by artist. Each list keeps library
// order and is cut to its maximum after the counting.
SearchResults computeSearchResults(const QString &searchText, const TrackIndex &index);

// Every artist of the index once (spellings that differ only in case count as
// one, spelled as the first song has it), sorted case-insensitively in the
// user's locale.
QStringList allArtistNames(const TrackIndex &index);

// The artist of the first entry for this song, or absent when the song is not
// indexed or has no artist.
std::optional<QString> artistForTrack(const TrackIndex &index, const QUuid &trackId);
