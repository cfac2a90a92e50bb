// SPDX-License-Identifier: GPL-3.0-or-later
#include "SearchResults.h"

#include <QVariantList>

QVariantMap SearchResults::toVariantMap() const
{
    QVariantList artistList;
    for (const ArtistSearchResult &a : artists)
        artistList.append(QVariantMap { { QStringLiteral("id"), a.id }, { QStringLiteral("name"), a.name },
            { QStringLiteral("trackCount"), a.trackCount } });
    QVariantList albumList;
    for (const AlbumSearchResult &a : albums) {
        QStringList ids;
        for (const Track &t : a.tracks)
            ids.append(trackjson::uuidText(t.id));
        albumList.append(QVariantMap { { QStringLiteral("id"), a.id },
            { QStringLiteral("displayName"), a.displayName }, { QStringLiteral("artist"), a.artist },
            { QStringLiteral("trackCount"), int(a.tracks.size()) }, { QStringLiteral("trackIds"), ids } });
    }
    QVariantList trackList;
    for (const TrackSearchEntry &e : tracks)
        trackList.append(QVariantMap { { QStringLiteral("trackId"), trackjson::uuidText(e.track.id) },
            { QStringLiteral("url"), e.track.url }, { QStringLiteral("path"), e.track.path() },
            { QStringLiteral("name"), e.name },
            { QStringLiteral("artist"), e.artist }, { QStringLiteral("album"), e.album } });
    return { { QStringLiteral("artists"), artistList }, { QStringLiteral("albums"), albumList },
        { QStringLiteral("tracks"), trackList } };
}
