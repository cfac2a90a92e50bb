// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "LibraryImport.h"
#include "artwork/CancelToken.h"
#include "browse/TrackEntries.h"

#include <QFutureWatcher>
#include <QSet>
#include <QObject>
#include <QThreadPool>

#include <QCoro/QCoroTask>

class ArtworkLoader;

// Asks for the pictures of new songs before anyone looks at them, so that the
// artists grid and the albums show them at once.
//
//   start(index entries of new songs: their tags were read once, by the index)
//     ─ low-priority pool ─► PrefetchPlan ─► only what no earlier start asked
//     for ─► planned() ─► every artist's picture, then every album's
//        (ArtworkLoader; online lookups paced by its throttler)
//
// Starts add up: a later one never cancels the lookups of an earlier one.
class ArtworkPrefetch : public QObject
{
    Q_OBJECT

public:
    explicit ArtworkPrefetch(ArtworkLoader &loader, QObject *parent = nullptr);
    ~ArtworkPrefetch() override;

    // The pictures of songs[from] and the songs after it (the list is shared,
    // not copied: the new songs of a large import stay where they are).
    void start(const TrackEntries &songs, qsizetype from = 0);

Q_SIGNALS:
    // These pictures are asked for.
    void planned(const QStringList &artists, int albumCount);

private:
    void ask(const import::PrefetchPlan &plan);
    QCoro::Task<> fetch(QStringList artists, QList<import::PrefetchPlan::Album> albums, CancelToken cancel);

    ArtworkLoader &m_loader;
    QThreadPool m_pool;
    CancelToken m_lookups = CancelToken::create();
    QSet<QString> m_askedArtists;
    QSet<std::pair<QString, QString>> m_askedAlbums;
};
