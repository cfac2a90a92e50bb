// SPDX-License-Identifier: GPL-3.0-or-later
#include "SongIndexing.h"

#include "artwork/ArtworkLoader.h"

#include <QSet>
#include <QtConcurrent>

SongIndexing::SongIndexing(ArtworkLoader &loader, QObject *parent)
    : QObject(parent)
    , m_loader(loader)
    , m_searchIndex(m_tags.reader())
    , m_prefetch(loader)
{
    connect(&m_searchIndex, &SearchIndex::songsIndexed, this, &SongIndexing::afterIndexing);
    connect(&m_searchIndex, &SearchIndex::songsRemoved, this,
            [this] { pictureSongs(m_searchIndex.trackIndex().entries(), true); });
}

void SongIndexing::retain(const QList<Track> &library)
{
    // Imported again, forgotten songs are read again.
    QSet<QUuid> kept;
    kept.reserve(library.size());
    for (const Track &song : library)
        kept.insert(song.id);
    for (const TrackSearchEntry &entry : m_searchIndex.trackIndex().entries()) {
        if (!kept.contains(entry.track.id))
            m_tags.forget(entry.track.path());
    }
    m_searchIndex.retain(library);
}

void SongIndexing::afterIndexing(int first, int count)
{
    const QList<TrackSearchEntry> added = m_searchIndex.trackIndex().entries().mid(first, count);
    m_prefetch.start(added);
    pictureSongs(added, false);
    Q_EMIT songsIndexed();
}

void SongIndexing::pictureSongs(QList<TrackSearchEntry> entries, bool whole)
{
    // One step after the other, so an album's songs keep library order.
    m_albumIndexing = m_albumIndexing.then(QtFuture::Launch::Async, [entries = std::move(entries)](const AlbumPictures::Index &) {
        QList<AlbumPictures::Song> songs;
        songs.reserve(entries.size());
        for (const TrackSearchEntry &entry : entries)
            songs.append({entry.track.url, entry.artist, entry.album});
        return AlbumPictures::makeIndex(songs);
    });
    m_albumIndexing.then(this, [this, whole](const AlbumPictures::Index &index) {
        if (whole)
            m_loader.albumPictures().setIndex(index);
        else
            m_loader.albumPictures().add(index);
    });
}
