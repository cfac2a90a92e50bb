// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Decoding and encoding of pictures. Blocking; call from the thread pool.
// Every decode is bounded by the pixels it produces, not by what the file
// claims: a picture larger than the program keeps is scaled down to keptEdge
// while it is decoded (JPEG and SVG decode straight at the smaller size), and
// one that can only be decoded whole (PNG, GIF, WebP, TIFF, BMP, a progressive
// JPEG's coefficients) is refused when the whole would take too much. A small file claiming 50,000 by 50,000
// pixels (an image bomb) thus costs nothing, and no picture more than a few
// tens of megabytes.

#include <QByteArray>
#include <QImage>
#include <QString>

#include <optional>

namespace artwork {

// The longest edge of any picture kept: twice the largest place a picture is
// shown (the artist header and the blurred window background need less).
inline constexpr int keptEdge = 1024;
// 32 MiB of 32-bit pixels: a 2,896-pixel square PNG fits, a bomb does not.
inline constexpr qint64 maxWholeDecodePixels = 8LL * 1024 * 1024;
// A JPEG decodes straight at down to an eighth of its size (a 24-megapixel
// photograph in about 12 MB), but a progressive one holds all its
// coefficients, over three bytes a pixel, until its last scan.
inline constexpr qint64 maxJpegPixels = 256LL * 1024 * 1024;
inline constexpr qint64 maxProgressiveJpegPixels = 12LL * 1024 * 1024;

// The picture in the bytes (JPEG, PNG, GIF, WebP, TIFF, BMP or SVG), absent
// when they are none of those, don't decode or are too large.
std::optional<QImage> decodeImage(const QByteArray &bytes);

// The same for a file; only regular files are opened (a FIFO named cover.jpg
// must not block a pool thread for ever).
std::optional<QImage> loadImageFile(const QString &path);

// JPEG at quality 85. Transparent parts are laid on white first, since JPEG has
// no alpha and would otherwise turn them black. Absent for a null image.
std::optional<QByteArray> encodeJpeg(const QImage &image);

} // namespace artwork
