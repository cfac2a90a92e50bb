// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "browse/MetadataReader.h"
#include "model/Track.h"

#include <QHash>
#include <QStringList>

#include <functional>
#include <memory>

namespace browsetest {

// Songs and tags in memory, from rows "file", "file|artist" or "file|artist|album".
// An empty field is an empty tag, not an absent one. Files live under /music.
struct Library
{
    QList<Track> tracks;
    std::shared_ptr<QHash<QString, TrackMetadata>> tags = std::make_shared<QHash<QString, TrackMetadata>>();

    static Library from(const QStringList &rows)
    {
        Library lib;
        for (const QString &row : rows)
            lib.add(row);
        return lib;
    }

    void add(const QString &row)
    {
        const QStringList f = row.split(u'|');
        tracks.append(Track::create(QUrl::fromLocalFile(QStringLiteral("/music/") + f.at(0))));
        TrackMetadata &m = (*tags)[tracks.last().path()];
        m.artist = f.size() > 1 ? std::optional(f.at(1)) : std::nullopt;
        m.album = f.size() > 2 ? std::optional(f.at(2)) : std::nullopt;
    }

    // Reads the tags in memory, after calling `before` (to count or hold reads) on the reading thread.
    MetadataReader reader(std::function<void(const QString &)> before = {}) const
    {
        return [tags = tags, before](const QString &path) {
            if (before)
                before(path);
            return tags->value(path);
        };
    }

    // The file names (without folder) of some songs.
    static QString files(const QList<Track> &tracks)
    {
        QStringList names;
        for (const Track &t : tracks)
            names.append(t.url.fileName());
        return names.join(u',');
    }
};

} // namespace browsetest
