// SPDX-License-Identifier: GPL-3.0-or-later
// Answering queries from a built TrackIndex.
//
// Every key of one artist (or one artist and album) folds to the same text, so
// an artist matches wherever its first song does, and walking the artists in
// order of their first song gives the hits in library order; counts and album
// song lists were made with the index. A query is therefore three scans of
// folded text that stop as soon as their list is full.
#include "TrackIndexData.h"

#include "model/TextUtil.h"

#include <QSet>

SearchResults computeSearchResults(const QString &searchText, const TrackIndex &index)
{
    SearchResults results;
    const QString trimmed = text::trimmedHorizontal(searchText);
    if (trimmed.isEmpty() || index.isEmpty())
        return results;
    const QByteArray query = foldForSearch(trimmed).toUtf8();
    const std::string_view q(query.constData(), size_t(query.size()));
    const TrackIndex::Data &d = index.data();

    for (size_t a = d.artistKeys.findNext(q);
         a < d.artistKeys.size() && results.artists.size() < SearchResults::maxArtists;
         a = d.artistKeys.findNext(q, a + 1)) {
        const TrackIndex::Data::Artist &artist = d.artists[a];
        results.artists.append({ artist.id, d.entries.at(artist.firstEntry).artist, artist.trackCount });
    }

    for (size_t i = d.names.findNext(q);
         i < d.names.size() && results.tracks.size() < SearchResults::maxTracks;
         i = d.names.findNext(q, i + 1))
        results.tracks.append(d.entries.at(qsizetype(i)));

    QSet<size_t> seenAlbums;
    for (size_t p = d.albumKeys.findNext(q);
         p < d.albumKeys.size() && results.albums.size() < SearchResults::maxAlbums;
         p = d.albumKeys.findNext(q, p + 1)) {
        const TrackIndex::Data::AlbumPair &pair = d.albumPairs[p];
        if (seenAlbums.contains(pair.album))
            continue;
        seenAlbums.insert(pair.album);
        const TrackSearchEntry &first = d.entries.at(pair.firstEntry);
        const TrackIndex::Data::Album &album = d.albums[pair.album];
        results.albums.append({ album.id, first.album, first.artist, album.tracks });
    }
    return results;
}
