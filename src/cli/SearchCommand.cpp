// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "browse/TrackIndex.h"
#include "library/FolderScan.h"
#include "model/JsonWriter.h"
#include "model/LocalPath.h"

namespace {

QByteArray resultsJson(const SearchResults &r)
{
    JsonWriter w;
    w.beginObject();
    w.key(u"artists");
    w.beginArray();
    for (const ArtistSearchResult &a : r.artists) {
        w.beginObject();
        w.key(u"id");
        w.value(a.id);
        w.key(u"name");
        w.value(a.name);
        w.key(u"trackCount");
        w.value(double(a.trackCount));
        w.endObject();
    }
    w.endArray();
    w.key(u"albums");
    w.beginArray();
    for (const AlbumSearchResult &a : r.albums) {
        w.beginObject();
        w.key(u"id");
        w.value(a.id);
        w.key(u"displayName");
        w.value(a.displayName);
        w.key(u"artist");
        w.value(a.artist);
        cli::writeTrackLists(w, a.tracks);
        w.endObject();
    }
    w.endArray();
    w.key(u"tracks");
    w.beginArray();
    for (const TrackSearchEntry &e : r.tracks) {
        w.beginObject();
        w.key(u"path");
        w.value(localpath::readable(e.track.path()));
        w.key(u"url");
        w.value(QString::fromLatin1(e.track.url.toEncoded()));
        w.key(u"name");
        w.value(e.name);
        w.key(u"artist");
        w.value(e.artist);
        w.key(u"album");
        w.value(e.album);
        w.endObject();
    }
    w.endArray();
    w.endObject();
    return w.take();
}

} // namespace

QList<Track> cli::libraryOf(const QString &folder, std::vector<UnreadableFolder> *unreadable)
{
    QList<Track> tracks;
    for (const std::string &path : scanFolderNative(folder, unreadable))
        tracks.append(Track::create(localpath::fileUrlFromBytes(path)));
    return tracks;
}

void cli::writeTrackLists(JsonWriter &w, const QList<Track> &tracks)
{
    w.key(u"tracks");
    w.beginArray();
    for (const Track &t : tracks)
        w.value(localpath::readable(t.path()));
    w.endArray();
    w.key(u"urls");
    w.beginArray();
    for (const Track &t : tracks)
        w.value(QString::fromLatin1(t.url.toEncoded()));
    w.endArray();
}

int cli::search(const Arguments &args)
{
    if (args.operands.size() != 2)
        return badUsage("search", QStringLiteral("give a folder and a query"));
    const QString folder = absolutePaths(args.operands.first(1)).first();
    if (const QString why = folderProblem(folder); !why.isEmpty()) {
        error(QStringLiteral("%1: %2").arg(localpath::readable(folder), why));
        return 1;
    }
    std::vector<UnreadableFolder> unreadable;
    const TrackIndex index = buildTrackIndex(libraryOf(folder, &unreadable)).result();
    out(resultsJson(computeSearchResults(textArgument(args.operands.at(1)), index)) + '\n');
    return reportUnreadable(unreadable) ? 1 : 0;
}
