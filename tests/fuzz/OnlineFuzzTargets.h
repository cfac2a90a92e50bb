// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Fuzz bodies for what strangers on the web send us: the JSON answers of the
// picture services and the update feed (see FuzzTargets.h).

#include "FuzzTargets.h"
#include "app/UpdateFeed.h"
#include "artwork/ServiceResponses.h"

namespace onlinefuzz {

// The answers decode without harm, whatever they hold.
inline void serviceJson(QByteArrayView bytes)
{
    const QByteArray input = bytes.toByteArray();
    (void)MBSearch::decode(input);
    (void)WikiSearch::decode(input);
    (void)WikiPageImages::decode(input);
    (void)WikiImageInfo::decode(input);
}

// A release the feed offers is one that can be compared and fetched, and the
// version order is a strict weak order on what the feed holds.
inline void updateFeed(QByteArrayView bytes)
{
    const std::optional<updatefeed::Release> newest = updatefeed::newestRelease(bytes.toByteArray());
    if (!newest)
        return;
    fuzz::require(!newest->version.isEmpty() && !newest->displayVersion.isEmpty());
    fuzz::require(QStringList { u"http"_qs, u"https"_qs }.contains(newest->downloadUrl.scheme()));
    fuzz::require(updatefeed::compareVersions(newest->version, newest->version) == 0);
    for (const QString &v : { u"1.0"_qs, u"1.0-beta"_qs, u"0.10"_qs, u"2.0.1"_qs })
        fuzz::require(updatefeed::compareVersions(newest->version, v)
            == -updatefeed::compareVersions(v, newest->version));
}

inline constexpr fuzz::Target targets[] = { { "service_json", serviceJson }, { "update_feed", updateFeed } };

} // namespace onlinefuzz
