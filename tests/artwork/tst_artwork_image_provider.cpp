// SPDX-License-Identifier: GPL-3.0-or-later
// Pictures reach QML through image://artwork/...: the scaling to the size an
// Image asks for, and the provider with its addresses in a real engine; the
// pictures drawn instead of shaders (the window's backdrop, card shadows).
#include "ArtworkTestUtil.h"
#include "artwork/ArtworkImageProvider.h"
#include "artwork/ArtworkLoader.h"
#include "artwork/ArtworkSource.h"
#include "artwork/DrawnPictures.h"
#include "model/LocalPath.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QSignalSpy>
#include <QTest>

using namespace artworktest;
using namespace std::chrono_literals;
using testsupport::writeFile;

enum Status { Null, Ready, Loading, Error }; // QQuickImageBase::Status

class TestArtworkImageProvider : public QObject
{
    Q_OBJECT

    FakeWebServer m_server;
    std::unique_ptr<ArtworkLoader> m_loader;
    std::unique_ptr<QQmlEngine> m_engine;

    // The Image's status once it is done loading, and its size.
    std::pair<int, QSizeF> show(const QUrl &source, QSize sourceSize = QSize(32, 32))
    {
        QQmlComponent component(m_engine.get());
        component.setData("import QtQuick\nImage { asynchronous: true; cache: false }", QUrl());
        std::unique_ptr<QQuickItem> item(qobject_cast<QQuickItem *>(component.beginCreate(m_engine->rootContext())));
        item->setProperty("sourceSize", sourceSize);
        item->setProperty("source", source);
        component.completeCreate();
        [&] { QTRY_VERIFY_WITH_TIMEOUT(item->property("status").toInt() != Loading, 30000); }();
        return {item->property("status").toInt(), QSizeF(item->implicitWidth(), item->implicitHeight())};
    }

    QUrl playing(const QString &song)
    {
        QSignalSpy finished(m_loader.get(), &ArtworkLoader::loadFinished);
        m_loader->load(Track::create(localpath::fileUrl(song)));
        [&] { QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 30000); }();
        return QUrl(m_loader->imageSource());
    }

private Q_SLOTS:
    void init()
    {
        QVERIFY2(!qEnvironmentVariableIsEmpty("TARNWELL_TEST_ROOT"), "run me through tests/support/isolated.sh");
        QVERIFY(m_server.start());
        m_server.reset();
        m_engine.reset(); // before the loader its provider uses
        QDir(musicFolder()).removeRecursively();
        m_loader = std::make_unique<ArtworkLoader>(ArtworkLoader::Options{
            .musicFolder = {}, .services = servicesOf(m_server), .limits = {}, .throttleInterval = 1s});
        m_engine = std::make_unique<QQmlEngine>();
        m_engine->addImageProvider(QLatin1StringView(artworksource::providerName),
                                   new ArtworkImageProvider(m_loader.get()));
    }

    // Addresses with characters that mean something in a URL, and names that
    // are not UTF-8, the folders' too: the picture beside the song, the one
    // inside it, and the saved copies, scaled to cover the box an Image asks
    // for (a side of 0: any), never enlarged. None of it goes online.
    void imagesInQml()
    {
        const QString root = qEnvironmentVariable("TARNWELL_TEST_ROOT");
        const QString song = writeFile(root, u"Se\u00f1or #1 100%/one two.mp3"_s, "x");
        writeFile(root, u"Se\u00f1or #1 100%/cover.png"_s, pngOf(Qt::red, QSize(100, 50)));
        const QString latin1 = writeFile(root, localpath::fromBytes("Bj\xf6rk/caf\xe9.mp3"), "x");
        writeFile(root, localpath::fromBytes("Bj\xf6rk/cov\xe9r.png"), pngOf(Qt::red));
        const QString bare = writeFile(root, u"bare/song.mp3"_s, "x");
        writeFile(musicFolder(), u"A & B/C%D\uff1f/folder.jpg"_s, jpegOf(Qt::green));
        writeFile(musicFolder(), u"Sigur R\u00f3s/artist.jpg"_s, jpegOf(Qt::blue));
        const QString inside = root + localpath::fromBytes("/J\xf3ga/na\xefve.flac");
        const QString picture = writeFile(root, u"picture.png"_s, pngOf(Qt::blue, QSize(30, 20)));
        QVERIFY(testsupport::makeAudio(inside));
        QCOMPARE(testsupport::run(u"metaflac"_s, {"--import-picture-from=" + picture, inside}).exitCode, 0);

        QCOMPARE(show(artworksource::track(song)), std::pair(int(Ready), QSizeF(64, 32))); // 100x50 covering 32x32
        QCOMPARE(show(artworksource::track(latin1), QSize(0, 24)), std::pair(int(Ready), QSizeF(32, 24)));
        QCOMPARE(show(artworksource::album(u"A & B"_s, u"C%D?"_s)).first, int(Ready));
        QCOMPARE(show(QUrl(u"image://artwork/artist/Sigur%20R%C3%B3s"_s)).first, int(Ready));
        QCOMPARE(show(artworksource::track(bare, u"A & B"_s, u"C%D?"_s)).first, int(Ready));
        for (const QUrl &source : {artworksource::track(bare), QUrl(u"image://artwork/nothing/here"_s)})
            QCOMPARE(show(source).first, int(Error));
        QCOMPARE(show(playing(song), QSize()), std::pair(int(Ready), QSizeF(100, 50)));
        QCOMPARE(show(playing(inside), QSize(100, 100)), std::pair(int(Ready), QSizeF(30, 20)));
        const QString backdrop = m_loader->imageSource() + u"/%23102030/%23ffffff"_s;
        QCOMPARE(show(QUrl(backdrop), QSize()), std::pair(int(Ready), QSizeF(24, 64)));
        QCOMPARE(show(QUrl(m_loader->imageSource() + u"/%23102030/neither"_s)).first, int(Error));
        QCOMPARE(m_server.requests().size(), 0);
    }

    // The backdrop is the gradient multiplied by the picture: white leaves it,
    // black darkens it by the strength, at the top and at the bottom. A
    // shadow's corners are empty and its middle is the colour.
    void drawnPictures()
    {
        const QColor top(0x20, 0x40, 0x80);
        const QColor bottom(0xf0, 0xe0, 0xd0);
        for (const auto &[picture, factor] : {std::pair(Qt::white, 1.0), std::pair(Qt::black, 0.5)}) {
            const QImage image = drawn::backdrop(FakeWebServer::solidImage(picture, {64, 48}), top, bottom, 0.5);
            for (const auto &[y, expected] : {std::pair(0, top), std::pair(image.height() - 1, bottom)}) {
                const QColor got = image.pixelColor(image.width() / 2, y);
                QVERIFY2(std::abs(got.red() - expected.red() * factor) <= 4
                             && std::abs(got.blue() - expected.blue() * factor) <= 4,
                         qPrintable(got.name() + u" at row "_s + QString::number(y)));
            }
        }
        QVERIFY(drawn::backdrop(QImage(), top, bottom, 0.5).isNull());

        const QImage shadow = drawn::shadow(12, 20, QColor(0, 0, 0, 60));
        const int tile = 12 + 2 * 20;
        QCOMPARE(shadow.size(), QSize(2 * tile + 1, 2 * tile + 1));
        QCOMPARE(shadow.pixelColor(0, 0).alpha(), 0);
        QVERIFY(std::abs(shadow.pixelColor(tile, tile).alpha() - 60) <= 1);
        QCOMPARE(shadow.pixel(tile, 0), shadow.pixel(0, tile)); // the same on every side
    }

    // An Image that goes away while its lookup waits for a slot cancels it:
    // nothing is sent.
    void goneImageCancelsItsLookup()
    {
        m_loader->throttler().reserveSlot();
        QQmlComponent component(m_engine.get());
        component.setData("import QtQuick\nImage { asynchronous: true; source: 'image://artwork/artist/Low' }", QUrl());
        std::unique_ptr<QObject> item(component.create());
        QTRY_COMPARE(m_loader->lookupsInFlight(), 1);
        item.reset();
        QTRY_COMPARE_WITH_TIMEOUT(m_loader->lookupsInFlight(), 0, 10000);
        QCOMPARE(m_server.requests().size(), 0);
    }
};

QTEST_MAIN(TestArtworkImageProvider)
#include "tst_artwork_image_provider.moc"
