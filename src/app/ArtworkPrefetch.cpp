// SPDX-License-Identifier: GPL-3.0-or-later
#include "ArtworkPrefetch.h"

#include "artwork/ArtworkLoader.h"
#include "model/Log.h"

#include <QPointer>
#include <QtConcurrent>

ArtworkPrefetch::ArtworkPrefetch(ArtworkLoader &loader, QObject *parent)
    : QObject(parent)
    , m_loader(loader)
{
    // Prefetch work yields to everything else: the GUI thread, the index build
    // and tag reads for what is on screen.
    m_pool.setThreadPriority(QThread::LowPriority);
    m_pool.setMaxThreadCount(std::max(1, QThread::idealThreadCount() - 1));
}

ArtworkPrefetch::~ArtworkPrefetch()
{
    m_lookups.cancel();
    m_pool.clear();
    m_pool.waitForDone();
}

void ArtworkPrefetch::start(const TrackEntries &songs, qsizetype from)
{
    // A watcher rather than QFuture::then(): its signal does not outlive this object.
    auto *watcher = new QFutureWatcher<import::PrefetchPlan>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher] {
        watcher->deleteLater();
        ask(watcher->result());
    });
    watcher->setFuture(QtConcurrent::run(&m_pool, [songs, from] {
        import::PrefetchPlan plan;
        for (qsizetype i = from; i < songs.size(); ++i)
            plan.add(songs.at(i).artist, songs.at(i).album);
        return plan;
    }));
}

void ArtworkPrefetch::ask(const import::PrefetchPlan &plan)
{
    QStringList artists;
    for (const QString &artist : plan.artists()) {
        if (!m_askedArtists.contains(artist)) {
            m_askedArtists.insert(artist);
            artists.append(artist);
        }
    }
    QList<import::PrefetchPlan::Album> albums;
    for (const import::PrefetchPlan::Album &album : plan.albums()) {
        if (!m_askedAlbums.contains({album.artist, album.album})) {
            m_askedAlbums.insert({album.artist, album.album});
            albums.append(album);
        }
    }
    qCDebug(lcApp).nospace() << "artwork prefetch: " << artists.size() << " artists, " << albums.size() << " albums";
    Q_EMIT planned(artists, int(albums.size()));
    fetch(std::move(artists), std::move(albums), m_lookups);
}

QCoro::Task<> ArtworkPrefetch::fetch(QStringList artists, QList<import::PrefetchPlan::Album> albums,
                                     CancelToken cancel)
{
    // Lookups go in windows of a few at a time: the loader's throttler paces
    // the network requests anyway, and ten thousand lookups waiting at once
    // would hold ten thousand coroutines and requests in memory.
    constexpr qsizetype window = 16;
    const QPointer<ArtworkPrefetch> self(this);
    std::vector<QCoro::Task<std::optional<QImage>>> lookups;
    lookups.reserve(window);
    const auto settle = [&lookups]() -> QCoro::Task<> {
        for (auto &lookup : lookups)
            co_await lookup;
        lookups.clear();
    };
    for (qsizetype i = 0; i < artists.size(); ++i) {
        lookups.push_back(m_loader.artistImage(artists.at(i), cancel));
        if (lookups.size() == window || i + 1 == artists.size())
            co_await settle();
        if (!self || cancel.isCancelled())
            co_return;
    }
    for (qsizetype i = 0; i < albums.size(); ++i) {
        lookups.push_back(m_loader.albumArt(albums.at(i).artist, albums.at(i).album, cancel));
        if (lookups.size() == window || i + 1 == albums.size())
            co_await settle();
        if (!self || cancel.isCancelled())
            co_return;
    }
}
