// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Playable files in every format the library imports, made at test time with
// ffmpeg (and, for AAC inside CAF, which ffmpeg can't write, with a small byte
// builder over ffmpeg's ADTS output).
namespace fixtures {

enum class Format { Wav, Flac, Mp3VbrNoXing, M4aAac, M4aAlac, Aiff, CafLpcm, CafAlac, CafAac };

QString extension(Format format);
QString name(Format format);

// A stereo 44.1 kHz sine of the given length. False when the tools fail.
bool makeAudio(Format format, const QString &path, double seconds);

} // namespace fixtures
