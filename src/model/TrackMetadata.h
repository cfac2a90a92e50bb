// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

// The tags of one file, as the tag reader found them. Never stored with a track:
// every screen that shows a title, artist or album reads them itself.
// Absent means no such tag was found; an empty string stays an empty string.
struct TrackMetadata
{
    std::optional<QString> title;
    std::optional<QString> artist;
    std::optional<QString> album;
    std::optional<QString> genre;
    // Whether the file holds a picture of its own (a FLAC PICTURE block, an
    // ID3v2 picture frame, an MP4 cover item), whole or not.
    bool hasPicture = false;

    bool isEmpty() const { return !title && !artist && !album && !genre; }
};
