// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>

#include <functional>
#include <optional>

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

    // Gapless playback. The handler is called once per song, a few seconds
    // before its end (at once for a shorter song): the moment to queue the
    // next file.
    virtual void setEndApproachingHandler(std::function<void()> handler) = 0;
    // The file to go on to when this song ends, with no gap; an empty url
    // withdraws it. False when the song and the file can't be joined: the
    // song then ends as usual and the caller loads the file.
    virtual bool queueNext(const QUrl &url) = 0;
    // How the last song ended, told once: absent when none ended since the
    // last load (or since the last time of asking); an empty url when the
    // player stopped at the end; else the queued file it went on to and plays now.
    virtual std::optional<QUrl> takeSongEnd() = 0;
};
