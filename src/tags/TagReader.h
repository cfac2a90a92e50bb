// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How tags move through this folder:
//
//   readMetadata / readTrackInfo / readDuration / readEmbeddedArtwork (TagReader)
//     ├── .flac ── FlacMetadata: block headers walked in the file, first
//     │            VORBIS_COMMENT body → VorbisComment rules; PICTURE blocks
//     ├── .mp3 ─── MpegTags: the leading ID3v2 tag by Id3Tag, ID3v1 (Id3v1Tag)
//     │            for what it lacks; the duration from TagLib
//     └── others ─ ContainerReader: items in container order (TagLib for wav,
//                  aiff, m4a; CafReader for caf) → metadataFromItems
//
//   saveTags (TagWriter) ── refusals before opening, whole file read
//     ├── planSave (SavePlan): kind by the bytes (AudioFormat), matching the name
//     │     ├── FLAC ── MetadataWriter::writeFLACTags (new comment block, last)
//     │     ├── MP3 ─── MetadataWriter::writeID3Tags (new ID3v2.3 tag; Id3Tag
//     │     │           carries the old frames over, ID3v1 folded in and updated)
//     │     └── WAV, AIFF, MP4 ── ContainerWriter (TagLib on the temporary copy)
//     └── verified (read back, audio unchanged) → AtomicReplace into place,
//         only while the file is still the one read
//
// Every function here is blocking and thread-safe: call it from the thread
// pool, never from the GUI thread. None of the readers fails: damage reads as
// absent.

#include "model/TrackMetadata.h"

#include <QByteArray>
#include <QString>

#include <optional>

// Reads title, artist, album and genre of one audio file. Never fails: a file
// that can't be read answers all fields absent. Blocking and thread-safe; call
// it from the thread pool, never from the GUI thread.
TrackMetadata readMetadata(const QString &path);

// The first embedded picture of the file, as the encoded bytes found in the file
// (JPEG, PNG, ...). Decoding is left to the caller (off the GUI thread).
std::optional<QByteArray> readEmbeddedArtwork(const QString &path);

// The playing time in seconds, from the FLAC STREAMINFO block or the
// container's audio properties; absent when unknown.
std::optional<double> readDuration(const QString &path);

// Tags and duration from one opening of the file (what a song row shows).
struct FileTags
{
    TrackMetadata metadata;
    std::optional<double> duration;
};
FileTags readTrackInfo(const QString &path);

// Whether the file's format is one our own parsers read whole (FLAC).
bool isOwnFormat(const QString &path);
// readTrackInfo for those formats, nothing for the others. Built apart from
// the TagLib readers, so that a program reading only these formats never
// loads TagLib (tarnwell-cli tags).
std::optional<FileTags> readOwnFormatTrackInfo(const QString &path);

namespace tagreader {
// The file's extension, lower-cased; empty when it has none.
QString lowerSuffix(const QString &path);
} // namespace tagreader
