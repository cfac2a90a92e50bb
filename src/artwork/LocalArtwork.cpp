// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalArtwork.h"

#include "DecodeMemo.h"
#include "ImageCodec.h"
#include "model/LocalPath.h"
#include "model/Log.h"
#include "model/TextUtil.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <dirent.h>

namespace artwork {

namespace {

// Characters that read as separators keep becoming "-" (Day/Night gets the
// folder Day-Night); the others that some file systems refuse get their
// full-width forms, so "A*B" and "A?B" keep folders of their own.
QChar replacement(QChar c)
{
    switch (c.unicode()) {
    case u'/':
    case u'\\':
    case u':':
    case u'|':
        return u'-';
    case u'*':
    case u'?':
    case u'"':
    case u'<':
    case u'>':
        return QChar(c.unicode() - 0x20 + 0xff00);
    default:
        return c;
    }
}

// Invisible characters that have no place in a folder name: controls (line
// breaks and tabs among them), formats (bidirectional overrides, zero-width
// joiners), line and paragraph separators. Halves of broken surrogate pairs
// go too: they have no UTF-8 form.
bool isInvisible(char32_t c)
{
    switch (QChar::category(c)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

// Most file systems allow 255 bytes a name.
constexpr qsizetype maxNameBytes = 255;

// A name over the limit keeps its beginning and ends in a short digest of the
// whole original text, so two long names that begin alike stay apart.
QString shortened(const QString &name, const QString &original)
{
    const QString tag = u'~'
        + QString::fromLatin1(
              QCryptographicHash::hash(original.toUtf8(), QCryptographicHash::Sha256).toHex().left(12));
    QString head;
    qsizetype bytes = tag.size();
    for (qsizetype i = 0; i < name.size(); ++i) {
        // A pair of surrogates is one character of four bytes.
        const qsizetype n = name.at(i).isHighSurrogate() && i + 1 < name.size() ? 2 : 1;
        const qsizetype more = QStringView(name).mid(i, n).toUtf8().size();
        if (bytes + more > maxNameBytes)
            break;
        head += QStringView(name).mid(i, n);
        bytes += more;
        i += n - 1;
    }
    return head + tag;
}

bool isSafeComponent(const QString &component)
{
    return !component.isEmpty() && component != u"." && component != u"..";
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

// The names in a folder, hidden ones left out, in name order; nothing when it
// can't be listed. Listed by bytes, as QDir would miss names that aren't UTF-8.
std::optional<QStringList> visibleEntries(const QString &directory)
{
    QStringList names;
    DIR *dir = ::opendir(localpath::toBytes(directory).constData());
    if (!dir)
        return std::nullopt;
    while (const dirent *entry = ::readdir(dir)) {
        if (entry->d_name[0] != '.')
            names.append(localpath::fromBytes(entry->d_name));
    }
    ::closedir(dir);
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

QString sanitizedPathComponent(const QString &text)
{
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            const char32_t pair = QChar::surrogateToUcs4(c, text.at(i + 1));
            if (!isInvisible(pair))
                out += QStringView(text).mid(i, 2);
            ++i;
        } else if (!c.isSurrogate() && !isInvisible(c.unicode())) {
            out += replacement(c);
        }
    }
    out = text::trimmedHorizontal(out);
    if (out.toUtf8().size() > maxNameBytes)
        out = shortened(out, text);
    return out;
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
    const QString prefix = directory.endsWith(u'/') ? directory : directory + u'/';
    // One listing answers for every well-known name: asking for each by name
    // costs eighteen lookups in the many folders that hold none. A folder that
    // can't be listed may still be entered: there they are asked for by name.
    const std::optional<QStringList> entries = visibleEntries(directory);
    const auto present = [&entries](const QString &name) {
        return !entries || std::binary_search(entries->cbegin(), entries->cend(), name);
    };
    for (const char *name : wellKnownNames) {
        for (const char *ext : imageExtensions) {
            const QString file = QLatin1StringView(name) + u'.' + QLatin1StringView(ext);
            if (!present(file))
                continue;
            if (std::optional<QImage> image = load(prefix + file))
                return image;
        }
    }
    if (!entries)
        return std::nullopt;
    for (const QString &entry : *entries) {
        if (!hasImageExtension(entry))
            continue;
        if (std::optional<QImage> image = load(prefix + entry))
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
