// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalArtwork.h"

#include "DecodeMemo.h"
#include "ImageCodec.h"
#include "model/Log.h"
#include "model/TextUtil.h"

#include <QDir>
#include <QSaveFile>
#include <QFileInfo>

namespace artwork {

namespace {

const char16_t separators[] = u"/\\:*?\"<>|";

bool isSeparator(QChar c)
{
    for (char16_t s : separators) {
        if (s != 0 && c == s)
            return true;
    }
    return false;
}

bool isSafeComponent(const QString &component)
{
    return !component.isEmpty() && component != u"." && component != u".."
        && !component.contains(QChar(0));
}

const char *const wellKnownNames[] = {"folder", "cover", "album", "front", "artwork", "albumart"};
const char *const imageExtensions[] = {"jpg", "jpeg", "png"};

bool hasImageExtension(const QString &fileName)
{
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    for (const char *ext : imageExtensions) {
        if (suffix == QLatin1StringView(ext))
            return true;
    }
    return false;
}

} // namespace

QString sanitizedPathComponent(const QString &text)
{
    QString out = text;
    for (QChar &c : out) {
        if (isSeparator(c))
            c = u'-';
    }
    return text::trimmedHorizontal(out);
}

std::optional<QString> artistCopyPath(const QString &musicFolder, const QString &artist)
{
    const QString a = sanitizedPathComponent(artist);
    if (musicFolder.isEmpty() || !isSafeComponent(a))
        return std::nullopt;
    return QDir(musicFolder).filePath(a + QStringLiteral("/artist.jpg"));
}

std::optional<QString> albumCopyPath(const QString &musicFolder, const QString &artist, const QString &album)
{
    const QString a = sanitizedPathComponent(artist);
    const QString b = sanitizedPathComponent(album);
    if (musicFolder.isEmpty() || !isSafeComponent(a) || !isSafeComponent(b))
        return std::nullopt;
    return QDir(musicFolder).filePath(a + u'/' + b + QStringLiteral("/folder.jpg"));
}

std::optional<QImage> folderImage(const QString &directory, DecodeMemo *memo)
{
    const auto load = [memo](const QString &path) { return memo ? memo->loadFile(path) : loadImageFile(path); };
    const QDir dir(directory);
    for (const char *name : wellKnownNames) {
        for (const char *ext : imageExtensions) {
            const QString path = dir.filePath(QLatin1StringView(name) + u'.' + QLatin1StringView(ext));
            if (std::optional<QImage> image = load(path))
                return image;
        }
    }
    // QDir skips hidden entries unless asked; a listing error is an empty list.
    const QStringList entries = dir.entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString &entry : entries) {
        if (!hasImageExtension(entry))
            continue;
        if (std::optional<QImage> image = load(dir.filePath(entry)))
            return image;
    }
    return std::nullopt;
}

void saveJPEG(const QImage &image, const QString &path)
{
    // A failure here is no reason not to try the write.
    QDir().mkpath(QFileInfo(path).absolutePath());
    const std::optional<QByteArray> bytes = encodeJpeg(image);
    if (!bytes)
        return;
    // Written aside and renamed into place: a lookup of the same picture running
    // at the same moment must never read half a file (a truncated JPEG still
    // decodes, as a picture with a grey bottom).
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(*bytes) != bytes->size() || !file.commit())
        qCDebug(lcArtwork) << "could not write" << path << file.errorString();
}

} // namespace artwork
