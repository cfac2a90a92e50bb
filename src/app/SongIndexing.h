// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ArtworkPrefetch.h"
#include "artwork/AlbumPictures.h"
#include "browse/SearchIndex.h"
#include "browse/TagMemo.h"

#include <QFuture>
#include <QObject>
#include <QSet>

class ArtworkLoader;

// What the program knows of the library's songs beyond their files. Each
// file's tags are read once (into the memo) and shared by everything below:
//
//   add(new songs) ─► searchIndex reads their tags ─► songsIndexed
//       ├─► prefetch: the new songs' artist and album pictures
//       └─► album pictures: which songs hold each album's own picture
//   retain(the library) ─► tags of songs gone are dropped, the index
//       shrinks, the album pictures' songs are laid out anew
//   rewritten(song) ─► a file whose tags were written is read again, and
//       search finds a library song by its new tags
class SongIndexing : public QObject
{
    Q_OBJECT

public:
    explicit SongIndexing(ArtworkLoader &loader, QObject *parent = nullptr);

    MetadataReader tagReader() const { return m_tags.reader(); }
    SearchIndex *searchIndex() { return &m_searchIndex; }
    ArtworkPrefetch &prefetch() { return m_prefetch; }

    void add(const QList<Track> &songs) { m_searchIndex.add(songs); }
    void retain(const QList<Track> &library);
    // The song's file has new tags; a playlist's own copy of a song that is
    // not in the library is not indexed.
    void rewritten(const Track &song, bool inLibrary)
    {
        m_tags.forget(song.path());
        if (inLibrary)
            m_searchIndex.reindex(song);
    }

Q_SIGNALS:
    // New songs' tags are in memory: grouping them reads no file.
    void songsIndexed();

private:
    void afterIndexing(int first, int count);
    // The albums' songs of entries[from] on, worked out on the pool in the
    // order asked: all of them (whole) or the ones new to the library.
    void pictureSongs(TrackEntries entries, qsizetype from, bool whole);

    ArtworkLoader &m_loader;
    TagMemo m_tags;
    SearchIndex m_searchIndex;
    ArtworkPrefetch m_prefetch;
    // The album pictures' index as the last step on the pool left it.
    struct PictureStep
    {
        AlbumPictures::Index index;
        QSet<QString> albums; // grown by the step; all when `whole`
        bool whole = false;
    };
    QFuture<PictureStep> m_albumIndexing = QtFuture::makeReadyFuture(PictureStep());
};
