// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "MetadataReader.h"

#include <memory>

// The artist and album tags of the library's songs (and whether each holds a
// picture), read from each file once and shared by everything that groups or
// indexes songs: the search index (which reads first, when songs are added),
// the artists grid, an artist's albums, the picture prefetch and the album
// pictures. A ten-thousand-song album keeps one copy of its name: artists and
// albums are interned.
//
// reader() answers from memory and reads a file only the first time it is
// asked for it; forget() drops a file whose tags were just saved. Safe to use
// from any thread.
class TagMemo
{
public:
    explicit TagMemo(MetadataReader fileReader = defaultMetadataReader());

    // A MetadataReader over this memo: only artist, album and hasPicture are filled.
    MetadataReader reader() const;
    void forget(const QString &path);
    qsizetype size() const;

private:
    struct State;
    std::shared_ptr<State> d;
};
