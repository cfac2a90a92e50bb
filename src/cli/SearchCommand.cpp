// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "browse/TrackIndex.h"
#include "library/FolderScan.h"
#include "model/JsonWriter.h"

#include <QFileInfo>

namespace {

void writePaths(JsonWriter &w, const QList<Track> &tracks)
{
    w.beginArray();
    for (const Track &t : tracks)
        w.value(t.path());
    w.endArray();
}

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
        w.key(u"tracks");
        writePaths(w, a.tracks);
        w.endObject();
    }
    w.endArray();
    w.key(u"tracks");
    w.beginArray();
    for (const TrackSearchEntry &e : r.tracks) {
        w.beginObject();
        w.key(u"path");
        w.value(e.track.path());
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

QList<Track> cli::libraryOf(const QString &folder)
{
    QList<Track> tracks;
    for (const QString &path : scanFolder(QFileInfo(folder).absoluteFilePath()))
        tracks.append(Track::create(QUrl::fromLocalFile(path)));
    return tracks;
}

int cli::search(const QStringList &args)
{
    if (args.size() != 2) {
        error(QStringLiteral("usage: tarnwell-cli search DIR QUERY"));
        return usageError;
    }
    if (!QFileInfo(args.at(0)).isDir()) {
        error(QStringLiteral("%1 is not a folder").arg(args.at(0)));
        return 1;
    }
    const TrackIndex index = buildTrackIndex(libraryOf(args.at(0))).result();
    out(resultsJson(computeSearchResults(args.at(1), index)) + '\n');
    return 0;
}
