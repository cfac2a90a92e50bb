// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "MetadataReader.h"
#include "model/Track.h"

#include <QFuture>
#include <QList>
#include <QString>

#include <atomic>
#include <memory>
#include <optional>
#include <utility>

// Songs grouped by artist, and one artist's songs grouped by album. Nothing is
// kept between loads: every load asks its reader for the tags again (the
// program's reader answers from memory, see TagMemo).

// Set by the owner of a load to stop its remaining tag reads: a read that has
// not started yet yields no tags.
using CancelFlag = std::shared_ptr<std::atomic_bool>;

struct ArtistGroup
{
    QString name; // the display spelling
    QList<Track> tracks;
};

// One song of an artist with its album tag (trimmed; absent when missing or blank).
struct TrackInfo
{
    Track track;
    std::optional<QString> album;
};
// Its members hold no pointer into themselves (see Track).
Q_DECLARE_TYPEINFO(TrackInfo, Q_RELOCATABLE_TYPE);

struct AlbumGroup
{
    QString name;
    QList<Track> tracks;
};

// A tag trimmed of spaces (every Unicode space separator) and tabs, absent
// when nothing is left.
std::optional<QString> groupingTag(const std::optional<QString> &tag);

// Groups (artist, song) pairs by the lower-cased artist, in the order given:
// a group is spelled as its first pair and keeps its songs in pair order.
// Groups are sorted by the locale order of their names, stably.
QList<ArtistGroup> groupArtists(const QList<std::pair<QString, Track>> &pairs);

// Reads the artist tag of every song on the thread pool, in parallel, and
// groups the songs that have one. Pairs are collected in library order, so the
// spelling of an artist is that of its earliest song in the library.
QFuture<QList<ArtistGroup>> loadArtists(const QList<Track> &tracks,
    const MetadataReader &reader = defaultMetadataReader(), const CancelFlag &cancelled = {});

// The first group named exactly `name` (case-sensitive), or absent.
std::optional<qsizetype> findArtist(const QList<ArtistGroup> &artists, const QString &name);

// Sorts songs by the locale order of their file names without extension, stably.
QList<TrackInfo> sortedByFileName(QList<TrackInfo> infos);

// Reads the album tag of every song of one artist on the thread pool and sorts
// the songs by file name.
QFuture<QList<TrackInfo>> loadArtistDetail(const QList<Track> &artistTracks,
    const MetadataReader &reader = defaultMetadataReader(), const CancelFlag &cancelled = {});

// The albums of an artist: songs grouped by the exact album text
// (case-sensitive), in the order given, sorted by the locale order of the
// album names, stably. Songs without album are in no group.
QList<AlbumGroup> albumGroups(const QList<TrackInfo> &infos);

// Album names are compared exactly (case and accents count); spellings that
// differ only in Unicode composition are the same name.
bool sameAlbumName(const QString &a, const QString &b);

// All songs when no album is selected (absent or empty), else those whose
// album equals the selection exactly, in the order given.
QList<TrackInfo> visibleTracks(const QList<TrackInfo> &infos, const QString &selectedAlbum);
