// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QCache>
#include <QImage>
#include <QMutex>
#include <QString>

#include <optional>

// Decoded pictures by the identity of their source: a file's path, size and
// modification time, or a digest of the bytes. The fifteen songs of an album
// then share one decoded cover (one decode, one block of pixels) instead of
// decoding it fifteen times while a list scrolls; a changed file is a new
// identity and decodes afresh. Sources that don't decode are remembered too, so
// a broken folder.jpg is not tried again for every song. Thread-safe.
class DecodeMemo
{
public:
    explicit DecodeMemo(qint64 budgetBytes);

    // loadImageFile and decodeImage (ImageCodec.h), remembered.
    std::optional<QImage> loadFile(const QString &path);
    std::optional<QImage> decode(const QByteArray &bytes);

    void clear();
    qint64 bytes();

private:
    std::optional<std::optional<QImage>> find(const QByteArray &key);
    void remember(const QByteArray &key, const std::optional<QImage> &image);

    QMutex m_mutex;
    // A null image stands for "does not decode".
    QCache<QByteArray, QImage> m_images;
};
