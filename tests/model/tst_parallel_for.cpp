// SPDX-License-Identifier: GPL-3.0-or-later
// parallelFor: every item once, and no wait on a pool with no thread free.
#include "model/ParallelFor.h"

#include <QTest>

#include <atomic>
#include <vector>

class TestParallelFor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyItemOnce_data()
    {
        QTest::addColumn<qsizetype>("count");
        QTest::addColumn<int>("threads");
        QTest::newRow("none") << qsizetype(0) << 4;
        QTest::newRow("one") << qsizetype(1) << 4;
        QTest::newRow("more than threads") << qsizetype(10000) << 4;
        QTest::newRow("a pool of one") << qsizetype(100) << 1;
    }

    void everyItemOnce()
    {
        QFETCH(qsizetype, count);
        QFETCH(int, threads);
        QThreadPool pool;
        pool.setMaxThreadCount(threads);
        std::vector<std::atomic<int>> calls(static_cast<size_t>(count));
        parallelFor(pool, count, [&](qsizetype i) { ++calls[size_t(i)]; });
        for (qsizetype i = 0; i < count; ++i)
            QCOMPARE(calls[size_t(i)].load(), 1);
    }

    // Called from the pool's only thread: it does the work itself rather than
    // wait for a thread that can't come.
    void fromATaskOfAFullPool()
    {
        QThreadPool pool;
        pool.setMaxThreadCount(1);
        std::atomic<qsizetype> sum = 0;
        std::atomic<bool> done = false;
        pool.start([&] {
            parallelFor(pool, 100, [&](qsizetype i) { sum += i; });
            done = true;
        });
        QTRY_VERIFY_WITH_TIMEOUT(done.load(), 30000);
        QCOMPARE(sum.load(), qsizetype(4950));
    }
};

QTEST_GUILESS_MAIN(TestParallelFor)
#include "tst_parallel_for.moc"
