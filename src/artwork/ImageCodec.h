// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Decoding and encoding of pictures. Blocking; call from the thread pool.
// Every decode is bounded: a picture whose header promises more pixels than
// maxImagePixels is refused before any pixel memory is taken, so a small file
// claiming 50,000 by 50,000 pixels (an image bomb) costs nothing.

#include <QByteArray>
#include <QImage>
#include <QString>

#include <optional>

namespace artwork {

// 128 MiB of 32-bit pixels: a 6000 by 5000 photograph fits, a bomb does not.
inline constexpr qint64 maxImagePixels = 128LL * 1024 * 1024 / 4;

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
