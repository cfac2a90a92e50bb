// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Albums and artists pictured by the library's own songs, for when no copy
// lies on disk yet and the services have not answered (or can't be reached).
//
//   setIndex(index) ◄─ AlbumPictures::makeIndex(songs) on the pool
//   grown(index) ◄─ the same, extended by the songs new to the library
//   album(artist, album) ─ copy in memory or on disk
//        └─ else the picture of the album's first song that has one of its
//           own (folder image or embedded; trackArtwork), the choice kept;
//           a song whose tags were read without a picture is not opened again
//             └─ the online lookup goes on; when it finds one, replaced(address)
//        └─ else the online lookup, awaited
//   artist(name) ─ the same, with the pictures of the artist's albums standing in
//
// Names are compared ignoring case, as the artists grid groups them. Runs on
// the GUI thread; files are read on the pool by the loader.

#include "CancelToken.h"

#include <QCoro/QCoroTask>
#include <QHash>
#include <QImage>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QUrl>

#include <optional>

class ArtworkLoader;

class AlbumPictures : public QObject
{
    Q_OBJECT

public:
    struct Song
    {
        QUrl file;
        QString artist; // trimmed; empty when absent
        QString album;
        bool hasPicture = true; // false when its tags were read and hold none
    };
    struct SongFile
    {
        QUrl file;
        bool hasPicture = true;
    };
    struct Album
    {
        QString artist;
        QString album;
        bool operator==(const Album &) const = default;
    };
    // What the library holds: the songs of each album, the albums of each
    // artist, in library order.
    struct Index
    {
        QHash<QString, QList<SongFile>> albumSongs;
        QHash<QString, QList<Album>> artistAlbums;
    };
    static Index makeIndex(const QList<Song> &songs);
    // `more` (the index of songs after the index's own) joined to the index:
    // the same as makeIndex of all the songs. Answers the albums it added songs to.
    static QSet<QString> extendIndex(Index &index, const Index &more);

    explicit AlbumPictures(ArtworkLoader &loader);

    // The library changed: choices made for the old one are forgotten.
    void setIndex(Index index);
    // New songs joined the library: `index` is the old one extended by them
    // (extendIndex, on the pool) and `albums` the ones it added songs to,
    // which look again if none of their songs had a picture of its own.
    void grown(Index index, const QSet<QString> &albums);

    QCoro::Task<std::optional<QImage>> album(std::optional<QString> artist, std::optional<QString> album,
                                             CancelToken cancel = {});
    QCoro::Task<std::optional<QImage>> artist(QString name, CancelToken cancel = {});

Q_SIGNALS:
    // An online lookup found the picture for an address (image://artwork/...)
    // that was served one of the library's own meanwhile.
    void replaced(const QUrl &source);

private:
    // The first of the album's songs with a picture of its own.
    QCoro::Task<std::optional<QImage>> songsPicture(QString key);
    QCoro::Task<> replaceWhenFound(QCoro::Task<std::optional<QImage>> lookup, QUrl source);

    ArtworkLoader &m_loader;
    Index m_index;
    // Album key ─► the song whose picture stands for it, or none has one.
    QHash<QString, std::optional<QUrl>> m_chosen;
    quint64 m_generation = 0;
};
