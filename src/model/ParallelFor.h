// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSemaphore>
#include <QThreadPool>

#include <algorithm>
#include <atomic>

// Calls work(i) for every i in [0, count), on the calling thread and on as
// many of the pool's threads as are free, and returns once every call has
// returned. Items are taken one at a time, so uneven work spreads itself.
// Blocking: never call it from the GUI thread. A pool thread that isn't free
// at once is not waited for, so a task of the pool may call it on its own pool.
template<typename Work> void parallelFor(QThreadPool &pool, qsizetype count, Work &&work)
{
    std::atomic<qsizetype> next = 0;
    const auto drain = [&] {
        for (qsizetype i = next++; i < count; i = next++)
            work(i);
    };
    QSemaphore finished;
    int helpers = 0;
    const qsizetype wanted = std::min<qsizetype>(count, pool.maxThreadCount()) - 1;
    for (qsizetype h = 0; h < wanted; ++h) {
        if (!pool.tryStart([&] {
                drain();
                finished.release();
            }))
            break;
        ++helpers;
    }
    drain();
    finished.acquire(helpers);
}
