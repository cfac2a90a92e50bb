// SPDX-License-Identifier: GPL-3.0-or-later
#include "ArtworkPrefetch.h"

#include "artwork/ArtworkLoader.h"
#include "model/Log.h"
#include "tags/TagReader.h"

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
    cancelTagReads();
    m_pool.clear();
    m_pool.waitForDone();
}

void ArtworkPrefetch::start(const QList<Track> &songs)
{
    cancelTagReads();
    QStringList paths;
    paths.reserve(songs.size());
    for (const Track &song : songs)
        paths.append(song.path());

    // A watcher rather than QFuture::then(): this Qt frees a mapped future's
    // state under a continuation that still refers to it.
    m_tagReads = new QFutureWatcher<Tags>(this);
    QFutureWatcher<Tags> *watcher = m_tagReads;
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher] {
        watcher->deleteLater();
        if (watcher != m_tagReads || watcher->isCanceled())
            return;
        m_tagReads = nullptr;
        import::PrefetchPlan plan;
        for (const Tags &tags : watcher->future().results())
            plan.add(tags.first, tags.second);
        qCDebug(lcApp).nospace() << "artwork prefetch: " << plan.artists().size() << " artists, "
                                 << plan.albums().size() << " albums";
        Q_EMIT planned(plan.artists(), int(plan.albums().size()));
        m_lookups.cancel();
        m_lookups = CancelToken::create();
        fetch(plan, m_lookups);
    });
    watcher->setFuture(QtConcurrent::mapped(&m_pool, std::move(paths), [](const QString &path) {
        const TrackMetadata meta = readMetadata(path);
        return Tags{meta.artist, meta.album};
    }));
}

void ArtworkPrefetch::cancelTagReads()
{
    if (!m_tagReads)
        return;
    m_tagReads->cancel();
    m_tagReads->deleteLater();
    m_tagReads = nullptr;
}

QCoro::Task<> ArtworkPrefetch::fetch(import::PrefetchPlan plan, CancelToken cancel)
{
    // Every lookup of a phase is started at once; the loader's throttler sets
    // the pace of the network requests. The next phase waits for all of them.
    const QPointer<ArtworkPrefetch> self(this);
    std::vector<QCoro::Task<std::optional<QImage>>> lookups;
    lookups.reserve(plan.artists().size());
    for (const QString &artist : plan.artists())
        lookups.push_back(m_loader.artistImage(artist, cancel));
    for (auto &lookup : lookups)
        co_await lookup;
    if (!self || cancel.isCancelled())
        co_return;
    lookups.clear();
    lookups.reserve(plan.albums().size());
    for (const import::PrefetchPlan::Album &album : plan.albums())
        lookups.push_back(m_loader.albumArt(album.artist, album.album, cancel));
    for (auto &lookup : lookups)
        co_await lookup;
}
