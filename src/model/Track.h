// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QMetaType>
#include <QUrl>
#include <QUuid>

#include <optional>

class JsonWriter;

// One song of the library: the identity of one audio file. A track holds no tag
// text; screens read tags themselves. Equal by id only.
struct Track
{
    QUuid id;
    QUrl url;
    double duration = 0;

    static Track create(const QUrl &url);

    // The file's path string (see LocalPath.h): exact even for names that are
    // not UTF-8.
    QString path() const;

    friend bool operator==(const Track &a, const Track &b) { return a.id == b.id; }

    // JSON form: {"id":"UPPER-CASE-UUID","url":"file:\/\/\/a%20b.mp3","duration":0}
    void writeJson(JsonWriter &w) const;
    static std::optional<Track> fromJson(const QJsonValue &value);
};

Q_DECLARE_METATYPE(Track)
// Lists of a hundred thousand songs grow by moving memory, not song by song.
Q_DECLARE_TYPEINFO(Track, Q_RELOCATABLE_TYPE);

namespace trackjson {

// The canonical text of a UUID: 8-4-4-4-12 upper-case hex digits.
QString uuidText(const QUuid &id);
// Reads a UUID in exactly that form, either case; anything else is absent.
std::optional<QUuid> parseUuid(const QString &text);

// "file:///" + the percent-encoded absolute path; a space becomes %20.
QString fileUrlText(const QUrl &url);
// An absolute URL; absent for text that isn't one.
std::optional<QUrl> parseUrl(const QString &text);

// One track as a JSON document, or absent when its duration is not finite.
std::optional<QByteArray> encode(const Track &track);
std::optional<Track> decode(const QByteArray &json);

} // namespace trackjson
