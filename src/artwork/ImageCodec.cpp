// SPDX-License-Identifier: GPL-3.0-or-later
#include "ImageCodec.h"

#include "model/Log.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>

namespace artwork {

namespace {

// The formats pictures come in on the web and beside songs. Qt's plugins read
// more (TGA, MNG, ICNS, XPM...), and each one is more code facing bytes from
// strangers; those are refused.
bool isWebFormat(const QByteArray &format)
{
    static const QByteArray formats[] = {"jpeg", "jpg", "png", "gif", "webp", "tiff", "tif", "bmp", "svg", "svgz"};
    return std::find(std::begin(formats), std::end(formats), format) != std::end(formats);
}

std::optional<QImage> read(QImageReader &reader, const QString &what)
{
    const QByteArray format = reader.format().toLower();
    if (!isWebFormat(format)) {
        qCDebug(lcArtwork) << what << "refused: format" << format;
        return std::nullopt;
    }
    // The header's size when the format tells it without decoding; formats that
    // can't are still bounded by Qt's own allocation limit.
    const QSize size = reader.size();
    if (size.isValid() && qint64(size.width()) * size.height() > maxImagePixels) {
        qCDebug(lcArtwork) << what << "refused:" << size << "is too large";
        return std::nullopt;
    }
    QImage image;
    if (!reader.read(&image) || image.isNull()) {
        qCDebug(lcArtwork) << what << "does not decode:" << reader.errorString();
        return std::nullopt;
    }
    return image;
}

} // namespace

std::optional<QImage> decodeImage(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return std::nullopt;
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    return read(reader, QStringLiteral("image data"));
}

std::optional<QImage> loadImageFile(const QString &path)
{
    const QFileInfo info(path);
    if (!info.isFile())
        return std::nullopt;
    QImageReader reader(path);
    // By content, not by name: scan01.JPG may well be a PNG.
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    return read(reader, path);
}

std::optional<QByteArray> encodeJpeg(const QImage &image)
{
    if (image.isNull())
        return std::nullopt;
    QImage opaque = image;
    if (image.hasAlphaChannel()) {
        opaque = QImage(image.size(), QImage::Format_RGB32);
        opaque.setDevicePixelRatio(image.devicePixelRatio());
        opaque.fill(Qt::white);
        QPainter painter(&opaque);
        painter.drawImage(0, 0, image);
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpg");
    writer.setQuality(85);
    if (!writer.write(opaque)) {
        qCDebug(lcArtwork) << "JPEG encoding failed:" << writer.errorString();
        return std::nullopt;
    }
    return bytes;
}

} // namespace artwork
