// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "browse/Grouping.h"
#include "model/JsonWriter.h"
#include "model/LocalPath.h"

int cli::artists(const Arguments &args)
{
    if (args.operands.size() != 1)
        return badUsage("artists", QStringLiteral("give one folder"));
    const QString folder = absolutePaths(args.operands).first();
    if (const QString why = folderProblem(folder); !why.isEmpty()) {
        error(QStringLiteral("%1: %2").arg(localpath::readable(folder), why));
        return 1;
    }
    std::vector<UnreadableFolder> unreadable;
    const QList<ArtistGroup> groups = loadArtists(libraryOf(folder, &unreadable)).result();
    JsonWriter w;
    w.beginArray();
    for (const ArtistGroup &g : groups) {
        w.beginObject();
        w.key(u"name");
        w.value(g.name);
        writeTrackLists(w, g.tracks);
        w.endObject();
    }
    w.endArray();
    out(w.take() + '\n');
    return reportUnreadable(unreadable) ? 1 : 0;
}
