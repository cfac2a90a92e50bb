// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "LibraryImport.h"
#include "artwork/CancelToken.h"
#include "model/Track.h"

#include <QFutureWatcher>
#include <QObject>
#include <QThreadPool>

#include <QCoro/QCoroTask>

class ArtworkLoader;

// Asks for the pictures of new songs before anyone looks at them, so that the
// artists grid and the albums show them at once.
//
//   start(songs) ─ tags on a low-priority pool ─► PrefetchPlan ─► planned()
//     ─► every artist's picture, then every album's (ArtworkLoader; online
//        lookups paced by its throttler)
//
// At most one prefetch is current: a new start() cancels the tag reads and the
// lookups of the previous one.
class ArtworkPrefetch : public QObject
{
    Q_OBJECT

public:
    explicit ArtworkPrefetch(ArtworkLoader &loader, QObject *parent = nullptr);
    ~ArtworkPrefetch() override;

    void start(const QList<Track> &songs);

Q_SIGNALS:
    // The tags are read; these pictures are asked for.
    void planned(const QStringList &artists, int albumCount);

private:
    using Tags = std::pair<std::optional<QString>, std::optional<QString>>;
    void cancelTagReads();
    QCoro::Task<> fetch(import::PrefetchPlan plan, CancelToken cancel);

    ArtworkLoader &m_loader;
    QThreadPool m_pool;
    QFutureWatcher<Tags> *m_tagReads = nullptr;
    CancelToken m_lookups;
};
