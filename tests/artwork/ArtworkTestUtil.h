// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Helpers shared by the artwork tests.

#include "artwork/ArtworkServices.h"
#include "support/FakeWebServer.h"

#include <QColor>
#include <QImage>
#include <QStringList>

#include <cstdlib>
#include <optional>

namespace artworktest {

inline constexpr char contactUrl[] = "http://contact.invalid/tarnwell-tests";

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

} // namespace artworktest
