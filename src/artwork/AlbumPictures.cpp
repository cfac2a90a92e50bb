// SPDX-License-Identifier: GPL-3.0-or-later
#include "AlbumPictures.h"

#include "ArtworkLoader.h"
#include "ArtworkSource.h"

#include <QPointer>
#include <QSet>

namespace {

QString albumKey(const QString &artist, const QString &album)
{
    return artist.toLower() + u'\n' + album.toLower();
}

} // namespace

AlbumPictures::Index AlbumPictures::makeIndex(const QList<Song> &songs)
{
    Index index;
    for (const Song &song : songs) {
        if (song.album.isEmpty())
            continue;
        QList<SongFile> &files = index.albumSongs[albumKey(song.artist, song.album)];
        if (files.isEmpty() && !song.artist.isEmpty())
            index.artistAlbums[song.artist.toLower()].append(Album{song.artist, song.album});
        files.append({song.file, song.hasPicture});
    }
    return index;
}

AlbumPictures::AlbumPictures(ArtworkLoader &loader)
    : m_loader(loader)
{
}

void AlbumPictures::setIndex(Index index)
{
    m_index = std::move(index);
    m_chosen.clear();
    ++m_generation;
}

QSet<QString> AlbumPictures::extendIndex(Index &index, const Index &more)
{
    QSet<QString> known;
    QSet<QString> added;
    for (auto it = more.albumSongs.cbegin(); it != more.albumSongs.cend(); ++it) {
        QList<SongFile> &files = index.albumSongs[it.key()];
        if (!files.isEmpty())
            known.insert(it.key());
        files += it.value();
        added.insert(it.key());
    }
    for (auto it = more.artistAlbums.cbegin(); it != more.artistAlbums.cend(); ++it) {
        QList<Album> &albums = index.artistAlbums[it.key()];
        for (const Album &a : it.value()) {
            if (!known.contains(albumKey(a.artist, a.album)))
                albums.append(a);
        }
    }
    return added;
}

void AlbumPictures::grown(Index index, const QSet<QString> &albums)
{
    m_index = std::move(index);
    // Albums none of whose songs had a picture of their own may have one now.
    for (const QString &key : albums) {
        if (const auto chosen = m_chosen.constFind(key); chosen != m_chosen.cend() && !*chosen)
            m_chosen.erase(chosen);
    }
    // A choice under way looked at the album's songs before these came.
    ++m_generation;
}

QCoro::Task<std::optional<QImage>> AlbumPictures::album(std::optional<QString> artist,
                                                         std::optional<QString> album, CancelToken cancel)
{
    const QPointer<AlbumPictures> self(this);
    if (std::optional<QImage> saved = co_await m_loader.savedAlbumArt(artist, album))
        co_return saved;
    std::optional<QImage> own;
    if (self && album)
        own = co_await songsPicture(albumKey(artist.value_or(QString()), *album));
    if (!self)
        co_return std::nullopt;
    if (!own)
        co_return co_await m_loader.albumArt(artist, album, cancel);
    replaceWhenFound(m_loader.albumArt(artist, album), artworksource::album(artist, album));
    co_return own;
}

QCoro::Task<std::optional<QImage>> AlbumPictures::artist(QString name, CancelToken cancel)
{
    const QPointer<AlbumPictures> self(this);
    if (std::optional<QImage> saved = co_await m_loader.savedArtistImage(name))
        co_return saved;
    std::optional<QImage> standIn;
    const QList<Album> albums = self ? m_index.artistAlbums.value(name.toLower()) : QList<Album>();
    for (const Album &a : albums) {
        standIn = co_await m_loader.savedAlbumArt(a.artist, a.album);
        if (!standIn && self)
            standIn = co_await songsPicture(albumKey(a.artist, a.album));
        if (standIn || !self)
            break;
    }
    if (!self)
        co_return std::nullopt;
    if (!standIn)
        co_return co_await m_loader.artistImage(name, cancel);
    replaceWhenFound(m_loader.artistImage(name), artworksource::artist(name));
    co_return standIn;
}

QCoro::Task<std::optional<QImage>> AlbumPictures::songsPicture(QString key)
{
    if (const auto chosen = m_chosen.constFind(key); chosen != m_chosen.cend()) {
        if (!*chosen)
            co_return std::nullopt;
        co_return co_await m_loader.trackArtwork(**chosen);
    }
    const QPointer<AlbumPictures> self(this);
    const quint64 generation = m_generation;
    const QList<SongFile> files = m_index.albumSongs.value(key);
    for (const SongFile &song : files) {
        // Songs of one folder share its picture, and the loader reads each
        // once; a song known to hold none inside is not opened.
        std::optional<QImage> picture = co_await m_loader.trackArtwork(song.file, song.hasPicture);
        if (!self)
            co_return picture;
        if (picture) {
            if (generation == m_generation)
                m_chosen.insert(key, song.file);
            co_return picture;
        }
    }
    if (self && generation == m_generation)
        m_chosen.insert(key, std::nullopt);
    co_return std::nullopt;
}

QCoro::Task<> AlbumPictures::replaceWhenFound(QCoro::Task<std::optional<QImage>> lookup, QUrl source)
{
    const QPointer<AlbumPictures> self(this);
    const std::optional<QImage> found = co_await std::move(lookup);
    if (self && found)
        Q_EMIT replaced(source);
}
