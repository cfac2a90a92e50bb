// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ReplayGain.h"

#include <QString>

#include <deque>
#include <mutex>

typedef struct _GstElement GstElement;

// The volume element a playbin runs every stream through (its audio filter).
// Each file handed to the playbin is announced here in order; when the next
// stream starts, before its first sample passes, the stage takes that file's
// track gain and sets the factor, so a song joined without a gap gets its own
// level from its first sample and an untagged one never inherits the last one's.
//
// GStreamer's rgvolume is not used: it reads the gain from the stream's tags,
// which WAV and AIFF files don't deliver here, and it keeps the last song's
// gain across a join because it only forgets it at the end of the stream.
//
// Thread-safe: files are announced from the GUI thread (load) and from a
// streaming thread (the next file of a join); the factor is set from either.
// Its owner stops the pipeline before destroying it.
class LevellingStage
{
public:
    LevellingStage();
    ~LevellingStage();
    LevellingStage(const LevellingStage &) = delete;
    LevellingStage &operator=(const LevellingStage &) = delete;

    // The element to hand to playbin; null when GStreamer lacks it.
    GstElement *element() const { return m_volume; }

    // The file of the next stream to start. Its gain is read when the stream
    // starts unless given here (read ahead off the streaming path).
    void expect(const QString &path, std::optional<replaygain::TrackGain> gain = std::nullopt);
    // Off, every stream plays unchanged; takes effect at once.
    void setEnabled(bool enabled);
    bool isEnabled() const;
    // The factor applied now.
    double factor() const;

    // Called by the pad probe as a stream starts.
    void startNextStream();

private:
    // Called with m_mutex held.
    void apply();

    GstElement *m_volume = nullptr;
    unsigned long m_probe = 0;
    mutable std::mutex m_mutex;
    struct Pending
    {
        QString path;
        std::optional<replaygain::TrackGain> gain;
    };
    std::deque<Pending> m_pending;
    replaygain::TrackGain m_current;
    bool m_enabled = true;
    double m_factor = 1.0;
};
