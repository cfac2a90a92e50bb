// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "browse/Grouping.h"
#include "model/JsonWriter.h"

#include <QFileInfo>

int cli::artists(const QStringList &args)
{
    if (args.size() != 1) {
        error(QStringLiteral("usage: tarnwell-cli artists DIR"));
        return usageError;
    }
    if (!QFileInfo(args.at(0)).isDir()) {
        error(QStringLiteral("%1 is not a folder").arg(args.at(0)));
        return 1;
    }
    const QList<ArtistGroup> groups = loadArtists(libraryOf(args.at(0))).result();
    JsonWriter w;
    w.beginArray();
    for (const ArtistGroup &g : groups) {
        w.beginObject();
        w.key(u"name");
        w.value(g.name);
        w.key(u"tracks");
        w.beginArray();
        for (const Track &t : g.tracks)
            w.value(t.path());
        w.endArray();
        w.endObject();
    }
    w.endArray();
    out(w.take() + '\n');
    return 0;
}
