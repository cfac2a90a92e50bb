// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The JSON answers of the four services, decoded strictly: a required key that
// is missing (or null) or any value of the wrong type makes the whole decode
// fail; an optional key may be missing or null; unknown keys are ignored.
// Object maps keep the order in which they are iterated (by key).

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>
#include <utility>

// MusicBrainz release search.
struct MBSearch
{
    struct Release
    {
        QString id;
    };
    QList<Release> releases;

    static std::optional<MBSearch> decode(const QByteArray &json);
};

// Wikipedia page images.
struct WikiPageImages
{
    struct Thumbnail
    {
        QString source;
    };
    struct Page
    {
        std::optional<Thumbnail> thumbnail;
    };
    // (page id, page) in iteration order
    QList<std::pair<QString, Page>> pages;

    static std::optional<WikiPageImages> decode(const QByteArray &json);
};

// Commons file search.
struct WikiSearch
{
    struct Item
    {
        QString title;
    };
    QList<Item> search;

    static std::optional<WikiSearch> decode(const QByteArray &json);
};

// Commons image information.
struct WikiImageInfo
{
    struct Info
    {
        QString url;
    };
    struct Page
    {
        std::optional<QList<Info>> imageinfo;
    };
    QList<std::pair<QString, Page>> pages;

    static std::optional<WikiImageInfo> decode(const QByteArray &json);
};
