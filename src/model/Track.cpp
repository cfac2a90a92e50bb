// SPDX-License-Identifier: GPL-3.0-or-later
#include "Track.h"

#include "JsonWriter.h"
#include "LocalPath.h"

#include <QJsonDocument>
#include <QRegularExpression>

#include <cstring>

Track Track::create(const QUrl &url)
{
    return Track{QUuid::createUuid(), url, 0};
}

QString Track::path() const
{
    return localpath::pathOf(url);
}

void Track::writeJson(JsonWriter &w) const
{
    w.beginObject();
    w.key(u"id");
    w.value(trackjson::uuidText(id));
    w.key(u"url");
    w.value(trackjson::fileUrlText(url));
    w.key(u"duration");
    w.value(duration);
    w.endObject();
}

std::optional<Track> Track::fromJson(const QJsonValue &value)
{
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject o = value.toObject();
    const QJsonValue id = o.value(u"id");
    const QJsonValue url = o.value(u"url");
    const QJsonValue duration = o.value(u"duration");
    if (!id.isString() || !url.isString() || !duration.isDouble())
        return std::nullopt;
    const auto uuid = trackjson::parseUuid(id.toString());
    const auto parsedUrl = trackjson::parseUrl(url.toString());
    if (!uuid || !parsedUrl)
        return std::nullopt;
    return Track{*uuid, *parsedUrl, duration.toDouble()};
}

namespace trackjson {

QString uuidText(const QUuid &id)
{
    return id.toString(QUuid::WithoutBraces).toUpper();
}

std::optional<QUuid> parseUuid(const QString &text)
{
    static const QRegularExpression form(QStringLiteral(
        "^[0-9A-Fa-f]{8}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{12}$"));
    if (!form.match(text).hasMatch())
        return std::nullopt;
    return QUuid::fromString(text);
}

QString fileUrlText(const QUrl &url)
{
    if (!url.isLocalFile())
        return QString::fromUtf8(url.toEncoded());
    // Characters a URL path may hold as they are; everything else is %XX of the
    // name's bytes (UTF-8, or whatever the file system holds), in upper-case hex.
    static constexpr char allowed[] = "-._~!$&'()*+,;=:@/";
    const QByteArray path = localpath::bytesOf(url);
    QByteArray out = "file://";
    out.reserve(path.size() + 16);
    for (const char ch : path) {
        const auto c = static_cast<unsigned char>(ch);
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')
            || (c >= '0' && c <= '9') || (c != 0 && std::strchr(allowed, c));
        if (plain) {
            out.append(ch);
        } else {
            static constexpr char hex[] = "0123456789ABCDEF";
            out.append('%');
            out.append(hex[c >> 4]);
            out.append(hex[c & 15]);
        }
    }
    return QString::fromUtf8(out);
}

std::optional<QUrl> parseUrl(const QString &text)
{
    if (text.isEmpty())
        return std::nullopt;
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.isRelative())
        return std::nullopt;
    return url;
}

std::optional<QByteArray> encode(const Track &track)
{
    JsonWriter w;
    track.writeJson(w);
    if (!w.ok())
        return std::nullopt;
    return w.take();
}

std::optional<Track> decode(const QByteArray &json)
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !doc.isObject())
        return std::nullopt;
    return Track::fromJson(doc.object());
}

} // namespace trackjson
