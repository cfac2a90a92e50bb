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
            [this] { pictureSongs(m_searchIndex.trackIndex().entries(), 0, true); });
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

void SongIndexing::afterIndexing(int first, int)
{
    // The new entries are the index's last: the pool reads them in place.
    const TrackEntries &entries = m_searchIndex.trackIndex().entries();
    m_prefetch.start(entries, first);
    pictureSongs(entries, first, false);
    Q_EMIT songsIndexed();
}

void SongIndexing::pictureSongs(TrackEntries entries, qsizetype from, bool whole)
{
    // One step after the other, so an album's songs keep library order; each
    // step extends the last one's index on the pool, and the GUI thread only
    // takes it.
    m_albumIndexing = m_albumIndexing.then(QtFuture::Launch::Async, [entries = std::move(entries), from, whole](const PictureStep &last) {
        QList<AlbumPictures::Song> songs;
        songs.reserve(entries.size() - from);
        for (qsizetype i = from; i < entries.size(); ++i)
            songs.append({entries.at(i).track.url, entries.at(i).artist, entries.at(i).album, entries.at(i).hasPicture});
        PictureStep step;
        step.whole = whole;
        if (whole) {
            step.index = AlbumPictures::makeIndex(songs);
        } else {
            step.index = last.index;
            step.albums = AlbumPictures::extendIndex(step.index, AlbumPictures::makeIndex(songs));
        }
        return step;
    });
    m_albumIndexing.then(this, [this](const PictureStep &step) {
        if (step.whole)
            m_loader.albumPictures().setIndex(step.index);
        else
            m_loader.albumPictures().grown(step.index, step.albums);
    });
}
