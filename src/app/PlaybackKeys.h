// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "KeyPressFilter.h"

// The keys that drive playback from anywhere in the window, read before the
// focused item sees them:
//   Space               play / pause, unless typing or in a list that ticks with it
//   Ctrl+→ / Ctrl+←     next / previous song, unless typing
//   → / ← (Shift)       5 s (30 s) forward / back, unless typing or in a list
//   Ctrl+S              shuffle on / off
//   media keys          play / pause, next, previous (when the desktop hands
//                       them to the window instead of over MPRIS)
struct PlaybackKey
{
    enum Action { None, TogglePlayPause, Next, Previous, ToggleShuffle, SeekBy };
    Action action = None;
    // For SeekBy: how far, negative backwards.
    double seconds = 0;

    bool operator==(const PlaybackKey &) const = default;
    // Held down, it acts once rather than with every repeat.
    bool isToggle() const { return action == TogglePlayPause || action == ToggleShuffle; }
};

PlaybackKey playbackKeyFor(const KeyPressFilter::KeyPress &press);
