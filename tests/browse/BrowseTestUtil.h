// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Songs and tags kept in memory for the browsing tests.

#include "browse/MetadataReader.h"
#include "model/Track.h"

#include <QHash>
#include <QStringList>

#include <memory>

namespace browsetest {

// "file" → no tags; "file|artist" → artist only; "file|artist|album" → both.
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

    Track add(const QString &row)
    {
        const QStringList f = row.split(u'|');
        const Track t = Track::create(QUrl::fromLocalFile(QStringLiteral("/music/") + f.at(0)));
        TrackMetadata m;
        if (f.size() > 1)
            m.artist = f.at(1);
        if (f.size() > 2)
            m.album = f.at(2);
        tags->insert(t.path(), m);
        tracks.append(t);
        return t;
    }

    MetadataReader reader() const
    {
        return [tags = tags](const QString &path) { return tags->value(path); };
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
