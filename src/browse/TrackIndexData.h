// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The inside of a TrackIndex, shared by its builder and the queries.

#include "FoldedColumn.h"
#include "TrackEntries.h"
#include "TrackIndex.h"

#include <QHash>

#include <vector>

struct TrackIndex::Data
{
    TrackEntries entries;

    // Folded song names, one per entry.
    FoldedColumn names;

    // Every artist key (folded artist, non-empty) once, in order of its first song.
    struct Artist
    {
        QString id;
        qsizetype firstEntry = 0;
        int trackCount = 0;
    };
    std::vector<Artist> artists;
    FoldedColumn artistKeys; // one per artist

    // Every (folded artist, folded album) pair with a non-empty album once, in
    // order of its first song. Pairs are what a query matches; the album they
    // belong to is keyed by the id text "artist::album", which two different
    // pairs can share ("a::b" + "c" and "a" + "b::c").
    struct AlbumPair
    {
        qsizetype firstEntry = 0;
        size_t album = 0;
    };
    struct Album
    {
        QString id;
        QList<Track> tracks;
    };
    std::vector<AlbumPair> albumPairs;
    FoldedColumn albumKeys; // the folded album of each pair
    std::vector<Album> albums;

    QStringList artistNames; // sorted

    // What an append needs to find the groups of the songs it adds.
    QHash<QString, size_t> artistOf; // artist key -> artists
    QHash<std::pair<QString, QString>, size_t> pairOf; // (artist key, album key) -> albumPairs
    QHash<QString, size_t> albumOf; // album id -> albums

    void append(QList<TrackSearchEntry> more);
};
