// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "artwork/ArtworkServices.h"
#include "support/FakeWebServer.h"

#include <QStandardPaths>

#include <cstdlib>
#include <optional>

namespace artworktest {

using namespace Qt::StringLiterals;

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
    const auto near = [tolerance](int a, int b) { return std::abs(a - b) <= tolerance; };
    return near(c.red(), color.red()) && near(c.green(), color.green()) && near(c.blue(), color.blue());
}

// The services' answers; an empty argument: nothing found.
inline QByteArray releases(const QString &id = {})
{
    return (id.isEmpty() ? uR"({"count":0,"releases":[]})"_s
                         : uR"({"count":1,"releases":[{"id":"%1","score":100}]})"_s.arg(id)).toUtf8();
}

inline QByteArray pageImages(const QString &thumbnail = {})
{
    return (thumbnail.isEmpty() ? uR"({"query":{"pages":{"-1":{"ns":0,"missing":""}}}})"_s
                                : uR"({"query":{"pages":{"123":{"pageid":123,"thumbnail":)"
                                  uR"({"source":"%1","width":500,"height":400}}}}})"_s.arg(thumbnail)).toUtf8();
}

inline QByteArray searchResults(const QString &title = {})
{
    const QString hit = title.isEmpty() ? QString() : uR"({"ns":6,"title":"%1"})"_s.arg(title);
    return uR"({"query":{"search":[%1]}})"_s.arg(hit).toUtf8();
}

inline QByteArray imageInfo(const QString &url = {})
{
    const QString info = url.isEmpty() ? QString() : uR"(,"imageinfo":[{"url":"%1"}])"_s.arg(url);
    return uR"({"query":{"pages":{"77":{"title":"File:x.jpg"%1}}}})"_s.arg(info).toUtf8();
}

} // namespace artworktest
