// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>
#include <QString>

// What a file holds, told by its bytes rather than its name. A save writes only
// when the two agree: an MP4 file named .mp3 would get an ID3 tag in front of
// its boxes and stop playing.
namespace audioformat {

enum class Kind { none, flac, mpeg, wave, aiff, mp4, caf, ogg, unknown };

// The kind a file of this (lower-cased) extension must hold; `unknown` for
// extensions the library doesn't take.
Kind fromSuffix(const QString &lowerSuffix);

// The kind of a whole file: its magic bytes, looked for behind a leading ID3v2
// tag too ("fLaC" there still means FLAC); a file that starts with MPEG audio
// frames is MPEG. `none` for an empty file.
Kind detect(QByteArrayView file);

// "FLAC", "MP3", "WAV", ... for messages.
QString name(Kind kind);

// True when the bytes hold at least one MPEG audio frame near their start:
// a valid frame header followed by another one, or by the end of the bytes.
bool hasMpegAudio(QByteArrayView audio);

// True when the bytes start with a FLAC frame header whose CRC-8 matches.
bool startsWithFlacFrame(QByteArrayView audio);

} // namespace audioformat
