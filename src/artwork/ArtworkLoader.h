// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Pictures for songs, albums and artists.
//
//   trackArtwork(file) ─ trackArtworkCache ─ folderImage(the file's folder)
//                                          └─ the picture embedded in the file
//   albumArt(artist, album) ─┐
//   artistImage(name) ───────┴─ artworkCache ─ SharedLookups (one lookup a key)
//        └─ the JPEG copy under Music ─ RequestThrottler slot ─ OnlineArtwork
//           chains ─ saveJPEG copy + cache
//   load(track) ─ trackArtwork, else the tags ─ albumArt ─ image (the playing song);
//                 a song with no picture of its own and none on disk shows none
//                 until the album's lookup finds one
//   albumPictures ─ albums and artists pictured by the library's own songs (AlbumPictures.h)
//   ArtworkImageProvider ─ image://artwork/... for QML, scaled off the GUI thread
//
// Everything here runs on the GUI thread as coroutines that suspend at every
// file read, decode, request and sleep, so any number of lookups are in flight
// at once; file reads, decoding and encoding happen on the thread pool. Online
// lookups start one throttle interval apart across the whole program. Requests
// for a picture already being looked up wait for that lookup, so the prefetch,
// the cards and the now-playing area ask the web once between them; a name the
// services had nothing for is not asked again while the loader lives, while a
// lookup that could not reach them is tried again on the next request.
//
// Copies live in the Music folder: <artist>/artist.jpg and <artist>/<album>/folder.jpg
// (names sanitised; a name that sanitises to "", "." or ".." gets no copy).

#include "ArtworkSession.h"
#include "CancelToken.h"
#include "DecodeMemo.h"
#include "OnlineArtwork.h"
#include "RequestThrottler.h"
#include "SharedLookups.h"
#include "model/Track.h"

#include <QCache>
#include <QCoro/QCoroTask>
#include <QImage>
#include <QObject>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class AlbumPictures;

class ArtworkLoader : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool hasImage READ hasImage NOTIFY imageChanged)
    // image://artwork/playing/<n>: the picture of the playing song, a new address
    // for every new picture; empty while there is none.
    Q_PROPERTY(QString imageSource READ imageSource NOTIFY imageChanged)

public:
    struct Options
    {
        // Absent: the user's Music folder. Empty: none, and no disk copies.
        std::optional<QString> musicFolder;
        ArtworkServices services = ArtworkServices::fromEnvironment();
        ArtworkSession::Limits limits;
        std::chrono::nanoseconds throttleInterval = std::chrono::seconds(1);
        // Memory the two caches may hold; the least recently used pictures go first.
        qint64 artworkCacheBytes = 192LL * 1024 * 1024;
        qint64 trackCacheBytes = 96LL * 1024 * 1024;
        // Decoded pictures beside songs and inside them, shared by the songs of
        // one folder (see DecodeMemo).
        qint64 decodeMemoBytes = 64LL * 1024 * 1024;
    };

    explicit ArtworkLoader(QObject *parent = nullptr);
    explicit ArtworkLoader(Options options, QObject *parent = nullptr);
    ~ArtworkLoader() override;

    // All lookups are called on the GUI thread and take their arguments by value.
    // Cancelling the token ends the request's wait at once; the lookup itself
    // stops at its cancellation point (after the throttle wait), with its
    // requests failing, once no request waits for it any more. A picture that
    // arrives anyway is still saved and cached.
    QCoro::Task<std::optional<QImage>> artistImage(QString name, CancelToken cancel = {});
    QCoro::Task<std::optional<QImage>> albumArt(std::optional<QString> artist, std::optional<QString> album,
                                                CancelToken cancel = {});
    // The song's own picture: the folder's, else the one inside the file, not
    // looked for when `inside` is false (its tags were read and hold none).
    QCoro::Task<std::optional<QImage>> trackArtwork(QUrl file, bool inside = true);
    // What is known without asking online: the picture in memory or the copy on disk.
    QCoro::Task<std::optional<QImage>> savedArtistImage(QString name);
    QCoro::Task<std::optional<QImage>> savedAlbumArt(std::optional<QString> artist, std::optional<QString> album);

    AlbumPictures &albumPictures() { return *m_albumPictures; }

    // The picture load() finds for a song: its own (trackArtwork), else the
    // album's, looked up by its tags with the title (or file name) standing in
    // for a missing artist or album. Names given here replace the tags.
    QCoro::Task<std::optional<QImage>> songPicture(QUrl file, std::optional<QString> artist = std::nullopt,
                                                   std::optional<QString> album = std::nullopt,
                                                   CancelToken cancel = {});

    // Finds the picture of the song that starts playing and publishes it in
    // image(); cancels the previous load. The old picture stays until the song
    // is known to have none of its own or on disk.
    void load(const Track &track);
    // For when nothing plays any more: cancels the load and clears image().
    void clear();

    const std::optional<QImage> &image() const { return m_image; }
    bool hasImage() const { return m_image.has_value(); }
    QString imageSource() const;

    // The folder the disk copies go to; empty when there is none.
    const QString &musicFolder() const { return m_musicFolder; }
    RequestThrottler &throttler() { return *m_throttler; }
    const std::shared_ptr<ArtworkSession> &session() const { return m_session; }

    // Online lookups running now (each shared by all who asked for it).
    int lookupsInFlight() const { return m_lookups.running(); }

    // Drops every picture held in memory (memory pressure; tests).
    void clearMemoryCaches();
    // What the caches hold (pictures shared between them counted each time).
    qint64 memoryCacheBytes() const;

    static QString artistKey(const QString &name);
    static QString albumKey(const std::optional<QString> &artist, const std::optional<QString> &album);

Q_SIGNALS:
    void imageChanged();
    // Every load ends with this, found or not, cancelled or not.
    void loadFinished();

private:
    QCoro::Task<> runLoad(QUrl file, CancelToken cancel);
    QCoro::Task<std::optional<QImage>> saved(QString key, std::optional<QString> path);
    // The artist and album a song's picture is looked up by (see songPicture).
    QCoro::Task<std::pair<QString, QString>> albumNames(QUrl file);
    using OnlineChain = std::function<QCoro::Task<std::optional<QImage>>(online::Lookup)>;
    // The cache, else the one shared lookup of the key.
    QCoro::Task<std::optional<QImage>> picture(QString key, std::optional<QString> path, OnlineChain chain,
                                               CancelToken cancel);
    // The copy at path, else the throttle slot and the chain.
    QCoro::Task<SharedLookups::Result> lookUp(QString key, std::optional<QString> path, OnlineChain chain,
                                              CancelToken cancel);
    QCoro::Task<std::optional<QImage>> diskCopy(std::optional<QString> path);
    QCoro::Task<> writeCopy(QImage image, std::optional<QString> path);
    void setImage(std::optional<QImage> image);

    QString m_musicFolder;
    std::shared_ptr<ArtworkSession> m_session;
    std::unique_ptr<RequestThrottler> m_throttler;
    SharedLookups m_lookups;
    QCache<QString, QImage> m_artworkCache;
    QCache<QUrl, QImage> m_trackArtworkCache;
    std::shared_ptr<DecodeMemo> m_decodeMemo;
    CancelToken m_task;
    std::optional<QImage> m_image;
    quint64 m_imageSerial = 0;
    std::unique_ptr<AlbumPictures> m_albumPictures;
};
