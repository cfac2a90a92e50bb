// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Track.h"

#include <QList>
#include <QString>
#include <QUuid>

// A named playlist holding its own copies of the tracks dropped onto it, in the
// order they were added. Equal by id only.
struct Playlist
{
    QUuid id;
    QString name;
    QList<Track> tracks;

    friend bool operator==(const Playlist &a, const Playlist &b) { return a.id == b.id; }

    bool contains(const QUuid &trackId) const;

    void writeJson(JsonWriter &w) const;
    static std::optional<Playlist> fromJson(const QJsonValue &value);
};

namespace playlistjson {

// The playlists file: one JSON array of playlists on one line. Absent when a
// track's duration is not finite.
std::optional<QByteArray> encode(const QList<Playlist> &playlists);
// Absent unless the whole document decodes: one broken playlist fails it all.
std::optional<QList<Playlist>> decode(const QByteArray &json);

} // namespace playlistjson
