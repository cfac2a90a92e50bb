// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Browsing: the search index and the artist and album grouping.
//
//   new songs ── tags read on the pool, once (TagMemo) ─┬─ extendTrackIndex ── TrackIndex (immutable)
//                                                      │     SearchIndex keeps the current one on the
//                                                      │     GUI thread; each build adds the songs that
//                                                      │     came since the last
//                                                      │       ├─ computeSearchResults(text) ── SearchResults
//                                                      │       ├─ artists (model) ── home screen
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
// Tags come through a MetadataReader: in the program a TagMemo, which reads a
// file's artist and album once and answers from memory after that; tags kept
// in memory in the tests. Results cross to the GUI thread only as whole
// values; the memo is the one thing shared between threads, behind its lock.

#include "ArtistDetail.h"
#include "ArtistListModel.h"
#include "Grouping.h"
#include "SongListModel.h"
#include "SearchIndex.h"
#include "TagMemo.h"
#include "TrackIndex.h"
