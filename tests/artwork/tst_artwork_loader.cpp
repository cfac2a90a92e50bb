// SPDX-License-Identifier: GPL-3.0-or-later
// The artwork service: the picture of a song, memory caches, disk copies under
// the Music folder, the throttle across lookups, and the picture of the playing song.
#include "ArtworkTestUtil.h"
#include "artwork/ArtworkLoader.h"
#include "artwork/ImageCodec.h"
#include "artwork/LocalArtwork.h"
#include "support/TestSupport.h"
#include "tags/TagReader.h"

#include <QCoro/QCoroTask>
#include <QDir>
#include <QDirIterator>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace artworktest;
using namespace std::chrono_literals;
using testsupport::writeFile;
using OptionalText = std::optional<QString>;

namespace {

const QColor red(220, 20, 20);
const QColor green(20, 200, 40);
const QColor blue(30, 40, 230);
const QColor yellow(230, 210, 20);

QByteArray pngOf(const QColor &c)
{
    return FakeWebServer::png(FakeWebServer::solidImage(c));
}

QByteArray jpegOf(const QColor &c)
{
    return FakeWebServer::jpeg(FakeWebServer::solidImage(c));
}

QString musicFolder()
{
    return QStandardPaths::standardLocations(QStandardPaths::MusicLocation).value(0);
}

// Every file below a folder, relative to it, sorted.
QStringList filesBelow(const QString &root)
{
    QStringList out;
    QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
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

    // Wikipedia has a thumbnail of this colour for every artist.
    void artistsAre(const QColor &color)
    {
        const QString thumb = m_server.serviceUrl(QStringLiteral("upload")) + QStringLiteral("/thumb.png");
        m_server.on(QStringLiteral("wiki"),
                    [thumb](const FakeWebServer::Request &) { return FakeWebServer::json(FakeWebServer::pageImages(thumb)); });
        m_uploads.insert("/thumb.png", color);
        serveUploads();
    }

    QHash<QByteArray, QColor> m_uploads;
    void serveUploads()
    {
        // A copy: the handler runs on the server's thread.
        m_server.on(QStringLiteral("upload"), [uploads = m_uploads](const FakeWebServer::Request &r) {
            return uploads.contains(r.pathAndQuery) ? FakeWebServer::image(pngOf(uploads.value(r.pathAndQuery)))
                                                    : FakeWebServer::status(404);
        });
    }

    // MusicBrainz knows no release; Commons has a picture of this colour for every album.
    void albumsAre(const QColor &color)
    {
        const QString file = m_server.serviceUrl(QStringLiteral("upload")) + QStringLiteral("/file.png");
        m_server.on(QStringLiteral("mb"), [](const FakeWebServer::Request &) {
            return FakeWebServer::json(FakeWebServer::releases({}));
        });
        m_server.on(QStringLiteral("commons"), [file](const FakeWebServer::Request &r) {
            if (r.pathAndQuery.contains("list=search"))
                return FakeWebServer::json(FakeWebServer::searchResults({QStringLiteral("File:Cover.png")}));
            return FakeWebServer::json(FakeWebServer::imageInfo(file));
        });
        m_uploads.insert("/file.png", color);
        serveUploads();
    }

    void nothingOnline()
    {
        m_server.reset(); // every service answers 404
        m_uploads.clear();
        serveUploads();
    }

private Q_SLOTS:
    void initTestCase()
    {
        // The tests empty the Music folder: never the user's own.
        QVERIFY2(!qEnvironmentVariableIsEmpty("TARNWELL_TEST_ROOT"), "run me through tests/support/isolated.sh");
        QVERIFY(m_server.start());
        QVERIFY(m_songs.isValid());
        QVERIFY(!musicFolder().isEmpty());
    }

    void init()
    {
        QVERIFY(m_server.start());
        nothingOnline();
        m_server.clearRequests();
        QDir(musicFolder()).removeRecursively();
        QDir().mkpath(musicFolder());
        QDir(m_songs.path()).removeRecursively();
        QDir().mkpath(m_songs.path());
    }

    // Each file has its own cache entry, even when the picture came from the folder.
    void trackCacheIsPerFile()
    {
        const QString cover = writeFile(m_songs.path(), QStringLiteral("cover.png"), pngOf(red));
        const QUrl a = QUrl::fromLocalFile(writeFile(m_songs.path(), QStringLiteral("a.mp3"), "x"));
        const QUrl b = QUrl::fromLocalFile(writeFile(m_songs.path(), QStringLiteral("b.mp3"), "x"));
        ArtworkLoader loader(options());
        QVERIFY(looksLike(QCoro::waitFor(loader.trackArtwork(a)), red));
        QVERIFY(QFile::remove(cover));
        QVERIFY(looksLike(QCoro::waitFor(loader.trackArtwork(a)), red));
        QVERIFY(!QCoro::waitFor(loader.trackArtwork(b)));
        // A miss is not remembered.
        writeFile(m_songs.path(), QStringLiteral("cover.png"), pngOf(green));
        QVERIFY(looksLike(QCoro::waitFor(loader.trackArtwork(b)), green));
        QCOMPARE(m_server.requests().size(), 0);
    }

    // The songs of one folder share one decoded picture; a changed file is decoded anew.
    void oneDecodePerFolderPicture()
    {
        writeFile(m_songs.path(), QStringLiteral("cover.jpg"), jpegOf(red));
        const QUrl a = QUrl::fromLocalFile(writeFile(m_songs.path(), QStringLiteral("a.mp3"), "x"));
        const QUrl b = QUrl::fromLocalFile(writeFile(m_songs.path(), QStringLiteral("b.mp3"), "x"));
        const QUrl c = QUrl::fromLocalFile(writeFile(m_songs.path(), QStringLiteral("c.mp3"), "x"));
        ArtworkLoader loader(options());
        const std::optional<QImage> first = QCoro::waitFor(loader.trackArtwork(a));
        const std::optional<QImage> second = QCoro::waitFor(loader.trackArtwork(b));
        QVERIFY(first && second);
        QCOMPARE(first->constBits(), second->constBits());

        writeFile(m_songs.path(), QStringLiteral("cover.jpg"),
                  FakeWebServer::jpeg(FakeWebServer::solidImage(green, QSize(80, 80))));
        const std::optional<QImage> third = QCoro::waitFor(loader.trackArtwork(c));
        QVERIFY(looksLike(third, green));
        QCOMPARE(third->size(), QSize(80, 80));
    }

    void embeddedPicture()
    {
        if (!testsupport::haveTool(QStringLiteral("flac")) || !testsupport::haveTool(QStringLiteral("metaflac")))
            QSKIP("flac tools missing");
        const QString song = m_songs.path() + QStringLiteral("/tagged/song.flac");
        QVERIFY(testsupport::makeAudio(song, 0.2));
        const QString picture = writeFile(m_songs.path(), QStringLiteral("picture.jpg"), jpegOf(blue));
        QCOMPARE(testsupport::run(QStringLiteral("metaflac"),
                                  {QStringLiteral("--import-picture-from=") + picture, song})
                     .exitCode,
                 0);
        if (!readEmbeddedArtwork(song))
            QSKIP("the tag reader does not read embedded pictures yet");

        ArtworkLoader loader(options());
        const QUrl url = QUrl::fromLocalFile(song);
        QVERIFY(looksLike(QCoro::waitFor(loader.trackArtwork(url)), blue));
        // A picture beside the file wins over the embedded one.
        writeFile(m_songs.path(), QStringLiteral("tagged/cover.png"), pngOf(yellow));
        loader.clearMemoryCaches();
        QVERIFY(looksLike(QCoro::waitFor(loader.trackArtwork(url)), yellow));
    }

    // Found online, written as JPEG under Music, then found there without the
    // network by a new loader, and in memory by the old one.
    void diskCopies()
    {
        artistsAre(red);
        albumsAre(green);
        {
            ArtworkLoader loader(options());
            QVERIFY(looksLike(QCoro::waitFor(loader.artistImage(QStringLiteral("Day/Night"))), red, 0));
            QVERIFY(looksLike(QCoro::waitFor(loader.albumArt(QStringLiteral("The Quiet Hours"),
                                                             QStringLiteral("Low: Tide"))),
                              green, 0));
            QCOMPARE(filesBelow(musicFolder()),
                     (QStringList{"Day-Night/artist.jpg", "The Quiet Hours/Low- Tide/folder.jpg"}));
            const QByteArray jpeg = testsupport::readFile(musicFolder() + QStringLiteral("/Day-Night/artist.jpg"));
            QVERIFY(jpeg.startsWith("\xff\xd8\xff"));

            // The memory cache answers while the copies and the network are gone.
            m_server.stop();
            const QString saved = musicFolder() + QStringLiteral(".saved");
            QVERIFY(QDir().rename(musicFolder(), saved));
            QVERIFY(looksLike(QCoro::waitFor(loader.artistImage(QStringLiteral("Day/Night"))), red, 0));
            QVERIFY(looksLike(QCoro::waitFor(loader.albumArt(QStringLiteral("The Quiet Hours"),
                                                             QStringLiteral("Low: Tide"))),
                              green, 0));
            QVERIFY(QDir().rename(saved, musicFolder()));
            QVERIFY(m_server.start());
        }
        // A new loader finds the copies on disk, without the network.
        const qsizetype before = m_server.requests().size();
        writeFile(musicFolder(), QStringLiteral("The Quiet Hours/Low- Tide/folder.jpg"), jpegOf(blue));
        m_server.stop();

        ArtworkLoader fresh(options());
        QVERIFY(looksLike(QCoro::waitFor(fresh.albumArt(QStringLiteral("The Quiet Hours"), QStringLiteral("Low: Tide"))),
                          blue));
        QVERIFY(looksLike(QCoro::waitFor(fresh.artistImage(QStringLiteral("Day/Night"))), red));
        QVERIFY(m_server.start());
        QCOMPARE(m_server.requests().size(), before);
    }

    // Without an artist there is no copy on disk, neither read nor written.
    void albumWithoutArtistStaysOffDisk()
    {
        albumsAre(green);
        writeFile(musicFolder(), QStringLiteral("Low Tide/folder.jpg"), jpegOf(red));
        ArtworkLoader loader(options());
        QVERIFY(looksLike(QCoro::waitFor(loader.albumArt(std::nullopt, QStringLiteral("Low Tide"))), green, 0));
        QCOMPARE(filesBelow(musicFolder()), QStringList{"Low Tide/folder.jpg"});
        QCOMPARE(m_server.requestsFor(QStringLiteral("mb")).size(), 1);
    }

    void missIsRetried()
    {
        nothingOnline();
        ArtworkLoader loader(options());
        QVERIFY(!QCoro::waitFor(loader.artistImage(QStringLiteral("Low"))));
        QVERIFY(!QCoro::waitFor(loader.albumArt(QStringLiteral("Low"), QStringLiteral("Tide"))));
        artistsAre(red);
        albumsAre(green);
        QVERIFY(looksLike(QCoro::waitFor(loader.artistImage(QStringLiteral("Low"))), red, 0));
        QVERIFY(looksLike(QCoro::waitFor(loader.albumArt(QStringLiteral("Low"), QStringLiteral("Tide"))), green, 0));
    }

    // Keys are exact; an absent name and an empty one are the same key.
    void cacheKeys()
    {
        albumsAre(green);
        ArtworkLoader loader(options());
        QVERIFY(QCoro::waitFor(loader.albumArt(std::nullopt, QStringLiteral("Tide"))));
        const qsizetype online = m_server.requests().size();
        QVERIFY(QCoro::waitFor(loader.albumArt(QString(), QStringLiteral("Tide"))));
        QCOMPARE(m_server.requests().size(), online);
        QVERIFY(QCoro::waitFor(loader.albumArt(std::nullopt, QStringLiteral("tide"))));
        QVERIFY(m_server.requests().size() > online);
        QCOMPARE(ArtworkLoader::albumKey(QStringLiteral("a:b"), QStringLiteral("c")), QStringLiteral("album:a:b:c"));
        QCOMPARE(ArtworkLoader::artistKey(QStringLiteral(" X")), QStringLiteral("artist: X"));
    }

    void noMusicFolder()
    {
        artistsAre(red);
        albumsAre(green);
        ArtworkLoader::Options o = options();
        o.musicFolder = QString();
        const QStringList before = filesBelow(QDir::homePath());
        ArtworkLoader loader(o);
        QVERIFY(looksLike(QCoro::waitFor(loader.artistImage(QStringLiteral("Low"))), red, 0));
        QVERIFY(looksLike(QCoro::waitFor(loader.albumArt(QStringLiteral("Low"), QStringLiteral("Tide"))), green, 0));
        QCOMPARE(filesBelow(QDir::homePath()), before);
        loader.clearMemoryCaches();
        m_server.stop();
        QVERIFY(!QCoro::waitFor(loader.artistImage(QStringLiteral("Low"))));
        QVERIFY(m_server.start());
    }

    // No tag value makes the program read or write outside the Music folder.
    void namesThatAreNoFolder_data()
    {
        QTest::addColumn<QString>("artist");
        QTest::addColumn<OptionalText>("album");
        QTest::newRow("artist ..") << QStringLiteral("..") << OptionalText();
        QTest::newRow("artist .") << QStringLiteral(".") << OptionalText();
        QTest::newRow("artist blank") << QStringLiteral("  ") << OptionalText();
        QTest::newRow("album of ..") << QStringLiteral("..") << OptionalText(QStringLiteral(".."));
        QTest::newRow("album ..") << QStringLiteral("Low") << OptionalText(QStringLiteral(".."));
        QTest::newRow("album . of ..") << QStringLiteral("..") << OptionalText(QStringLiteral("."));
    }

    void namesThatAreNoFolder()
    {
        QFETCH(QString, artist);
        QFETCH(OptionalText, album);
        artistsAre(red);
        albumsAre(red);
        // Pictures where a careless path would find them: they must not be read.
        const QString root = qEnvironmentVariable("TARNWELL_TEST_ROOT");
        QVERIFY(!root.isEmpty());
        writeFile(QDir::homePath(), QStringLiteral("artist.jpg"), jpegOf(blue));
        writeFile(QDir::homePath(), QStringLiteral("folder.jpg"), jpegOf(blue));
        writeFile(musicFolder(), QStringLiteral("artist.jpg"), jpegOf(blue));
        writeFile(musicFolder(), QStringLiteral("folder.jpg"), jpegOf(blue));
        writeFile(musicFolder(), QStringLiteral("Low/folder.jpg"), jpegOf(blue));
        const QStringList before = filesBelow(root);

        ArtworkLoader loader(options());
        const std::optional<QImage> image = album ? QCoro::waitFor(loader.albumArt(artist, album))
                                                  : QCoro::waitFor(loader.artistImage(artist));
        QVERIFY(looksLike(image, red, 0)); // from the network, and returned all the same
        QCOMPARE(filesBelow(root), before);
        QVERIFY(looksLike(artwork::loadImageFile(musicFolder() + QStringLiteral("/folder.jpg")), blue));
    }

    // Lookups start a throttle interval apart, album and artist lookups alike;
    // the requests within one lookup are not throttled.
    void throttleSpacing()
    {
        artistsAre(red);
        albumsAre(green);
        ArtworkLoader loader(options(1s));
        int done = 0;
        const auto count = [&done](const std::optional<QImage> &image) { done += image ? 1 : 0; };
        QCoro::connect(loader.albumArt(QStringLiteral("A"), QStringLiteral("1")), this, count);
        QCoro::connect(loader.artistImage(QStringLiteral("B")), this, count);
        QCoro::connect(loader.albumArt(QStringLiteral("C"), QStringLiteral("2")), this, count);
        QCoro::connect(loader.artistImage(QStringLiteral("D")), this, count);
        QTRY_COMPARE_WITH_TIMEOUT(done, 4, 8000);

        QList<double> starts;
        double previous = -10;
        for (const FakeWebServer::Request &r : m_server.requests()) {
            if (r.service == u"mb" || r.service == u"wiki") {
                starts.append(r.time);
            } else {
                // Fallback and download requests follow at once.
                QVERIFY2(r.time - previous < 0.5, r.target.constData());
            }
            previous = r.time;
        }
        QCOMPARE(starts.size(), 4);
        for (int i = 1; i < starts.size(); ++i) {
            // The server's clock sees a few milliseconds of loopback jitter.
            QVERIFY2(starts[i] - starts[i - 1] >= 0.99, qPrintable(QString::number(starts[i] - starts[i - 1])));
            QVERIFY2(starts[i] - starts[i - 1] < 1.3, qPrintable(QString::number(starts[i] - starts[i - 1])));
        }
        // Which lookup books first depends on which disk check ends first.
        QVERIFY(trail(m_server).contains(
            QStringLiteral("mb /ws/2/release/?query=artist:%22A%22%20AND%20release:%221%22&fmt=json&limit=5")));
    }

    // Cancelled while waiting for its slot, a lookup sends nothing and leaves nothing.
    void cancelledDuringTheThrottleWait()
    {
        artistsAre(red);
        ArtworkLoader loader(options(1s));
        loader.throttler().reserveSlot(); // the next lookup waits about a second
        const CancelToken cancel = CancelToken::create();
        QTimer::singleShot(200, [cancel] { cancel.cancel(); });
        QElapsedTimer clock;
        clock.start();
        QVERIFY(!QCoro::waitFor(loader.artistImage(QStringLiteral("Low"), cancel)));
        QVERIFY(clock.elapsed() < 800);
        QCOMPARE(m_server.requests().size(), 0);
        QCOMPARE(filesBelow(musicFolder()), QStringList());
        QCOMPARE(loader.memoryCacheBytes(), 0);
    }

    void loadPublishesThePlayingPicture()
    {
        albumsAre(green);
        writeFile(m_songs.path(), QStringLiteral("one/cover.png"), pngOf(red));
        const Track withCover = Track::create(QUrl::fromLocalFile(writeFile(m_songs.path(), QStringLiteral("one/a.mp3"), "x")));
        const Track sameAlbum = Track::create(QUrl::fromLocalFile(writeFile(m_songs.path(), QStringLiteral("one/b.mp3"), "x")));
        const Track bare = Track::create(QUrl::fromLocalFile(writeFile(m_songs.path(), QStringLiteral("two/Quiet Song.mp3"), "x")));

        ArtworkLoader loader(options());
        QSignalSpy changed(&loader, &ArtworkLoader::imageChanged);
        QSignalSpy finished(&loader, &ArtworkLoader::loadFinished);
        QVERIFY(!loader.hasImage());
        QCOMPARE(loader.imageSource(), QString());

        loader.load(withCover);
        QVERIFY(finished.wait(5000));
        QVERIFY(looksLike(loader.image(), red, 0));
        QCOMPARE(changed.size(), 1);
        QCOMPARE(loader.imageSource(), QStringLiteral("image://artwork/playing/1"));
        QCOMPARE(m_server.requests().size(), 0);

        // Nothing found for the next song: the picture stays.
        nothingOnline();
        loader.load(bare);
        QVERIFY(finished.wait(5000));
        QVERIFY(looksLike(loader.image(), red, 0));
        QCOMPARE(changed.size(), 1);
        // Without tags a song is looked up by its file name, as artist and album.
        QCOMPARE(trail(m_server).value(0),
                 QStringLiteral("mb /ws/2/release/?query=artist:%22Quiet%20Song%22%20AND%20release:%22Quiet%20Song%22"
                                "&fmt=json&limit=5"));

        albumsAre(green);
        loader.load(bare);
        QVERIFY(finished.wait(5000));
        QVERIFY(looksLike(loader.image(), green, 0));
        QCOMPARE(changed.size(), 2);

        loader.clear();
        QVERIFY(!loader.hasImage());
        QCOMPARE(changed.size(), 3);
        Q_UNUSED(sameAlbum);
    }

    // A new load cancels the one before: after its throttle wait the old one
    // sends nothing and publishes nothing.
    void newLoadCancelsThePreviousOne()
    {
        albumsAre(green);
        writeFile(m_songs.path(), QStringLiteral("one/cover.png"), pngOf(red));
        const Track online = Track::create(QUrl::fromLocalFile(writeFile(m_songs.path(), QStringLiteral("two/x.mp3"), "x")));
        const Track local = Track::create(QUrl::fromLocalFile(writeFile(m_songs.path(), QStringLiteral("one/a.mp3"), "x")));

        ArtworkLoader loader(options(1s));
        loader.throttler().reserveSlot();
        QSignalSpy finished(&loader, &ArtworkLoader::loadFinished);
        loader.load(online);
        // By then the first load waits for its slot.
        QTimer::singleShot(300, &loader, [&] { loader.load(local); });
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 2, 5000);
        QVERIFY(looksLike(loader.image(), red, 0));
        QCOMPARE(m_server.requests().size(), 0);

        // Cleared while the lookup waits: nothing comes back later.
        loader.throttler().reserveSlot();
        loader.load(online);
        QTimer::singleShot(300, &loader, [&] { loader.clear(); });
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 3, 5000);
        QVERIFY(!loader.hasImage());
        QCOMPARE(m_server.requests().size(), 0);
    }
};

QTEST_GUILESS_MAIN(TestArtworkLoader)
#include "tst_artwork_loader.moc"
