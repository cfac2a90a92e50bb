// SPDX-License-Identifier: GPL-3.0-or-later
// Pictures reach QML through image://artwork/...: the address forms, the
// scaling to the size an Image asks for, and the provider in a real engine.
#include "ArtworkTestUtil.h"
#include "artwork/ArtworkImageProvider.h"
#include "artwork/ArtworkLoader.h"
#include "artwork/ArtworkSource.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace artworktest;
using namespace std::chrono_literals;
using testsupport::writeFile;
using OptionalText = std::optional<QString>;

namespace {

QByteArray pngOf(const QColor &c, QSize size = QSize(64, 48))
{
    return FakeWebServer::png(FakeWebServer::solidImage(c, size));
}

QString musicFolder()
{
    return QStandardPaths::standardLocations(QStandardPaths::MusicLocation).value(0);
}

enum Status { Null, Ready, Loading, Error }; // QQuickImageBase::Status

} // namespace

class TestArtworkImageProvider : public QObject
{
    Q_OBJECT

    FakeWebServer m_server;
    QTemporaryDir m_songs;
    std::unique_ptr<ArtworkLoader> m_loader;
    std::unique_ptr<QQmlEngine> m_engine;

    std::unique_ptr<QQuickItem> image(const QUrl &source, QSize sourceSize = QSize(32, 32))
    {
        QQmlComponent component(m_engine.get());
        component.setData("import QtQuick\nImage { asynchronous: true; cache: false }", QUrl());
        std::unique_ptr<QQuickItem> item(qobject_cast<QQuickItem *>(component.beginCreate(m_engine->rootContext())));
        if (!item)
            return item;
        item->setProperty("sourceSize", sourceSize);
        item->setProperty("source", source);
        component.completeCreate();
        return item;
    }

    // Waits (at most 5 s) until the Image is done; its status then.
    static int settle(QQuickItem *item)
    {
        QElapsedTimer clock;
        clock.start();
        while (item->property("status").toInt() == Loading && clock.elapsed() < 5000)
            QTest::qWait(10);
        return item->property("status").toInt();
    }

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
        QDir(musicFolder()).removeRecursively();
        ArtworkLoader::Options o;
        o.services = servicesOf(m_server);
        o.throttleInterval = 1s;
        m_loader = std::make_unique<ArtworkLoader>(o);
        m_engine = std::make_unique<QQmlEngine>();
        m_engine->addImageProvider(QLatin1StringView(artworksource::providerName),
                                   new ArtworkImageProvider(m_loader.get()));
    }

    void cleanup()
    {
        m_engine.reset();
        m_loader.reset();
    }

    void addresses_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("path");
        QTest::addColumn<OptionalText>("artist");
        QTest::addColumn<OptionalText>("album");

        const QString odd = QStringLiteral("/m\u00fcsic/a b/#1 100%/what?/x&y=z+w.flac");
        QTest::newRow("track") << artworksource::track(odd) << int(artworksource::Request::Track) << odd
                               << OptionalText() << OptionalText();
        QTest::newRow("track with fallback")
            << artworksource::track(odd, std::nullopt, QStringLiteral("Low/Tide"))
            << int(artworksource::Request::Track) << odd << OptionalText() << OptionalText(QStringLiteral("Low/Tide"));
        QTest::newRow("album") << artworksource::album(QStringLiteral("AC/DC %2F"), QStringLiteral("\u65e5 #"))
                               << int(artworksource::Request::Album) << QString()
                               << OptionalText(QStringLiteral("AC/DC %2F")) << OptionalText(QStringLiteral("\u65e5 #"));
        QTest::newRow("album without artist")
            << artworksource::album(std::nullopt, QStringLiteral("Tide")) << int(artworksource::Request::Album)
            << QString() << OptionalText() << OptionalText(QStringLiteral("Tide"));
        QTest::newRow("artist") << artworksource::artist(QStringLiteral("..")) << int(artworksource::Request::Artist)
                                << QString() << OptionalText(QStringLiteral("..")) << OptionalText();
        QTest::newRow("playing") << QUrl(QStringLiteral("image://artwork/playing/7"))
                                 << int(artworksource::Request::Playing) << QString() << OptionalText() << OptionalText();
    }

    // The id as the engine hands it over (partly decoded) parses back to the names.
    void addresses()
    {
        QFETCH(QUrl, url);
        QFETCH(int, kind);
        QFETCH(QString, path);
        QFETCH(OptionalText, artist);
        QFETCH(OptionalText, album);
        QCOMPARE(url.scheme(), QStringLiteral("image"));
        QCOMPARE(url.host(), QStringLiteral("artwork"));
        const QString id = url.toString(QUrl::RemoveScheme | QUrl::RemoveAuthority).mid(1);
        const std::optional<artworksource::Request> r = artworksource::parse(id);
        QVERIFY(r);
        QCOMPARE(int(r->kind), kind);
        QCOMPARE(r->path, path);
        QCOMPARE(r->artist, artist);
        QCOMPARE(r->album, album);
    }

    void unknownAddresses()
    {
        for (const char *id : {"", "track", "track/", "album/x", "artist/a/b", "cover/x", "track/a/b"})
            QVERIFY2(!artworksource::parse(QString::fromLatin1(id)), id);
    }

    void scaling_data()
    {
        QTest::addColumn<QSize>("original");
        QTest::addColumn<QSize>("requested");
        QTest::addColumn<QSize>("expected");
        QTest::newRow("no size asked") << QSize(400, 200) << QSize() << QSize(400, 200);
        QTest::newRow("covers the box") << QSize(400, 200) << QSize(100, 100) << QSize(200, 100);
        QTest::newRow("width only") << QSize(400, 200) << QSize(100, 0) << QSize(100, 50);
        QTest::newRow("height only") << QSize(400, 200) << QSize(0, 50) << QSize(100, 50);
        QTest::newRow("never enlarged") << QSize(40, 20) << QSize(100, 100) << QSize(40, 20);
    }

    void scaling()
    {
        QFETCH(QSize, original);
        QFETCH(QSize, requested);
        QFETCH(QSize, expected);
        QCOMPARE(ArtworkImageProvider::scaledForRequest(FakeWebServer::solidImage(Qt::red, original), requested).size(),
                 expected);
    }

    void imagesInQml()
    {
        const QString song = writeFile(m_songs.path(), QStringLiteral("Se\u00f1or #1 100%/one two.mp3"), "x");
        writeFile(m_songs.path(), QStringLiteral("Se\u00f1or #1 100%/cover.png"), pngOf(Qt::red, QSize(100, 50)));
        const QString bare = writeFile(m_songs.path(), QStringLiteral("bare/song.mp3"), "x");
        writeFile(musicFolder(), QStringLiteral("A & B/C%D-/folder.jpg"), FakeWebServer::jpeg(FakeWebServer::solidImage(Qt::green)));
        writeFile(musicFolder(), QStringLiteral("Sigur R\u00f3s/artist.jpg"), FakeWebServer::jpeg(FakeWebServer::solidImage(Qt::blue)));

        auto track = image(artworksource::track(song));
        QCOMPARE(settle(track.get()), int(Ready));
        QCOMPARE(track->implicitWidth(), 64.0); // 100x50 covering 32x32
        QCOMPARE(track->implicitHeight(), 32.0);

        auto album = image(artworksource::album(QStringLiteral("A & B"), QStringLiteral("C%D?")));
        QCOMPARE(settle(album.get()), int(Ready));

        // Built in QML the usual way.
        QQmlComponent component(m_engine.get());
        component.setData("import QtQuick\nImage { asynchronous: true; source: 'image://artwork/artist/' + "
                          "encodeURIComponent('Sigur R\u00f3s') }",
                          QUrl());
        std::unique_ptr<QObject> artist(component.create());
        QVERIFY2(artist, qPrintable(component.errorString()));
        QCOMPARE(settle(qobject_cast<QQuickItem *>(artist.get())), int(Ready));

        auto fallback = image(artworksource::track(bare, QStringLiteral("A & B"), QStringLiteral("C%D?")));
        QCOMPARE(settle(fallback.get()), int(Ready));

        auto none = image(artworksource::track(bare));
        QCOMPARE(settle(none.get()), int(Error));
        auto nonsense = image(QUrl(QStringLiteral("image://artwork/nothing/here")));
        QCOMPARE(settle(nonsense.get()), int(Error));
        QCOMPARE(m_server.requests().size(), 0);
    }

    void playingPicture()
    {
        writeFile(m_songs.path(), QStringLiteral("p/cover.png"), pngOf(Qt::red));
        const Track t = Track::create(QUrl::fromLocalFile(writeFile(m_songs.path(), QStringLiteral("p/a.mp3"), "x")));
        m_loader->load(t);
        QTRY_VERIFY(m_loader->hasImage());
        auto item = image(QUrl(m_loader->imageSource()), QSize());
        QCOMPARE(settle(item.get()), int(Ready));
        QCOMPARE(item->implicitWidth(), 64.0);
    }

    // An Image that goes away while its lookup waits for a slot cancels it:
    // nothing is sent.
    void goneImageCancelsItsLookup()
    {
        m_server.on(QStringLiteral("wiki"),
                    [](const FakeWebServer::Request &) { return FakeWebServer::json(FakeWebServer::pageImages({})); });
        m_loader->throttler().reserveSlot();
        auto item = image(artworksource::artist(QStringLiteral("Low")));
        QTest::qWait(300);
        item.reset();
        QTest::qWait(1200);
        QCOMPARE(m_server.requests().size(), 0);
    }
};

QTEST_MAIN(TestArtworkImageProvider)
#include "tst_artwork_image_provider.moc"
