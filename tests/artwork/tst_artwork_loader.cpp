// SPDX-License-Identifier: GPL-3.0-or-later
// The artwork service: disk copies, shared lookups, misses, the throttle, the
// playing song, the library's own pictures.
#include "ArtworkTestUtil.h"
#include "artwork/AlbumPictures.h"
#include "artwork/ArtworkLoader.h"
#include "support/TestSupport.h"

#include <QCoro/QCoroTask>
#include <QDir>
#include <QDirIterator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace artworktest;
using namespace std::chrono_literals;
using testsupport::writeFile;
using S = FakeWebServer;
using namespace Qt::StringLiterals;

namespace {

const QColor red(220, 20, 20), green(20, 200, 40), blue(30, 40, 230);

QStringList filesBelow(const QString &root)
{
    QStringList out;
    for (QDirIterator it(root, QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
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
        return {.musicFolder = {}, .services = servicesOf(m_server), .limits = {}, .throttleInterval = interval};
    }

    // Wikipedia has a red thumbnail for every artist; MusicBrainz knows no
    // release and Commons has a green picture for every album.
    void servicesHavePictures()
    {
        const QString upload = m_server.serviceUrl(u"upload"_s);
        m_server.on(u"wiki"_s, [upload](const S::Request &) { return S::json(pageImages(upload + "/red.png")); });
        m_server.on(u"mb"_s, [](const S::Request &) { return S::json(releases()); });
        m_server.on(u"commons"_s, [upload](const S::Request &r) {
            return S::json(r.pathAndQuery.contains("list=search") ? searchResults(u"File:Cover.png"_s)
                                                                  : imageInfo(upload + "/green.png"));
        });
        m_server.on(u"upload"_s, [](const S::Request &r) {
            return S::image(pngOf(r.pathAndQuery == "/red.png" ? red : green));
        });
    }

    // The lookups that went online: one Wikipedia or MusicBrainz request each.
    QList<S::Request> lookupsAsked() const
    {
        QList<S::Request> out = m_server.requests();
        out.removeIf([](const S::Request &r) { return r.service != u"wiki" && r.service != u"mb"; });
        return out;
    }

private Q_SLOTS:
    void init()
    {
        // The tests empty the Music folder: never the user's own.
        QVERIFY2(!qEnvironmentVariableIsEmpty("TARNWELL_TEST_ROOT"), "run me through tests/support/isolated.sh");
        QVERIFY(m_server.start());
        m_server.reset();
        QDir(musicFolder()).removeRecursively();
        QDir().mkpath(musicFolder());
    }

    // Found online, written as JPEG under Music, found there by a new loader
    // without the network. Without an artist an album has no copy at all. A
    // name the services had nothing for is not asked again; one they could
    // not be asked about is.
    void diskCopies()
    {
        writeFile(musicFolder(), u"Low Tide/folder.jpg"_s, jpegOf(blue));
        {
            ArtworkLoader loader(options());
            QVERIFY(!QCoro::waitFor(loader.albumArt(u"Nobody"_s, u"Nothing"_s)));
            m_server.reset();
            servicesHavePictures();
            QVERIFY(!QCoro::waitFor(loader.albumArt(u"Nobody"_s, u"Nothing"_s)));
            QVERIFY(looksLike(QCoro::waitFor(loader.artistImage(u"Day/Night"_s)), red, 0));
            QVERIFY(looksLike(QCoro::waitFor(loader.albumArt(u"Q"_s, u"Low: Tide"_s)), green, 0));
            QVERIFY(looksLike(QCoro::waitFor(loader.albumArt(std::nullopt, u"Low Tide"_s)), green, 0));
        }
        QCOMPARE(filesBelow(musicFolder()),
                 (QStringList{"Day-Night/artist.jpg", "Low Tide/folder.jpg", "Q/Low- Tide/folder.jpg"}));
        m_server.stop();
        ArtworkLoader fresh(options());
        QVERIFY(looksLike(QCoro::waitFor(fresh.artistImage(u"Day/Night"_s)), red));
        QVERIFY(looksLike(QCoro::waitFor(fresh.albumArt(u"Q"_s, u"Low: Tide"_s)), green));
        QVERIFY(!QCoro::waitFor(fresh.artistImage(u"Offline"_s)));
        QCOMPARE(lookupsAsked().size(), 3);
        QVERIFY(m_server.start());
        QVERIFY(looksLike(QCoro::waitFor(fresh.artistImage(u"Offline"_s)), red, 0));
    }

    // The web hears of each name once, however many ask, and lookups start a
    // throttle interval apart, album and artist lookups alike.
    void lookupsAreShared()
    {
        servicesHavePictures();
        ArtworkLoader loader(options(200ms));
        int found = 0;
        const auto count = [&found](const std::optional<QImage> &image) { found += image ? 1 : 0; };
        const double before = m_server.now();
        for (int n = 0; n < 10; ++n) {
            QCoro::connect(loader.artistImage(u"Artist %1"_s.arg(n % 5)), this, count);
            QCoro::connect(loader.albumArt(u"Artist %1"_s.arg(n % 5), u"Album"_s), this, count);
        }
        QTRY_COMPARE_WITH_TIMEOUT(found, 20, 60000);
        const QList<S::Request> asked = lookupsAsked();
        QCOMPARE(asked.size(), 10);
        for (qsizetype k = 0; k < asked.size(); ++k)
            QVERIFY(asked[k].time >= before + 0.2 * double(k));
    }

    // A request that gives up leaves the lookup to the others; a lookup whose
    // requests all gave up while it waited for its slot sends nothing and
    // leaves nothing, and the next request starts afresh.
    void cancelledRequests()
    {
        servicesHavePictures();
        ArtworkLoader loader(options(1s));
        loader.throttler().reserveSlot(); // the next lookup waits about a second
        const CancelToken a = CancelToken::create(), b = CancelToken::create(), c = CancelToken::create();
        int cancelled = 0;
        std::optional<QImage> stayed;
        const auto gone = [&cancelled](const std::optional<QImage> &image) { cancelled += !image; };
        QCoro::connect(loader.artistImage(u"Gone"_s, a), this, gone);
        QCoro::connect(loader.artistImage(u"Gone"_s, b), this, gone);
        QCoro::connect(loader.artistImage(u"Kept"_s, c), this, gone);
        QCoro::connect(loader.artistImage(u"Kept"_s), this, [&stayed](const auto &i) { stayed = i; });
        for (const CancelToken &t : {a, b, c})
            t.cancel();
        QCOMPARE(cancelled, 3);
        QTRY_VERIFY_WITH_TIMEOUT(looksLike(stayed, red, 0), 60000);
        QTRY_COMPARE_WITH_TIMEOUT(loader.lookupsInFlight(), 0, 60000);
        QCOMPARE(lookupsAsked().size(), 1);
        QCOMPARE(filesBelow(musicFolder()), QStringList{"Kept/artist.jpg"});
        QVERIFY(looksLike(QCoro::waitFor(loader.artistImage(u"Gone"_s)), red, 0));
    }

    // A newer song cancels a lookup waiting for its slot; a song without tags
    // is looked up by its file name as artist and album.
    void playingPicture()
    {
        servicesHavePictures();
        const auto track = [this](const char *path) {
            return Track::create(QUrl::fromLocalFile(writeFile(m_songs.path(), QString::fromUtf8(path), "x")));
        };
        writeFile(m_songs.path(), u"one/cover.jpg"_s, jpegOf(blue));
        ArtworkLoader loader(options(1s));
        QSignalSpy finished(&loader, &ArtworkLoader::loadFinished);
        loader.throttler().reserveSlot();
        loader.load(track("two/Quiet Song.mp3"));
        loader.load(track("one/a.mp3"));
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 2, 60000);
        QVERIFY(looksLike(loader.image(), blue));
        QCOMPARE(m_server.requests().size(), 0);

        loader.load(track("two/Quiet Song.mp3"));
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 3, 60000);
        QVERIFY(looksLike(loader.image(), green, 0));
        QVERIFY(trail(m_server).value(0).contains(u"query=artist:%22Quiet%20Song%22%20AND%20release:%22Quiet%20Song%22"_s));
    }

    // An album without a copy on disk shows the picture of its first song that
    // has one, names compared ignoring case; an artist, that of its albums. Songs
    // added later give an album that had none a picture.
    void picturesOfTheLibrarysSongs()
    {
        const auto song = [this](const char *path, const char *artist, const char *album) {
            const QString file = writeFile(m_songs.path(), QString::fromUtf8(path), "x");
            return AlbumPictures::Song{QUrl::fromLocalFile(file), QString::fromUtf8(artist), QString::fromUtf8(album)};
        };
        writeFile(m_songs.path(), u"b/cover.png"_s, pngOf(blue));
        writeFile(m_songs.path(), u"d/cover.png"_s, pngOf(red));
        ArtworkLoader loader(options());
        AlbumPictures pictures(loader);
        AlbumPictures::Index index = AlbumPictures::makeIndex(
            {song("c/3.mp3", "Low", "Bare"), song("a/1.mp3", "Low", "Tide"), song("b/2.mp3", "LOW", "tide")});
        pictures.setIndex(index);
        QVERIFY(looksLike(QCoro::waitFor(pictures.album(u"low"_s, u"TIDE"_s)), blue, 0));
        QVERIFY(looksLike(QCoro::waitFor(pictures.artist(u"Low"_s)), blue, 0));
        QVERIFY(!QCoro::waitFor(pictures.album(u"Low"_s, u"Bare"_s)));
        const QSet<QString> albums = AlbumPictures::extendIndex(index, AlbumPictures::makeIndex({song("d/4.mp3", "low", "BARE")}));
        pictures.grown(index, albums);
        QVERIFY(looksLike(QCoro::waitFor(pictures.album(u"Low"_s, u"Bare"_s)), red, 0));
        QVERIFY(looksLike(QCoro::waitFor(pictures.artist(u"Low"_s)), red, 0)); // its first album now has one

        // A song whose tags were read without a picture is not opened for one.
        const QString inside = m_songs.path() + u"/e/5.flac"_s;
        QVERIFY(testsupport::makeAudio(inside));
        const QString png = writeFile(m_songs.path(), u"picture.png"_s, pngOf(green));
        QCOMPARE(testsupport::run(u"metaflac"_s, {"--import-picture-from=" + png, inside}).exitCode, 0);
        for (const bool hasPicture : {false, true}) {
            pictures.setIndex(AlbumPictures::makeIndex({{QUrl::fromLocalFile(inside), u"Slow"_s, u"Inside"_s, hasPicture}}));
            QCOMPARE(QCoro::waitFor(pictures.album(u"Slow"_s, u"Inside"_s)).has_value(), hasPicture);
        }
    }
};

QTEST_GUILESS_MAIN(TestArtworkLoader)
#include "tst_artwork_loader.moc"
