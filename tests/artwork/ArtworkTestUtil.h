// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "artwork/ArtworkServices.h"
#include "support/FakeWebServer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

#include <cstdlib>
#include <optional>

namespace artworktest {

inline constexpr char contactUrl[] = "http://contact.invalid/tarnwell-tests";

inline QString musicFolder() { return QStandardPaths::standardLocations(QStandardPaths::MusicLocation).value(0); }
inline QByteArray pngOf(const QColor &c, QSize size = {64, 48}) { return FakeWebServer::png(FakeWebServer::solidImage(c, size)); }
inline QByteArray jpegOf(const QColor &c) { return FakeWebServer::jpeg(FakeWebServer::solidImage(c)); }

inline ArtworkServices servicesOf(const FakeWebServer &server)
{
    return {server.serviceUrl(QStringLiteral("mb")), server.serviceUrl(QStringLiteral("caa")),
            server.serviceUrl(QStringLiteral("wiki")), server.serviceUrl(QStringLiteral("commons")),
            QString::fromLatin1(contactUrl)};
}

// Every request as "service path?query", in arrival order.
inline QStringList trail(const FakeWebServer &server)
{
    QStringList out;
    for (const FakeWebServer::Request &r : server.requests())
        out.append(r.service + u' ' + QString::fromLatin1(r.pathAndQuery));
    return out;
}

// True when the picture's centre has about this colour (JPEG copies drift a little).
inline bool looksLike(const std::optional<QImage> &image, const QColor &color, int tolerance = 12)
{
    if (!image || image->isNull())
        return false;
    const QColor c = image->pixelColor(image->width() / 2, image->height() / 2);
    return std::abs(c.red() - color.red()) <= tolerance && std::abs(c.green() - color.green()) <= tolerance
        && std::abs(c.blue() - color.blue()) <= tolerance;
}

// The services' answers, as JSON.
inline QByteArray json(const QJsonObject &o) { return QJsonDocument(o).toJson(QJsonDocument::Compact); }
inline QByteArray query(const char *key, const QJsonValue &value) { return json({{"query", QJsonObject{{key, value}}}}); }

inline QByteArray releases(const QStringList &ids)
{
    QJsonArray list;
    for (const QString &id : ids)
        list.append(QJsonObject{{"id", id}, {"score", 100}});
    return json({{"count", int(ids.size())}, {"releases", list}});
}

inline QByteArray pageImages(const std::optional<QString> &thumbnail) // none: no such page
{
    if (!thumbnail)
        return query("pages", QJsonObject{{"-1", QJsonObject{{"ns", 0}, {"missing", ""}}}});
    const QJsonObject thumb{{"source", *thumbnail}, {"width", 500}, {"height", 400}};
    return query("pages", QJsonObject{{"123", QJsonObject{{"pageid", 123}, {"thumbnail", thumb}}}});
}

inline QByteArray searchResults(const QStringList &titles)
{
    QJsonArray list;
    for (const QString &t : titles)
        list.append(QJsonObject{{"ns", 6}, {"title", t}});
    return query("search", list);
}

inline QByteArray imageInfo(const std::optional<QString> &url)
{
    QJsonObject page{{"title", "File:x.jpg"}};
    if (url)
        page.insert("imageinfo", QJsonArray{QJsonObject{{"url", *url}}});
    return query("pages", QJsonObject{{"77", page}});
}

} // namespace artworktest
