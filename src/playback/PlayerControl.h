// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>

// What the playback controller asks of a player. AudioPlayer answers it with
// GStreamer; the controller's tests answer it with a fake that makes no sound.
class PlayerControl
{
public:
    virtual ~PlayerControl() = default;

    // Stops what was playing and prepares the file without starting it. False
    // when the file can't be opened; the published values are then unchanged.
    virtual bool load(const QUrl &url) = 0;
    virtual void play() = 0;
    virtual void pause() = 0;
    // Jumps to a position in seconds; the published position follows at once.
    virtual void seek(double seconds) = 0;

    virtual bool isPlaying() const = 0;
    // Length of the loaded file in seconds, 0 while unknown.
    virtual double duration() const = 0;
};
