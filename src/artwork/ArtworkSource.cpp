// SPDX-License-Identifier: GPL-3.0-or-later
#include "ArtworkSource.h"

#include "model/LocalPath.h"

#include <QStringList>

namespace artworksource {

namespace {

QString encode(const QString &part)
{
    // By bytes, so a file name that isn't UTF-8 keeps its %XX.
    return QString::fromLatin1(localpath::toBytes(part).toPercentEncoding());
}

QUrl make(const QStringList &parts)
{
    QString text = QStringLiteral("image://") + QLatin1StringView(providerName);
    for (const QString &p : parts)
        text += u'/' + p;
    return QUrl(text);
}

// The engine hands over the id partly decoded (spaces and letters, but never
// "%25" or "%2F"), so decoding once more is exact either way.
QString decode(const QString &part)
{
    return localpath::fromBytes(QByteArray::fromPercentEncoding(localpath::toBytes(part)));
}

std::optional<QString> optionalPart(const QString &part)
{
    QString decoded = decode(part);
    if (decoded.isEmpty())
        return std::nullopt;
    return decoded;
}

} // namespace

QUrl track(const QString &path, const std::optional<QString> &fallbackArtist,
           const std::optional<QString> &fallbackAlbum)
{
    QStringList parts{QStringLiteral("track"), encode(path)};
    if (fallbackAlbum)
        parts << encode(fallbackArtist.value_or(QString())) << encode(*fallbackAlbum);
    return make(parts);
}

QUrl album(const std::optional<QString> &artist, const std::optional<QString> &album)
{
    return make({QStringLiteral("album"), encode(artist.value_or(QString())), encode(album.value_or(QString()))});
}

QUrl artist(const QString &name)
{
    return make({QStringLiteral("artist"), encode(name)});
}

std::optional<Request> parse(const QString &id)
{
    const QStringList parts = id.split(u'/');
    const QString kind = parts.value(0);
    Request r;
    if (kind == u"track" && (parts.size() == 2 || parts.size() == 4)) {
        r.kind = Request::Track;
        r.path = decode(parts[1]);
        if (r.path.isEmpty())
            return std::nullopt;
        if (parts.size() == 4) {
            r.artist = optionalPart(parts[2]);
            r.album = optionalPart(parts[3]);
        }
        return r;
    }
    if (kind == u"album" && parts.size() == 3) {
        r.kind = Request::Album;
        r.artist = optionalPart(parts[1]);
        r.album = optionalPart(parts[2]);
        return r;
    }
    if (kind == u"artist" && parts.size() == 2) {
        r.kind = Request::Artist;
        r.artist = decode(parts[1]);
        return r;
    }
    if (kind == u"playing" && (parts.size() == 2 || parts.size() == 4)) {
        r.kind = Request::Playing;
        if (parts.size() == 4) {
            const QColor top(decode(parts[2]));
            const QColor bottom(decode(parts[3]));
            if (!top.isValid() || !bottom.isValid())
                return std::nullopt;
            r.backdrop = Request::Backdrop{top, bottom};
        }
        return r;
    }
    return std::nullopt;
}

} // namespace artworksource
