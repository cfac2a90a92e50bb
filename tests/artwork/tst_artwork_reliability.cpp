// SPDX-License-Identifier: GPL-3.0-or-later
// Many lookups at once, and a server that never answers.
#include "ArtworkTestUtil.h"
#include "artwork/ArtworkLoader.h"

#include <QCoro/QCoroTask>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <algorithm>

using namespace artworktest;
using namespace std::chrono_literals;

namespace {

// Resident memory of this process in KiB, from /proc.
qint64 residentKiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}

} // namespace

class TestArtworkReliability : public QObject
{
    Q_OBJECT

    FakeWebServer m_server;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(!qEnvironmentVariableIsEmpty("TARNWELL_TEST_ROOT"), "run me through tests/support/isolated.sh");
        QVERIFY(m_server.start());
    }

    void init()
    {
        m_server.reset();
        m_server.clearRequests();
    }

    // 300 lookups started at once (an import's prefetch) all finish, each
    // starting no earlier than the slot the throttler booked for it, with the
    // memory caches inside their budget. The interval is shortened so the test
    // takes seconds, not five minutes; the spacing at the real interval is
    // checked in tst_artwork_loader.
    void threeHundredLookupsAtOnce()
    {
        const QByteArray picture = FakeWebServer::png(FakeWebServer::solidImage(Qt::darkCyan, QSize(300, 300)));
        const QString thumb = m_server.serviceUrl(QStringLiteral("upload")) + QStringLiteral("/t.png");
        m_server.on(QStringLiteral("wiki"), [thumb](const FakeWebServer::Request &) {
            return FakeWebServer::json(FakeWebServer::pageImages(thumb));
        });
        m_server.on(QStringLiteral("upload"), [picture](const FakeWebServer::Request &) {
            return FakeWebServer::image(picture);
        });
        m_server.on(QStringLiteral("mb"), [](const FakeWebServer::Request &) {
            return FakeWebServer::json(FakeWebServer::releases({QStringLiteral("r")}));
        });
        m_server.on(QStringLiteral("caa"), [picture](const FakeWebServer::Request &) {
            return FakeWebServer::image(picture);
        });

        const auto interval = 40ms;
        ArtworkLoader::Options o;
        o.services = servicesOf(m_server);
        o.throttleInterval = interval;
        o.artworkCacheBytes = 8 << 20;
        ArtworkLoader loader(o);
        // The very first request also sets up the session; keep that out of the spacing.
        QVERIFY(QCoro::waitFor(loader.artistImage(QStringLiteral("Warm-up"))));
        m_server.clearRequests();
        const qint64 rssBefore = residentKiB();

        int found = 0;
        int finished = 0;
        const auto tally = [&](const std::optional<QImage> &image) {
            ++finished;
            found += image ? 1 : 0;
        };
        for (int i = 0; i < 150; ++i) {
            QCoro::connect(loader.artistImage(QStringLiteral("Artist %1").arg(i)), this, tally);
            QCoro::connect(loader.albumArt(QStringLiteral("Artist %1").arg(i), QStringLiteral("Album %1").arg(i)), this,
                           tally);
        }
        QTRY_COMPARE_WITH_TIMEOUT(finished, 300, 60000);
        QCOMPARE(found, 300);

        QList<double> starts;
        for (const FakeWebServer::Request &r : m_server.requests()) {
            if (r.service == u"wiki" || r.service == u"mb")
                starts.append(r.time);
        }
        QCOMPARE(starts.size(), 300);
        QCOMPARE(m_server.requestsFor(QStringLiteral("caa")).size(), 150);
        std::sort(starts.begin(), starts.end());
        const double step = std::chrono::duration<double>(interval).count();
        for (int k = 1; k < starts.size(); ++k) {
            // Never before its booked slot. A request leaves through the busy
            // event loop, which delays some (the first among them) by a few ms.
            QVERIFY2(starts[k] - starts[0] >= k * step - 0.015, qPrintable(QString::number(k)));
        }
        // ...and not held back for long either.
        QVERIFY2(starts.last() - starts.first() < 299 * step + 2.0, qPrintable(QString::number(starts.last() - starts.first())));

        QVERIFY(loader.memoryCacheBytes() <= 8 << 20);
        QVERIFY(loader.memoryCacheBytes() > 0);
        const qint64 grown = residentKiB() - rssBefore;
        qInfo() << "resident memory grew by" << grown / 1024 << "MiB";
#ifndef __SANITIZE_ADDRESS__ // the sanitizer keeps freed memory in quarantine
        QVERIFY2(grown < 128 * 1024, qPrintable(QString::number(grown)));
#endif
    }

    // A service that accepts the connection and then says nothing costs each
    // request its 15 s time-out, after which the chain takes its fallback.
    void serverThatNeverAnswers()
    {
        m_server.on(QStringLiteral("wiki"), [](const FakeWebServer::Request &) { return FakeWebServer::neverAnswer(); });
        m_server.on(QStringLiteral("mb"), [](const FakeWebServer::Request &) { return FakeWebServer::neverAnswer(); });
        m_server.on(QStringLiteral("commons"), [](const FakeWebServer::Request &) {
            return FakeWebServer::json(FakeWebServer::searchResults({}));
        });
        ArtworkLoader::Options o;
        o.services = servicesOf(m_server);
        ArtworkLoader loader(o);
        QCOMPARE(loader.session()->limits().timeout, 15000ms);

        QElapsedTimer clock;
        clock.start();
        qint64 artistDone = 0;
        qint64 albumDone = 0;
        QCoro::connect(loader.artistImage(QStringLiteral("Low")), this, [&](const std::optional<QImage> &image) {
            QVERIFY(!image);
            artistDone = clock.elapsed();
        });
        QCoro::connect(loader.albumArt(QStringLiteral("Low"), QStringLiteral("Tide")), this,
                       [&](const std::optional<QImage> &image) {
                           QVERIFY(!image);
                           albumDone = clock.elapsed();
                       });
        QTRY_VERIFY_WITH_TIMEOUT(artistDone > 0 && albumDone > 0, 25000);
        qInfo() << "artist lookup" << artistDone << "ms, album lookup" << albumDone << "ms";
        // Whichever got the first slot gives up after 15 s; the other starts a
        // throttle interval later and gives up 15 s after that.
        const qint64 first = std::min(artistDone, albumDone);
        const qint64 second = std::max(artistDone, albumDone);
        QVERIFY(first >= 15000 && first < 15800);
        QVERIFY(second >= 16000 && second < 16800);
        QCOMPARE(m_server.requestsFor(QStringLiteral("commons")).size(), 2);
        // The silent connections were given up.
        QTRY_COMPARE(m_server.openConnections(), 0);
    }
};

QTEST_GUILESS_MAIN(TestArtworkReliability)
#include "tst_artwork_reliability.moc"
