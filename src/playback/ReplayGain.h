// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

// Volume levelling: each song plays at the level its ReplayGain track gain asks
// for, never pushed past full scale, and songs without the tag at the pre-amp.
namespace replaygain {

// Added to every track gain; untagged songs play at exactly this.
inline constexpr double preAmpDb = 0.0;
// Gains beyond this are taken for damaged tags and ignored.
inline constexpr double maxAbsGainDb = 60.0;

struct TrackGain
{
    std::optional<double> gainDb;
    // The loudest sample as a share of full scale.
    std::optional<double> peak;
};

// "-6.02 dB", "+3.5 dB", "-6.02" (any case, spaces around); absent for anything
// else or beyond maxAbsGainDb.
std::optional<double> parseGain(const QString &text);
// A positive finite number; absent otherwise.
std::optional<double> parsePeak(const QString &text);

// The track gain and peak of a file: Vorbis comments (FLAC), ID3v2 TXXX frames
// (MP3, WAV, AIFF) and MP4 freeform atoms of com.apple.iTunes. Never fails: a
// file without them, or one that can't be read, answers none. Thread-safe;
// reads the file, so never on the GUI thread.
TrackGain readTrackGain(const QString &path);

// The factor the samples are multiplied by: the gain plus the pre-amp, lowered
// so that the peak (1.0 when unknown) stays at or below full scale.
double levellingFactor(const TrackGain &gain);

} // namespace replaygain
