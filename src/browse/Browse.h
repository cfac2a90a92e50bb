// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Browsing: the search index and the artist and album grouping.
//
//   library songs (snapshot) ── tags read on the pool ─┬─ buildTrackIndex ── TrackIndex (immutable)
//                                                      │     SearchIndex keeps the current one on the
//                                                      │     GUI thread; the last build to finish wins
//                                                      │       ├─ computeSearchResults(text) ── SearchResults
//                                                      │       ├─ allArtistNames ── home screen
//                                                      │       └─ artistForTrack ── recent artists
//                                                      ├─ loadArtists ── ArtistListModel (artists grid)
//                                                      └─ loadArtistDetail ── ArtistDetail
//                                                            ├─ albumGroups ── AlbumListModel
//                                                            └─ visibleTracks ── SongListModel
//
// The list models are RowListModels: one generic model over value rows.
// SongListModel (song lists everywhere) reads a shown row's artist and length
// from its file on the pool and tells its views by dataChanged.
//
// Tags come through a MetadataReader (readMetadata in the program, tags kept
// in memory in the tests). Nothing here is stored: every load reads the tags
// again. Results cross to the GUI thread only as whole values, so no lock is
// taken anywhere.

#include "ArtistDetail.h"
#include "ArtistListModel.h"
#include "Grouping.h"
#include "SongListModel.h"
#include "SearchIndex.h"
#include "TrackIndex.h"
