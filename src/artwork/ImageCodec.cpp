// SPDX-License-Identifier: GPL-3.0-or-later
#include "ImageCodec.h"

#include "model/LocalPath.h"
#include "model/Log.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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

bool isJpeg(const QByteArray &format)
{
    return format == "jpeg" || format == "jpg";
}

// Whether a JPEG is progressive: its frame header (SOF2, SOF6, SOF10 or SOF14)
// comes before any other. The segments before it (EXIF, colour profiles) are
// stepped over by their lengths; a file whose frame header can't be found in
// the first megabyte counts as progressive, the costlier kind.
bool isProgressiveJpeg(QIODevice *device)
{
    const QByteArray head = device->peek(1024 * 1024);
    const auto byte = [&head](qsizetype i) { return quint8(head.at(i)); };
    qsizetype pos = 2; // after the start-of-image marker
    while (head.size() - pos >= 4) {
        if (byte(pos) != 0xff)
            return true;
        const quint8 marker = byte(pos + 1);
        if (marker == 0xff) { // fill byte
            ++pos;
            continue;
        }
        if (marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc)
            return marker == 0xc2 || marker == 0xc6 || marker == 0xca || marker == 0xce;
        const qsizetype length = (byte(pos + 2) << 8) | byte(pos + 3);
        if (length < 2)
            return true;
        pos += 2 + length;
    }
    return true;
}

std::optional<QImage> read(QImageReader &reader, const QString &what)
{
    const QByteArray format = reader.format().toLower();
    if (!isWebFormat(format)) {
        qCDebug(lcArtwork) << what << "refused: format" << format;
        return std::nullopt;
    }
    // Before the size, which reads the header past the start.
    const bool progressive = isJpeg(format) && isProgressiveJpeg(reader.device());
    // Headers that don't tell the size leave Qt's own allocation limit below.
    const QSize size = reader.size();
    if (size.isValid()) {
        const qint64 pixels = qint64(size.width()) * size.height();
        // A vector picture is drawn straight at the size set below.
        qint64 limit = format.startsWith("svg") ? pixels : maxWholeDecodePixels;
        if (isJpeg(format))
            limit = progressive ? maxProgressiveJpegPixels : maxJpegPixels;
        if (pixels > limit) {
            qCDebug(lcArtwork) << what << "refused:" << size << "is too large";
            return std::nullopt;
        }
        if (size.width() > keptEdge || size.height() > keptEdge)
            reader.setScaledSize(size.scaled(keptEdge, keptEdge, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
    }
    reader.setAllocationLimit(int(maxWholeDecodePixels * 4 / (1024 * 1024)) + 8);
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
    // Opened by its exact bytes (QFile would re-encode the name), without
    // blocking on a FIFO, which is refused with everything but regular files.
    const int fd = ::open(localpath::toBytes(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat st;
    if (fd < 0)
        return std::nullopt;
    QFile file;
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) || !file.open(fd, QIODevice::ReadOnly, QFile::AutoCloseHandle)) {
        ::close(fd);
        return std::nullopt;
    }
    QImageReader reader(&file);
    // By content, not by name: scan01.JPG may well be a PNG.
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    return read(reader, localpath::readable(path));
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
