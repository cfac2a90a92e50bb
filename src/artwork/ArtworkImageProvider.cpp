// SPDX-License-Identifier: GPL-3.0-or-later
#include "ArtworkImageProvider.h"

#include "AlbumPictures.h"
#include "ArtworkLoader.h"
#include "ArtworkSource.h"
#include "Coro.h"
#include "DrawnPictures.h"
#include "model/LocalPath.h"

#include <QMutex>
#include <QQuickImageResponse>
#include <QQuickTextureFactory>

namespace {

class ArtworkImageResponse;

// What the response (on the engine's reader thread) and the lookup (on the GUI
// thread) share. The response may be deleted by the engine at any time after
// it has finished, or when the engine goes away; the lookup reaches it only
// through here.
struct Exchange
{
    QMutex mutex;
    ArtworkImageResponse *response = nullptr;
    bool cancelled = false;
    CancelToken token; // made on the GUI thread once the lookup starts

    void cancel()
    {
        QMutexLocker lock(&mutex);
        cancelled = true;
        token.cancel();
    }
    void finish(const QImage &image);
};

class ArtworkImageResponse : public QQuickImageResponse
{
public:
    explicit ArtworkImageResponse(std::shared_ptr<Exchange> exchange)
        : m_exchange(std::move(exchange))
    {
        m_exchange->response = this;
    }

    ~ArtworkImageResponse() override
    {
        QMutexLocker lock(&m_exchange->mutex);
        m_exchange->response = nullptr;
    }

    QQuickTextureFactory *textureFactory() const override
    {
        QMutexLocker lock(&m_exchange->mutex);
        return QQuickTextureFactory::textureFactoryForImage(m_image);
    }

    QString errorString() const override
    {
        QMutexLocker lock(&m_exchange->mutex);
        return m_image.isNull() ? QStringLiteral("no picture") : QString();
    }

    void cancel() override { m_exchange->cancel(); }

    // Called with the exchange's mutex held.
    void deliver(const QImage &image)
    {
        m_image = image;
        Q_EMIT finished();
    }

private:
    std::shared_ptr<Exchange> m_exchange;
    QImage m_image;
};

void Exchange::finish(const QImage &image)
{
    QMutexLocker lock(&mutex);
    // Held while emitting, so the engine can't delete the response meanwhile;
    // the engine receives the signal on its own thread, later.
    if (response)
        response->deliver(image);
}

QCoro::Task<std::optional<QImage>> find(ArtworkLoader *loader, artworksource::Request request,
                                         CancelToken cancel)
{
    switch (request.kind) {
    case artworksource::Request::Track: {
        const QUrl file = localpath::fileUrl(request.path);
        std::optional<QImage> own = co_await loader->trackArtwork(file);
        if (own || !request.album)
            co_return own;
        co_return co_await loader->albumArt(request.artist, request.album, cancel);
    }
    case artworksource::Request::Album:
        co_return co_await loader->albumPictures().album(request.artist, request.album, cancel);
    case artworksource::Request::Artist:
        co_return co_await loader->albumPictures().artist(request.artist.value_or(QString()), cancel);
    case artworksource::Request::Playing:
        co_return loader->image();
    }
    co_return std::nullopt;
}

QCoro::Task<> serve(ArtworkLoader *loader, artworksource::Request request, QSize size,
                    std::shared_ptr<Exchange> exchange)
{
    CancelToken cancel = CancelToken::create();
    {
        QMutexLocker lock(&exchange->mutex);
        exchange->token = cancel;
        if (exchange->cancelled)
            cancel.cancel();
    }
    const std::optional<QImage> image = co_await find(loader, request, cancel);
    if (!image || cancel.isCancelled()) {
        exchange->finish(QImage());
        co_return;
    }
    auto job = QtConcurrent::run([picture = *image, size, backdrop = request.backdrop] {
        if (backdrop)
            return drawn::backdrop(picture, backdrop->top, backdrop->bottom, artworksource::backdropStrength);
        return ArtworkImageProvider::scaledForRequest(picture, size);
    });
    const QImage scaled = co_await artwork::whenDone(nullptr, job);
    exchange->finish(scaled);
}

} // namespace

ArtworkImageProvider::ArtworkImageProvider(ArtworkLoader *loader)
    : m_loader(loader)
{
}

QQuickImageResponse *ArtworkImageProvider::requestImageResponse(const QString &id, const QSize &requestedSize)
{
    auto exchange = std::make_shared<Exchange>();
    auto *response = new ArtworkImageResponse(exchange);
    const std::optional<artworksource::Request> request = artworksource::parse(id);
    ArtworkLoader *loader = m_loader.data();
    if (!request || !loader) {
        exchange->finish(QImage());
        return response;
    }
    QMetaObject::invokeMethod(
        loader, [loader, request = *request, requestedSize, exchange] { serve(loader, request, requestedSize, exchange); },
        Qt::QueuedConnection);
    return response;
}

QImage ArtworkImageProvider::scaledForRequest(const QImage &image, const QSize &requestedSize)
{
    const int w = requestedSize.width();
    const int h = requestedSize.height();
    if (image.isNull() || (w <= 0 && h <= 0))
        return image;
    QSize target = image.size();
    if (w > 0 && h > 0)
        target.scale(requestedSize, Qt::KeepAspectRatioByExpanding);
    else if (w > 0)
        target = QSize(w, std::max(1, int(qint64(image.height()) * w / image.width())));
    else
        target = QSize(std::max(1, int(qint64(image.width()) * h / image.height())), h);
    if (target.width() >= image.width() || target.height() >= image.height())
        return image;
    return image.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}
