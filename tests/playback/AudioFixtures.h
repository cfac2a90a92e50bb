// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

// Playable files in every format the library imports, made at test time with
// ffmpeg; ReplayGain tags written by mutagen.
namespace fixtures {

enum class Format { Wav, Flac, Mp3, Mp3VbrNoXing, M4aAac, M4aAlac, Aiff, CafLpcm, CafAlac };

QString extension(Format format);
QString name(Format format);

// A stereo 44.1 kHz sine of the given length. False when the tools fail.
bool makeAudio(Format format, const QString &path, double seconds, int frequency = 440);
// Writes REPLAYGAIN_TRACK_GAIN and _PEAK the way each format keeps them.
bool tagTrackGain(const QString &path, const QString &gain, const QString &peak);
// The file decoded by ffmpeg to interleaved 16-bit stereo at 44.1 kHz.
QByteArray decode(const QString &path);

} // namespace fixtures
