// SPDX-License-Identifier: GPL-3.0-or-later
#include "ArtworkLoader.h"
#include "AlbumPictures.h"

#include "Coro.h"
#include "ImageCodec.h"
#include "LocalArtwork.h"
#include "OnlineArtwork.h"
#include "model/LocalPath.h"
#include "model/Log.h"
#include "model/TextUtil.h"
#include "tags/TagReader.h"

#include <QFileInfo>
#include <QPointer>
#include <QStandardPaths>

using artwork::whenDone;

namespace {

// Cache costs are counted in KiB.
qsizetype costOf(const QImage &image)
{
    return std::max<qsizetype>(1, (image.sizeInBytes() + 1023) / 1024);
}

template<typename Key>
std::optional<QImage> cached(const QCache<Key, QImage> &cache, const Key &key)
{
    if (const QImage *image = cache.object(key))
        return *image;
    return std::nullopt;
}

template<typename Key>
void remember(QCache<Key, QImage> &cache, const Key &key, const QImage &image)
{
    // A picture larger than the whole budget is simply not kept.
    cache.insert(key, new QImage(image), costOf(image));
}

QCoro::Task<SharedLookups::Result> nothingFound()
{
    co_return SharedLookups::Result{};
}

QString defaultMusicFolder()
{
    return QStandardPaths::standardLocations(QStandardPaths::MusicLocation).value(0);
}

} // namespace

ArtworkLoader::ArtworkLoader(QObject *parent)
    : ArtworkLoader(Options{}, parent)
{
}

ArtworkLoader::ArtworkLoader(Options options, QObject *parent)
    : QObject(parent)
    , m_musicFolder(options.musicFolder.value_or(defaultMusicFolder()))
    , m_session(std::make_shared<ArtworkSession>(options.services, options.limits))
    , m_throttler(std::make_unique<RequestThrottler>(options.throttleInterval))
    , m_artworkCache(qsizetype(options.artworkCacheBytes / 1024))
    , m_trackArtworkCache(qsizetype(options.trackCacheBytes / 1024))
    , m_decodeMemo(std::make_shared<DecodeMemo>(options.decodeMemoBytes))
    , m_albumPictures(std::make_unique<AlbumPictures>(*this))
{
}

ArtworkLoader::~ArtworkLoader()
{
    m_task.cancel();
}

QString ArtworkLoader::artistKey(const QString &name)
{
    return QStringLiteral("artist:") + name;
}

QString ArtworkLoader::albumKey(const std::optional<QString> &artist, const std::optional<QString> &album)
{
    return QStringLiteral("album:") + artist.value_or(QString()) + u':' + album.value_or(QString());
}

QCoro::Task<std::optional<QImage>> ArtworkLoader::diskCopy(std::optional<QString> path)
{
    if (!path)
        co_return std::nullopt;
    auto job = QtConcurrent::run([p = *path] { return artwork::loadImageFile(p); });
    co_return co_await whenDone(this, job);
}

QCoro::Task<> ArtworkLoader::writeCopy(QImage image, std::optional<QString> path)
{
    if (!path)
        co_return;
    auto job = QtConcurrent::run([image, p = *path] { artwork::saveJPEG(image, p); });
    co_await whenDone(this, job);
}

QCoro::Task<std::optional<QImage>> ArtworkLoader::artistImage(QString name, CancelToken cancel)
{
    const OnlineChain chain = [name](online::Lookup lookup) { return online::onlineArtistImage(lookup, name); };
    co_return co_await picture(artistKey(name), artwork::artistCopyPath(m_musicFolder, name), chain, cancel);
}

QCoro::Task<std::optional<QImage>> ArtworkLoader::albumArt(std::optional<QString> artist,
                                                           std::optional<QString> album, CancelToken cancel)
{
    const OnlineChain chain = [artist, album](online::Lookup lookup) {
        return online::onlineAlbumArt(lookup, artist, album);
    };
    // Only a pair of names has a copy on disk.
    const std::optional<QString> path =
        artist && album ? artwork::albumCopyPath(m_musicFolder, *artist, *album) : std::nullopt;
    co_return co_await picture(albumKey(artist, album), path, chain, cancel);
}

QCoro::Task<std::optional<QImage>> ArtworkLoader::savedArtistImage(QString name)
{
    co_return co_await saved(artistKey(name), artwork::artistCopyPath(m_musicFolder, name));
}

QCoro::Task<std::optional<QImage>> ArtworkLoader::savedAlbumArt(std::optional<QString> artist,
                                                                std::optional<QString> album)
{
    const std::optional<QString> path =
        artist && album ? artwork::albumCopyPath(m_musicFolder, *artist, *album) : std::nullopt;
    co_return co_await saved(albumKey(artist, album), path);
}

QCoro::Task<std::optional<QImage>> ArtworkLoader::saved(QString key, std::optional<QString> path)
{
    if (std::optional<QImage> hit = cached(m_artworkCache, key))
        co_return hit;
    const QPointer<ArtworkLoader> self(this);
    std::optional<QImage> copy = co_await diskCopy(path);
    if (self && copy)
        remember(m_artworkCache, key, *copy);
    co_return copy;
}

QCoro::Task<std::optional<QImage>> ArtworkLoader::picture(QString key, std::optional<QString> path,
                                                          OnlineChain chain, CancelToken cancel)
{
    if (std::optional<QImage> hit = cached(m_artworkCache, key))
        co_return hit;
    const QPointer<ArtworkLoader> self(this);
    const SharedLookups::Start start = [self, key, path, chain](CancelToken shared) {
        return self ? self->lookUp(key, path, chain, shared) : nothingFound();
    };
    co_return co_await m_lookups.join(key, start, cancel);
}

QCoro::Task<SharedLookups::Result> ArtworkLoader::lookUp(QString key, std::optional<QString> path,
                                                         OnlineChain chain, CancelToken cancel)
{
    const QPointer<ArtworkLoader> self(this);
    if (std::optional<QImage> copy = co_await diskCopy(path)) {
        remember(m_artworkCache, key, *copy);
        co_return SharedLookups::Result{copy, true};
    }

    co_await artwork::sleepFor(m_throttler->reserveSlot(), cancel);
    if (!self || cancel.isCancelled())
        co_return SharedLookups::Result{};

    const online::Lookup lookup{m_session, cancel};
    std::optional<QImage> image = co_await chain(lookup);
    if (!self || !image)
        co_return SharedLookups::Result{std::nullopt, lookup.wasAnswered()};
    remember(m_artworkCache, key, *image);
    co_await writeCopy(*image, path);
    co_return SharedLookups::Result{image, true};
}

QCoro::Task<std::optional<QImage>> ArtworkLoader::trackArtwork(QUrl file, bool inside)
{
    if (std::optional<QImage> hit = cached(m_trackArtworkCache, file))
        co_return hit;
    if (!file.isLocalFile())
        co_return std::nullopt;

    const QString path = localpath::pathOf(file);
    auto job = QtConcurrent::run([path, inside, memo = m_decodeMemo]() -> std::optional<QImage> {
        // The folder's picture wins over the one inside the file.
        if (std::optional<QImage> folder = artwork::folderImage(QFileInfo(path).absolutePath(), memo.get()))
            return folder;
        if (!inside)
            return std::nullopt;
        if (std::optional<QByteArray> embedded = readEmbeddedArtwork(path))
            return memo->decode(*embedded);
        return std::nullopt;
    });
    std::optional<QImage> image = co_await whenDone(this, job);
    if (image)
        remember(m_trackArtworkCache, file, *image);
    co_return image;
}

void ArtworkLoader::load(const Track &track)
{
    m_task.cancel();
    m_task = CancelToken::create();
    runLoad(track.url, m_task);
}

void ArtworkLoader::clear()
{
    m_task.cancel();
    m_task = CancelToken();
    setImage(std::nullopt);
}

QCoro::Task<> ArtworkLoader::runLoad(QUrl file, CancelToken cancel)
{
    const QPointer<ArtworkLoader> self(this);
    std::optional<QImage> picture = co_await trackArtwork(file);
    if (self && !picture && !cancel.isCancelled()) {
        const auto [artist, album] = co_await albumNames(file);
        if (self && !cancel.isCancelled())
            picture = co_await savedAlbumArt(artist, album);
        // Not the previous song's picture while the album is looked up online.
        if (self && !picture && !cancel.isCancelled()) {
            setImage(std::nullopt);
            picture = co_await albumArt(artist, album, cancel);
        }
    }
    if (!self)
        co_return;
    if (picture && !cancel.isCancelled())
        setImage(std::move(picture));
    Q_EMIT loadFinished();
}

QCoro::Task<std::optional<QImage>> ArtworkLoader::songPicture(QUrl file, std::optional<QString> artist,
                                                              std::optional<QString> album, CancelToken cancel)
{
    if (std::optional<QImage> own = co_await trackArtwork(file))
        co_return own;
    if (!artist || !album) {
        const auto [tagArtist, tagAlbum] = co_await albumNames(file);
        if (cancel.isCancelled())
            co_return std::nullopt;
        artist = artist.value_or(tagArtist);
        album = album.value_or(tagAlbum);
    }
    co_return co_await albumArt(artist, album, cancel);
}

QCoro::Task<std::pair<QString, QString>> ArtworkLoader::albumNames(QUrl file)
{
    const QString path = localpath::pathOf(file);
    auto job = QtConcurrent::run([path] { return readMetadata(path); });
    const TrackMetadata tags = co_await whenDone(this, job);
    // A song without artist or album tag is looked up with its title (or its
    // file name) in their place.
    const QString fallback = text::nonEmptyTrimmed(tags.title).value_or(text::displayName(path));
    co_return std::pair{text::nonEmptyTrimmed(tags.artist).value_or(fallback),
                        text::nonEmptyTrimmed(tags.album).value_or(fallback)};
}

void ArtworkLoader::setImage(std::optional<QImage> image)
{
    // The same cached picture again (another song of the album) is no change.
    const auto keyOf = [](const std::optional<QImage> &i) { return i ? i->cacheKey() : 0; };
    if (m_image.has_value() == image.has_value() && keyOf(m_image) == keyOf(image))
        return;
    m_image = std::move(image);
    ++m_imageSerial;
    qCDebug(lcArtwork) << "the playing song's picture is now" << (m_image ? m_image->size() : QSize());
    Q_EMIT imageChanged();
}

QString ArtworkLoader::imageSource() const
{
    if (!m_image)
        return {};
    return QStringLiteral("image://artwork/playing/") + QString::number(m_imageSerial);
}

void ArtworkLoader::clearMemoryCaches()
{
    m_artworkCache.clear();
    m_trackArtworkCache.clear();
    m_decodeMemo->clear();
}

qint64 ArtworkLoader::memoryCacheBytes() const
{
    return qint64(m_artworkCache.totalCost() + m_trackArtworkCache.totalCost()) * 1024 + m_decodeMemo->bytes();
}
