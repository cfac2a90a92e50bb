// SPDX-License-Identifier: GPL-3.0-or-later
// The artwork service: disk copies under the Music folder, lookups shared and
// misses remembered, the throttle across lookups, and the playing song's picture.
#include "ArtworkTestUtil.h"
#include "artwork/ArtworkLoader.h"
#include "artwork/ImageCodec.h"
#include "support/TestSupport.h"

#include <QCoro/QCoroTask>
#include <QDir>
#include <QDirIterator>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace artworktest;
using namespace std::chrono_literals;
using testsupport::writeFile;
using OptionalText = std::optional<QString>;

namespace {

const QColor red(220, 20, 20), green(20, 200, 40), blue(30, 40, 230);

QByteArray jpegOf(const QColor &c) { return FakeWebServer::jpeg(FakeWebServer::solidImage(c)); }
QString musicFolder() { return QStandardPaths::standardLocations(QStandardPaths::MusicLocation).value(0); }

QStringList filesBelow(const QString &root)
{
    QStringList out;
    QDirIterator it(root, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        out.append(QDir(root).relativeFilePath(it.next()));
    out.sort();
    return out;
}

} // namespace

class TestArtworkLoader : public QObject
{
    Q_OBJECT

    FakeWebServer m_server;
    QTemporaryDir m_songs;

    ArtworkLoader::Options options(std::chrono::nanoseconds interval = 10ms)
    {
        ArtworkLoader::Options o;
        o.services = servicesOf(m_server);
        o.throttleInterval = interval;
        return o;
    }

    // Wikipedia has a red thumbnail for every artist; MusicBrainz knows no
    // release and Commons has a green picture for every album.
    void servicesHavePictures()
    {
        using S = FakeWebServer;
        const QString upload = m_server.serviceUrl(QStringLiteral("upload"));
        m_server.on(QStringLiteral("wiki"), [upload](const S::Request &) { return S::json(S::pageImages(upload + "/red.png")); });
        m_server.on(QStringLiteral("mb"), [](const S::Request &) { return S::json(S::releases({})); });
        m_server.on(QStringLiteral("commons"), [upload](const S::Request &r) {
            return S::json(r.pathAndQuery.contains("list=search") ? S::searchResults({QStringLiteral("File:Cover.png")})
                                                                  : S::imageInfo(upload + "/green.png"));
        });
        m_server.on(QStringLiteral("upload"), [](const S::Request &r) {
            return S::image(S::png(S::solidImage(r.pathAndQuery == "/red.png" ? red : green)));
        });
    }

    // The lookups that went online: one Wikipedia or MusicBrainz request each.
    int lookupsAsked() const
    {
        const QList<FakeWebServer::Request> sent = m_server.requests();
        return int(std::count_if(sent.begin(), sent.end(), [](const auto &r) { return r.service == u"wiki" || r.service == u"mb"; }));
    }

private Q_SLOTS:
    void initTestCase()
    {
        // The tests empty the Music folder: never the user's own.
        QVERIFY2(!qEnvironmentVariableIsEmpty("TARNWELL_TEST_ROOT"), "run me through tests/support/isolated.sh");
        QVERIFY(!musicFolder().isEmpty());
    }

    void init()
    {
        QVERIFY(m_server.start());
        m_server.reset();
        QDir(musicFolder()).removeRecursively();
        QDir().mkpath(musicFolder());
    }

    // Found online, written as JPEG under Music, found there by a new loader
    // without the network. Without an artist an album has no copy at all.
    void diskCopies()
    {
        servicesHavePictures();
        writeFile(musicFolder(), QStringLiteral("Low Tide/folder.jpg"), jpegOf(blue));
        {
            ArtworkLoader loader(options());
            QVERIFY(looksLike(QCoro::waitFor(loader.artistImage(QStringLiteral("Day/Night"))), red, 0));
            QVERIFY(looksLike(QCoro::waitFor(loader.albumArt(QStringLiteral("Q"), QStringLiteral("Low: Tide"))), green, 0));
            QVERIFY(looksLike(QCoro::waitFor(loader.albumArt(std::nullopt, QStringLiteral("Low Tide"))), green, 0));
        }
        QCOMPARE(filesBelow(musicFolder()),
                 (QStringList{"Day-Night/artist.jpg", "Low Tide/folder.jpg", "Q/Low- Tide/folder.jpg"}));
        m_server.stop();
        ArtworkLoader fresh(options());
        QVERIFY(looksLike(QCoro::waitFor(fresh.artistImage(QStringLiteral("Day/Night"))), red));
        QVERIFY(looksLike(QCoro::waitFor(fresh.albumArt(QStringLiteral("Q"), QStringLiteral("Low: Tide"))), green));
        QCOMPARE(lookupsAsked(), 3);
    }

    // No tag value makes the program read or write outside the Music folder.
    void namesThatAreNoFolder_data()
    {
        QTest::addColumn<QString>("artist");
        QTest::addColumn<OptionalText>("album");
        QTest::newRow("artist ..") << QStringLiteral("..") << OptionalText();
        QTest::newRow("artist of invisibles") << QStringLiteral(" \u202e\n") << OptionalText();
        QTest::newRow("album . of ..") << QStringLiteral("..") << OptionalText(QStringLiteral("."));
    }

    void namesThatAreNoFolder()
    {
        QFETCH(QString, artist);
        QFETCH(OptionalText, album);
        servicesHavePictures();
        const QString root = qEnvironmentVariable("TARNWELL_TEST_ROOT");
        for (const QString &dir : {QDir::homePath(), musicFolder(), musicFolder() + QStringLiteral("/Low")}) {
            writeFile(dir, QStringLiteral("artist.jpg"), jpegOf(blue));
            writeFile(dir, QStringLiteral("folder.jpg"), jpegOf(blue));
        }
        const QStringList before = filesBelow(root);

        ArtworkLoader loader(options());
        const std::optional<QImage> image = album ? QCoro::waitFor(loader.albumArt(artist, album))
                                                  : QCoro::waitFor(loader.artistImage(artist));
        QVERIFY(image && !looksLike(image, blue)); // from the network, and returned all the same
        QCOMPARE(filesBelow(root), before);
    }

    // Requests for a picture being looked up wait for that lookup: the web
    // hears of each name once, however many ask. Lookups start a throttle
    // interval apart, album and artist lookups alike.
    void lookupsAreShared()
    {
        servicesHavePictures();
        ArtworkLoader loader(options(200ms));
        int found = 0;
        const auto count = [&found](const std::optional<QImage> &image) { found += image ? 1 : 0; };
        const double before = m_server.now();
        for (int i = 0; i < 3; ++i) {
            for (int n = 0; n < 10; ++n) {
                QCoro::connect(loader.artistImage(QStringLiteral("Artist %1").arg(n)), this, count);
                QCoro::connect(loader.albumArt(QStringLiteral("Artist %1").arg(n), QStringLiteral("Album")), this, count);
            }
        }
        QTRY_COMPARE_WITH_TIMEOUT(found, 60, 60000);
        QCOMPARE(lookupsAsked(), 20);
        // None starts before its slot: the k-th no sooner than k intervals
        // after the first could have.
        int k = 0;
        for (const FakeWebServer::Request &r : m_server.requests()) {
            if (r.service == u"mb" || r.service == u"wiki")
                QVERIFY(r.time >= before + 0.2 * k++);
        }
        // One request gives up; the others still get the picture it started.
        m_server.reset();
        servicesHavePictures();
        const CancelToken leaving = CancelToken::create();
        std::optional<QImage> stayed;
        QCoro::connect(loader.artistImage(QStringLiteral("New"), leaving), this, [](const auto &) {});
        QCoro::connect(loader.artistImage(QStringLiteral("New")), this, [&stayed](const auto &i) { stayed = i; });
        leaving.cancel();
        QTRY_VERIFY_WITH_TIMEOUT(looksLike(stayed, red, 0), 60000);
        QCOMPARE(lookupsAsked(), 1);
    }

    // When every request for it is cancelled while it waits for its slot, the
    // lookup sends nothing and leaves nothing.
    void cancelledByAllItsRequests()
    {
        servicesHavePictures();
        ArtworkLoader loader(options(1s));
        loader.throttler().reserveSlot(); // the next lookup waits about a second
        const CancelToken a = CancelToken::create();
        const CancelToken b = CancelToken::create();
        int finished = 0;
        QCoro::connect(loader.artistImage(QStringLiteral("Low"), a), this, [&](const auto &i) { finished += !i; });
        QCoro::connect(loader.artistImage(QStringLiteral("Low"), b), this, [&](const auto &i) { finished += !i; });
        a.cancel();
        b.cancel();
        QCOMPARE(finished, 2);
        QTRY_COMPARE_WITH_TIMEOUT(loader.lookupsInFlight(), 0, 60000);
        QCOMPARE(m_server.requests().size(), 0);
        QCOMPARE(filesBelow(musicFolder()), QStringList());
        // The next request starts afresh.
        QVERIFY(looksLike(QCoro::waitFor(loader.artistImage(QStringLiteral("Low"))), red, 0));
    }

    // A name the services had nothing for is not asked again; one they could
    // not be asked about is.
    void missesRemembered()
    {
        ArtworkLoader loader(options());
        QVERIFY(!QCoro::waitFor(loader.artistImage(QStringLiteral("Nobody"))));
        QVERIFY(!QCoro::waitFor(loader.albumArt(QStringLiteral("Nobody"), QStringLiteral("Nothing"))));
        const qsizetype asked = m_server.requests().size();
        servicesHavePictures();
        QVERIFY(!QCoro::waitFor(loader.artistImage(QStringLiteral("Nobody"))));
        QVERIFY(!QCoro::waitFor(loader.albumArt(QStringLiteral("Nobody"), QStringLiteral("Nothing"))));
        QCOMPARE(m_server.requests().size(), asked);

        m_server.stop();
        QVERIFY(!QCoro::waitFor(loader.artistImage(QStringLiteral("Offline"))));
        QVERIFY(m_server.start());
        QVERIFY(looksLike(QCoro::waitFor(loader.artistImage(QStringLiteral("Offline"))), red, 0));
    }

    void playingPicture()
    {
        servicesHavePictures();
        writeFile(m_songs.path(), QStringLiteral("one/cover.jpg"), jpegOf(blue));
        const auto track = [this](const char *path) {
            return Track::create(QUrl::fromLocalFile(writeFile(m_songs.path(), QString::fromUtf8(path), "x")));
        };
        ArtworkLoader loader(options(1s));
        QSignalSpy changed(&loader, &ArtworkLoader::imageChanged);
        QSignalSpy finished(&loader, &ArtworkLoader::loadFinished);

        loader.load(track("one/a.mp3"));
        QVERIFY(finished.wait(60000));
        QVERIFY(looksLike(loader.image(), blue));
        QCOMPARE(loader.imageSource(), QStringLiteral("image://artwork/playing/1"));

        // A newer load cancels one waiting for its slot; nothing goes out.
        loader.throttler().reserveSlot();
        loader.load(track("two/Quiet Song.mp3"));
        loader.load(track("one/b.mp3"));
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 3, 60000);
        QCOMPARE(m_server.requests().size(), 0);
        QCOMPARE(changed.size(), 1);

        // Without tags a song is looked up by its file name as artist and album.
        loader.load(track("two/Quiet Song.mp3"));
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 4, 60000);
        QVERIFY(looksLike(loader.image(), green, 0));
        QCOMPARE(trail(m_server).value(0),
                 QStringLiteral("mb /ws/2/release/?query=artist:%22Quiet%20Song%22%20AND%20release:%22Quiet%20Song%22"
                                "&fmt=json&limit=5"));
        loader.clear();
        QVERIFY(!loader.hasImage());
        // Blue; the placeholder while the picture-less song is looked up; green; none.
        QCOMPARE(changed.size(), 4);
    }
};

QTEST_GUILESS_MAIN(TestArtworkLoader)
#include "tst_artwork_loader.moc"
