// SPDX-License-Identifier: GPL-3.0-or-later
// Pictures reach QML through image://artwork/...: the scaling to the size an
// Image asks for, and the provider with its addresses in a real engine.
#include "ArtworkTestUtil.h"
#include "artwork/ArtworkImageProvider.h"
#include "artwork/ArtworkLoader.h"
#include "artwork/ArtworkSource.h"
#include "model/LocalPath.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace artworktest;
using namespace std::chrono_literals;
using testsupport::writeFile;

namespace {

QByteArray pngOf(const QColor &c, QSize size = QSize(64, 48)) { return FakeWebServer::png(FakeWebServer::solidImage(c, size)); }
QString musicFolder() { return QStandardPaths::standardLocations(QStandardPaths::MusicLocation).value(0); }

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

    // The Image's status once it is done loading.
    static int settle(QQuickItem *item)
    {
        [&] { QTRY_VERIFY_WITH_TIMEOUT(item->property("status").toInt() != Loading, 30000); }();
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

    void scaling_data()
    {
        QTest::addColumn<QSize>("original");
        QTest::addColumn<QSize>("requested");
        QTest::addColumn<QSize>("expected");
        QTest::newRow("no size asked") << QSize(400, 200) << QSize() << QSize(400, 200);
        QTest::newRow("covers the box") << QSize(400, 200) << QSize(100, 100) << QSize(200, 100);
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
        writeFile(musicFolder(), QStringLiteral("A & B/C%D\uff1f/folder.jpg"), FakeWebServer::jpeg(FakeWebServer::solidImage(Qt::green)));
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

        for (const QUrl &source : {artworksource::track(bare), QUrl(QStringLiteral("image://artwork/nothing/here"))})
            QCOMPARE(settle(image(source).get()), int(Error));

        m_loader->load(Track::create(QUrl::fromLocalFile(song)));
        QTRY_VERIFY(m_loader->hasImage());
        auto playing = image(QUrl(m_loader->imageSource()), QSize());
        QCOMPARE(settle(playing.get()), int(Ready));
        QCOMPARE(playing->implicitWidth(), 100.0);
        QCOMPARE(m_server.requests().size(), 0);
    }

    // Names that are not UTF-8, the folders' too: the picture beside the song,
    // and the one inside it.
    void namesThatAreNotUtf8()
    {
        const QString root = qEnvironmentVariable("TARNWELL_TEST_ROOT");
        const QString beside = writeFile(root, localpath::fromBytes("Bj\xf6rk/caf\xe9.mp3"), "x");
        writeFile(root, localpath::fromBytes("Bj\xf6rk/cov\xe9r.png"), pngOf(Qt::red));
        auto item = image(artworksource::track(beside));
        QCOMPARE(settle(item.get()), int(Ready));

        const QString inside = root + localpath::fromBytes("/J\xf3ga/na\xefve.flac");
        const QString picture = writeFile(root, QStringLiteral("picture.png"), pngOf(Qt::blue, QSize(30, 20)));
        QVERIFY(testsupport::makeAudio(inside));
        QCOMPARE(testsupport::run(QStringLiteral("metaflac"), { "--import-picture-from=" + picture, inside }).exitCode,
                 0);
        m_loader->load(Track::create(localpath::fileUrl(inside)));
        QTRY_VERIFY(m_loader->hasImage());
        auto playing = image(QUrl(m_loader->imageSource()), QSize());
        QCOMPARE(settle(playing.get()), int(Ready));
        QCOMPARE(playing->implicitWidth(), 30.0);
    }

    // An Image that goes away while its lookup waits for a slot cancels it:
    // nothing is sent.
    void goneImageCancelsItsLookup()
    {
        m_loader->throttler().reserveSlot();
        auto item = image(artworksource::artist(QStringLiteral("Low")));
        QTRY_COMPARE(m_loader->lookupsInFlight(), 1);
        item.reset();
        QTRY_COMPARE_WITH_TIMEOUT(m_loader->lookupsInFlight(), 0, 10000);
        QCOMPARE(m_server.requests().size(), 0);
    }
};

QTEST_MAIN(TestArtworkImageProvider)
#include "tst_artwork_image_provider.moc"
