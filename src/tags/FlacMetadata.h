// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/TrackMetadata.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include <optional>

// FLAC metadata blocks: "fLaC", then blocks of a 4-byte header (last-block flag,
// 7-bit type, 24-bit big-endian length) and a body, until the block with the
// last-block flag; the audio frames follow.

namespace flac {

inline constexpr quint8 streamInfoType = 0;
inline constexpr quint8 paddingType = 1;
inline constexpr quint8 vorbisCommentType = 4;
inline constexpr quint8 pictureType = 6;
inline constexpr quint32 maxBlockLength = 0xFFFFFF;

// The encoded picture of a PICTURE block body; nothing when the body is damaged
// or holds no picture bytes.
std::optional<QByteArray> pictureData(QByteArrayView body);

// Seconds from a STREAMINFO body (total samples / sample rate); nothing when
// either is unknown.
std::optional<double> streamInfoDuration(QByteArrayView body);

struct FileInfo
{
    TrackMetadata metadata;
    std::optional<double> duration;
};

// Reads the tags (and the duration) of a FLAC file on disk. It reads the block
// headers and only the bodies it needs: STREAMINFO and the first VORBIS_COMMENT
// block. The result equals parseFLACMetadata over the whole file: a comment
// block behind a large picture is still found, while a block that runs past the
// end of the file or a file not starting with "fLaC" gives no tags.
FileInfo readFile(const QString &path, bool wantDuration = true);

// The same walk over a whole file already in memory.
FileInfo parseFile(QByteArrayView wholeFile, bool wantDuration = true);

// The first PICTURE block of a FLAC file with picture bytes, encoded.
std::optional<QByteArray> readPicture(const QString &path);

struct Block
{
    quint8 type = 0;
    QByteArrayView body;
    bool operator==(const Block &) const = default;
};

// The metadata of a whole FLAC file in memory, for the writer: every block in
// file order, where the audio starts, and what is damaged. A block is damaged
// when it runs past the end of the file, when no block carries the last-block
// flag, or when its body breaks the layout of its type (STREAMINFO first and
// 34 bytes long, a PICTURE or VORBIS_COMMENT whose lengths don't add up to the
// block's, a SEEKTABLE not made of 18-byte points). Damage is never read around:
// the writer refuses the file.
struct Layout
{
    QList<Block> blocks;
    qsizetype audioStart = 0;
    QString damage; // empty when every block is whole
};
Layout parseLayout(QByteArrayView file);

} // namespace flac

// The tags of a FLAC file from its first bytes: the body of the first
// VORBIS_COMMENT block, or all fields absent when the blocks before it are
// damaged, run past the given bytes, or end without a comment block.
TrackMetadata parseFLACMetadata(QByteArrayView bytes);
