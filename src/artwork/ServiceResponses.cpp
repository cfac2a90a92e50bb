// SPDX-License-Identifier: GPL-3.0-or-later
#include "ServiceResponses.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

std::optional<QJsonObject> parseObject(const QByteArray &json)
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !doc.isObject())
        return std::nullopt;
    return doc.object();
}

// A required member: present, not null, of the wanted type.
std::optional<QJsonValue> required(const QJsonObject &o, QLatin1StringView key, QJsonValue::Type type)
{
    const QJsonValue v = o.value(key);
    if (v.type() != type)
        return std::nullopt;
    return v;
}

// An optional member: missing or null is "absent" (the outer optional holds an
// empty inner one); a value of another type fails the decode (outer absent).
std::optional<std::optional<QJsonValue>> optionalMember(const QJsonObject &o, QLatin1StringView key,
                                                        QJsonValue::Type type)
{
    const QJsonValue v = o.value(key);
    if (v.isUndefined() || v.isNull())
        return std::optional<QJsonValue>();
    if (v.type() != type)
        return std::nullopt;
    return std::optional<QJsonValue>(v);
}

std::optional<QString> requiredString(const QJsonObject &o, QLatin1StringView key)
{
    const auto v = required(o, key, QJsonValue::String);
    return v ? std::optional(v->toString()) : std::nullopt;
}

// Each element must be an object that `element` accepts.
template<typename T, typename F>
std::optional<QList<T>> decodeArray(const QJsonArray &array, F element)
{
    QList<T> out;
    out.reserve(array.size());
    for (const QJsonValue &v : array) {
        if (!v.isObject())
            return std::nullopt;
        std::optional<T> item = element(v.toObject());
        if (!item)
            return std::nullopt;
        out.append(std::move(*item));
    }
    return out;
}

template<typename T, typename F>
std::optional<QList<std::pair<QString, T>>> decodeMap(const QJsonObject &map, F element)
{
    QList<std::pair<QString, T>> out;
    out.reserve(map.size());
    for (auto it = map.begin(); it != map.end(); ++it) {
        if (!it.value().isObject())
            return std::nullopt;
        std::optional<T> item = element(it.value().toObject());
        if (!item)
            return std::nullopt;
        out.append({it.key(), std::move(*item)});
    }
    return out;
}

// {"query": {<key>: ...}}: the inner member of the required query object.
std::optional<QJsonValue> queryMember(const QByteArray &json, QLatin1StringView key, QJsonValue::Type type)
{
    const std::optional<QJsonObject> root = parseObject(json);
    if (!root)
        return std::nullopt;
    const auto query = required(*root, QLatin1StringView("query"), QJsonValue::Object);
    if (!query)
        return std::nullopt;
    return required(query->toObject(), key, type);
}

} // namespace

std::optional<MBSearch> MBSearch::decode(const QByteArray &json)
{
    const std::optional<QJsonObject> root = parseObject(json);
    if (!root)
        return std::nullopt;
    const auto releases = required(*root, QLatin1StringView("releases"), QJsonValue::Array);
    if (!releases)
        return std::nullopt;
    auto list = decodeArray<Release>(releases->toArray(), [](const QJsonObject &o) -> std::optional<Release> {
        const auto id = requiredString(o, QLatin1StringView("id"));
        return id ? std::optional(Release{*id}) : std::nullopt;
    });
    if (!list)
        return std::nullopt;
    return MBSearch{std::move(*list)};
}

std::optional<WikiPageImages> WikiPageImages::decode(const QByteArray &json)
{
    const auto pages = queryMember(json, QLatin1StringView("pages"), QJsonValue::Object);
    if (!pages)
        return std::nullopt;
    auto map = decodeMap<Page>(pages->toObject(), [](const QJsonObject &o) -> std::optional<Page> {
        const auto thumbnail = optionalMember(o, QLatin1StringView("thumbnail"), QJsonValue::Object);
        if (!thumbnail)
            return std::nullopt;
        Page page;
        if (*thumbnail) {
            const auto source = requiredString((*thumbnail)->toObject(), QLatin1StringView("source"));
            if (!source)
                return std::nullopt;
            page.thumbnail = Thumbnail{*source};
        }
        return page;
    });
    if (!map)
        return std::nullopt;
    return WikiPageImages{std::move(*map)};
}

std::optional<WikiSearch> WikiSearch::decode(const QByteArray &json)
{
    const auto search = queryMember(json, QLatin1StringView("search"), QJsonValue::Array);
    if (!search)
        return std::nullopt;
    auto list = decodeArray<Item>(search->toArray(), [](const QJsonObject &o) -> std::optional<Item> {
        const auto title = requiredString(o, QLatin1StringView("title"));
        return title ? std::optional(Item{*title}) : std::nullopt;
    });
    if (!list)
        return std::nullopt;
    return WikiSearch{std::move(*list)};
}

std::optional<WikiImageInfo> WikiImageInfo::decode(const QByteArray &json)
{
    const auto pages = queryMember(json, QLatin1StringView("pages"), QJsonValue::Object);
    if (!pages)
        return std::nullopt;
    auto map = decodeMap<Page>(pages->toObject(), [](const QJsonObject &o) -> std::optional<Page> {
        const auto imageinfo = optionalMember(o, QLatin1StringView("imageinfo"), QJsonValue::Array);
        if (!imageinfo)
            return std::nullopt;
        Page page;
        if (*imageinfo) {
            auto infos = decodeArray<Info>((*imageinfo)->toArray(), [](const QJsonObject &i) -> std::optional<Info> {
                const auto url = requiredString(i, QLatin1StringView("url"));
                return url ? std::optional(Info{*url}) : std::nullopt;
            });
            if (!infos)
                return std::nullopt;
            page.imageinfo = std::move(*infos);
        }
        return page;
    });
    if (!map)
        return std::nullopt;
    return WikiImageInfo{std::move(*map)};
}
