// SPDX-License-Identifier: GPL-3.0-or-later
#include "Playlist.h"

#include "JsonWriter.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

bool Playlist::contains(const QUuid &trackId) const
{
    return std::any_of(tracks.cbegin(), tracks.cend(),
                       [&](const Track &t) { return t.id == trackId; });
}

void Playlist::writeJson(JsonWriter &w) const
{
    w.beginObject();
    w.key(u"id");
    w.value(trackjson::uuidText(id));
    w.key(u"name");
    w.value(name);
    w.key(u"tracks");
    w.beginArray();
    for (const Track &t : tracks)
        t.writeJson(w);
    w.endArray();
    w.endObject();
}

std::optional<Playlist> Playlist::fromJson(const QJsonValue &value)
{
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject o = value.toObject();
    const QJsonValue id = o.value(u"id");
    const QJsonValue name = o.value(u"name");
    const QJsonValue tracks = o.value(u"tracks");
    if (!id.isString() || !name.isString() || !tracks.isArray())
        return std::nullopt;
    const auto uuid = trackjson::parseUuid(id.toString());
    if (!uuid)
        return std::nullopt;
    Playlist p{*uuid, name.toString(), {}};
    const QJsonArray array = tracks.toArray();
    p.tracks.reserve(array.size());
    for (const QJsonValue &v : array) {
        auto track = Track::fromJson(v);
        if (!track)
            return std::nullopt;
        p.tracks.append(*track);
    }
    return p;
}

namespace playlistjson {

std::optional<QByteArray> encode(const QList<Playlist> &playlists)
{
    JsonWriter w;
    w.beginArray();
    for (const Playlist &p : playlists)
        p.writeJson(w);
    w.endArray();
    if (!w.ok())
        return std::nullopt;
    return w.take();
}

std::optional<QList<Playlist>> decode(const QByteArray &json)
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !doc.isArray())
        return std::nullopt;
    QList<Playlist> result;
    for (const QJsonValue &v : doc.array()) {
        auto p = Playlist::fromJson(v);
        if (!p)
            return std::nullopt;
        result.append(std::move(*p));
    }
    return result;
}

} // namespace playlistjson
