// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Fuzz bodies for what strangers on the web send us: the JSON answers of the
// picture services and the update feed (see FuzzTargets.h).

#include "FuzzTargets.h"
#include "app/UpdateFeed.h"
#include "artwork/ServiceResponses.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace onlinefuzz {

inline QByteArray bytes(const uint8_t *data, size_t size)
{
    return fuzz::view(data, size).toByteArray();
}

inline QByteArray json(const QJsonObject &o)
{
    return QJsonDocument(o).toJson(QJsonDocument::Compact);
}

inline QJsonObject query(const QString &key, const QJsonValue &value)
{
    return { { QStringLiteral("query"), QJsonObject { { key, value } } } };
}

// What a decoded answer would look like sent again: it must decode to the same.
inline QByteArray reencoded(const MBSearch &r)
{
    QJsonArray releases;
    for (const MBSearch::Release &release : r.releases)
        releases.append(QJsonObject { { QStringLiteral("id"), release.id } });
    return json({ { QStringLiteral("releases"), releases } });
}

inline QByteArray reencoded(const WikiSearch &r)
{
    QJsonArray items;
    for (const WikiSearch::Item &item : r.search)
        items.append(QJsonObject { { QStringLiteral("title"), item.title } });
    return json(query(QStringLiteral("search"), items));
}

inline QByteArray reencoded(const WikiPageImages &r)
{
    QJsonObject pages;
    for (const auto &[id, page] : r.pages) {
        QJsonObject o;
        if (page.thumbnail)
            o.insert(QStringLiteral("thumbnail"),
                QJsonObject { { QStringLiteral("source"), page.thumbnail->source } });
        pages.insert(id, o);
    }
    return json(query(QStringLiteral("pages"), pages));
}

inline QByteArray reencoded(const WikiImageInfo &r)
{
    QJsonObject pages;
    for (const auto &[id, page] : r.pages) {
        QJsonObject o;
        if (page.imageinfo) {
            QJsonArray infos;
            for (const WikiImageInfo::Info &info : *page.imageinfo)
                infos.append(QJsonObject { { QStringLiteral("url"), info.url } });
            o.insert(QStringLiteral("imageinfo"), infos);
        }
        pages.insert(id, o);
    }
    return json(query(QStringLiteral("pages"), pages));
}

template<typename Record> void roundTrip(const QByteArray &input)
{
    const std::optional<Record> decoded = Record::decode(input);
    if (!decoded)
        return;
    const QByteArray again = reencoded(*decoded);
    const std::optional<Record> back = Record::decode(again);
    fuzz::require(back.has_value() && reencoded(*back) == again);
}

inline void serviceJson(const uint8_t *data, size_t size)
{
    const QByteArray input = bytes(data, size);
    roundTrip<MBSearch>(input);
    roundTrip<WikiSearch>(input);
    roundTrip<WikiPageImages>(input);
    roundTrip<WikiImageInfo>(input);
}

// A release the feed offers is one that can be compared and fetched, and the
// version order is a strict weak order on what the feed holds.
inline void updateFeed(const uint8_t *data, size_t size)
{
    const std::optional<updatefeed::Release> newest = updatefeed::newestRelease(bytes(data, size));
    if (!newest)
        return;
    fuzz::require(!newest->version.isEmpty() && !newest->displayVersion.isEmpty());
    const QString scheme = newest->downloadUrl.scheme();
    fuzz::require(scheme == u"http" || scheme == u"https");
    fuzz::require(updatefeed::compareVersions(newest->version, newest->version) == 0);
    for (const char *other : { "1.0", "1.0-beta", "0.10", "2.0.1" }) {
        const QString v = QString::fromLatin1(other);
        fuzz::require(updatefeed::compareVersions(newest->version, v)
            == -updatefeed::compareVersions(v, newest->version));
    }
}

} // namespace onlinefuzz
