// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/Track.h"

#include <QList>
#include <QString>
#include <QVariantMap>

// One song of the search index. name is the file name without its extension
// (the title tag plays no part); artist and album are the trimmed tags, empty
// when absent.
struct TrackSearchEntry
{
    Track track;
    QString name;
    QString artist;
    QString album;
    bool hasPicture = false; // the file holds a picture of its own
};

// An artist hit. id is the lower-cased name, the key that merges spellings;
// name is the spelling of the first song in library order; trackCount counts
// every song of the library with that artist.
struct ArtistSearchResult
{
    QString id;
    QString name;
    int trackCount = 0;
};

// An album hit. id is lower-cased artist + "::" + lower-cased album; the
// spellings are those of the album's first song; tracks are all its songs in
// library order.
struct AlbumSearchResult
{
    QString id;
    QString displayName;
    QString artist;
    QList<Track> tracks;
};

// The answer to one query: at most 3 artists, 4 songs and 3 albums, each in
// library order.
struct SearchResults
{
    QList<ArtistSearchResult> artists;
    QList<TrackSearchEntry> tracks;
    QList<AlbumSearchResult> albums;

    bool isEmpty() const { return artists.isEmpty() && tracks.isEmpty() && albums.isEmpty(); }

    static constexpr int maxArtists = 3;
    static constexpr int maxTracks = 4;
    static constexpr int maxAlbums = 3;

    // For QML: {"artists": [{id, name, trackCount}],
    //           "albums": [{id, displayName, artist, trackCount, trackIds}],
    //           "tracks": [{trackId, url, name, artist, album}]}
    // Song ids are the canonical UUID text.
    QVariantMap toVariantMap() const;
};
