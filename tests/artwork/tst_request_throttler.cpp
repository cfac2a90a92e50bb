// SPDX-License-Identifier: GPL-3.0-or-later
#include "artwork/RequestThrottler.h"

#include <QTest>
#include <QThread>

#include <algorithm>
#include <mutex>
#include <vector>

using namespace std::chrono;
using namespace std::chrono_literals;

class TestRequestThrottler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void burstOfThreeWaitsZeroOneTwoSeconds()
    {
        RequestThrottler throttler;
        const double a = duration<double>(throttler.reserveSlot()).count();
        const double b = duration<double>(throttler.reserveSlot()).count();
        const double c = duration<double>(throttler.reserveSlot()).count();
        QCOMPARE(a, 0.0);
        QVERIFY(qAbs(b - 1.0) < 0.02);
        QVERIFY(qAbs(c - 2.0) < 0.02);
    }

    void aFreeSlotStartsAtOnce()
    {
        RequestThrottler throttler(50ms);
        QCOMPARE(throttler.reserveSlot(), 0ns);
        QThread::msleep(80);
        QCOMPARE(throttler.reserveSlot(), 0ns);
        // The booking just made is still ahead: the next one waits for it.
        QVERIFY(throttler.reserveSlot() > 40ms);
    }

    // Bookings from many threads at once each get their own instant, one
    // interval after another, with none lost or doubled. (Nothing sleeps: the
    // waits are only added up. The long interval makes the time a call takes
    // negligible when the instants are measured from outside.)
    void bookingsAreAtomic()
    {
        const auto interval = 1s;
        RequestThrottler throttler(interval);
        std::mutex mutex;
        std::vector<steady_clock::time_point> starts;
        std::vector<QThread *> threads;
        for (int t = 0; t < 4; ++t) {
            threads.push_back(QThread::create([&] {
                for (int i = 0; i < 100; ++i) {
                    const auto wait = throttler.reserveSlot();
                    const auto now = steady_clock::now();
                    std::lock_guard lock(mutex);
                    starts.push_back(now + wait);
                }
            }));
            threads.back()->start();
        }
        for (QThread *t : threads) {
            QVERIFY(t->wait(10000));
            delete t;
        }
        QCOMPARE(starts.size(), size_t(400));
        std::sort(starts.begin(), starts.end());
        // Measured from outside, each instant is off by the time the call took.
        for (size_t i = 1; i < starts.size(); ++i) {
            const auto step = starts[i] - starts[i - 1];
            QVERIFY2(step > interval - 50ms && step < interval + 50ms,
                     qPrintable(QString::number(duration<double, std::milli>(step).count())));
        }
    }
};

QTEST_GUILESS_MAIN(TestRequestThrottler)
#include "tst_request_throttler.moc"
