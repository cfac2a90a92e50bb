// SPDX-License-Identifier: GPL-3.0-or-later
// The online chains against the loopback stand-in for the services: which
// requests go out, in which order, to which exact addresses, and what comes back.
#include "ArtworkTestUtil.h"
#include "artwork/OnlineArtwork.h"

#include <QCoro/QCoroTask>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

using namespace artworktest;
using Reply = FakeWebServer::Reply;
using Setup = std::function<void(FakeWebServer &)>;
Q_DECLARE_METATYPE(Setup)

namespace {

const QColor coverRed(220, 20, 20);
const QColor commonsGreen(20, 200, 40);
const QColor thumbBlue(30, 40, 230);

const QString mbQuery = QStringLiteral(
    "mb /ws/2/release/?query=artist:%22The%20Quiet%20Hours%22%20AND%20release:%22Low%20Tide%22&fmt=json&limit=5");
const QString caaFront = QStringLiteral("caa /release/rel-1/front");
const QString commonsAlbumSearch = QStringLiteral(
    "commons /w/api.php?action=query&list=search&srsearch=The%20Quiet%20Hours%20Low%20Tide%20album%20cover"
    "&srnamespace=6&format=json&srlimit=3");
const QString commonsArtistSearch = QStringLiteral(
    "commons /w/api.php?action=query&list=search&srsearch=The%20Quiet%20Hours&srnamespace=6&format=json&srlimit=5");
const QString commonsInfo = QStringLiteral(
    "commons /w/api.php?action=query&titles=File:Hours.jpg&prop=imageinfo&iiprop=url&format=json");
const QString wikiQuery = QStringLiteral(
    "wiki /w/api.php?action=query&titles=The%20Quiet%20Hours&prop=pageimages&pithumbsize=500"
    "&piprop=thumbnail&format=json");
const QString commonsFile = QStringLiteral("upload /commons/Hours.png");
const QString thumbFile = QStringLiteral("upload /thumb/Hours.png");

// Commons finds File:Hours.jpg and serves it green.
void commonsAnswers(FakeWebServer &s)
{
    s.script(QStringLiteral("commons"),
             {FakeWebServer::json(FakeWebServer::searchResults({QStringLiteral("File:Hours.jpg"),
                                                                QStringLiteral("File:Other.jpg")})),
              FakeWebServer::json(FakeWebServer::imageInfo(s.serviceUrl(QStringLiteral("upload"))
                                                           + QStringLiteral("/commons/Hours.png")))});
}

void uploads(FakeWebServer &s)
{
    s.on(QStringLiteral("upload"), [](const FakeWebServer::Request &r) {
        if (r.pathAndQuery == "/commons/Hours.png")
            return FakeWebServer::image(FakeWebServer::png(FakeWebServer::solidImage(commonsGreen)));
        if (r.pathAndQuery == "/thumb/Hours.png")
            return FakeWebServer::image(FakeWebServer::png(FakeWebServer::solidImage(thumbBlue)));
        if (r.pathAndQuery == "/cover.png")
            return FakeWebServer::image(FakeWebServer::png(FakeWebServer::solidImage(coverRed)));
        return FakeWebServer::status(404);
    });
}

void releaseFound(FakeWebServer &s)
{
    s.script(QStringLiteral("mb"),
             {FakeWebServer::json(FakeWebServer::releases({QStringLiteral("rel-1"), QStringLiteral("rel-2")}))});
}

Reply cover()
{
    return FakeWebServer::image(FakeWebServer::png(FakeWebServer::solidImage(coverRed)));
}

double gap(const FakeWebServer &s, int from, int to)
{
    return s.requests().at(to).time - s.requests().at(from).time;
}

} // namespace

class TestOnlineArtwork : public QObject
{
    Q_OBJECT

    FakeWebServer m_server;
    online::Session m_session;

    online::Session session(ArtworkSession::Limits limits = {})
    {
        return std::make_shared<ArtworkSession>(servicesOf(m_server), limits);
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_server.start()); }

    void init()
    {
        m_server.reset();
        m_server.clearRequests();
        uploads(m_server);
        m_session = session();
    }

    void albumSequences_data()
    {
        QTest::addColumn<Setup>("setup");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<QColor>("color"); // invalid: no picture

        QTest::newRow("release found, cover present")
            << Setup([](FakeWebServer &s) {
                   releaseFound(s);
                   s.script(QStringLiteral("caa"), {cover()});
                   commonsAnswers(s);
               })
            << QStringList{mbQuery, caaFront} << coverRed;
        QTest::newRow("release found, no cover")
            << Setup([](FakeWebServer &s) {
                   releaseFound(s);
                   s.script(QStringLiteral("caa"), {FakeWebServer::status(404)});
                   commonsAnswers(s);
               })
            << QStringList{mbQuery, caaFront, commonsAlbumSearch, commonsInfo, commonsFile} << commonsGreen;
        QTest::newRow("cover that is no picture")
            << Setup([](FakeWebServer &s) {
                   releaseFound(s);
                   s.script(QStringLiteral("caa"), {FakeWebServer::image("<html>not a picture</html>")});
                   commonsAnswers(s);
               })
            << QStringList{mbQuery, caaFront, commonsAlbumSearch, commonsInfo, commonsFile} << commonsGreen;
        QTest::newRow("cover redirected to the file host")
            << Setup([](FakeWebServer &s) {
                   releaseFound(s);
                   s.script(QStringLiteral("caa"),
                            {FakeWebServer::redirect((s.serviceUrl(QStringLiteral("upload")) + "/cover.png").toUtf8())});
               })
            << QStringList{mbQuery, caaFront, QStringLiteral("upload /cover.png")} << coverRed;
        QTest::newRow("no release")
            << Setup([](FakeWebServer &s) {
                   s.script(QStringLiteral("mb"), {FakeWebServer::json(FakeWebServer::releases({}))});
                   commonsAnswers(s);
               })
            << QStringList{mbQuery, commonsAlbumSearch, commonsInfo, commonsFile} << commonsGreen;
        QTest::newRow("rate limited (503)")
            << Setup([](FakeWebServer &s) {
                   // A body that would decode must not count: only a 200 does.
                   s.script(QStringLiteral("mb"),
                            {FakeWebServer::json(FakeWebServer::releases({QStringLiteral("rel-1")}), 503)});
                   commonsAnswers(s);
               })
            << QStringList{mbQuery, commonsAlbumSearch, commonsInfo, commonsFile} << commonsGreen;
        QTest::newRow("invalid JSON")
            << Setup([](FakeWebServer &s) {
                   s.script(QStringLiteral("mb"), {FakeWebServer::invalidJson()});
                   commonsAnswers(s);
               })
            << QStringList{mbQuery, commonsAlbumSearch, commonsInfo, commonsFile} << commonsGreen;
        QTest::newRow("release without id")
            << Setup([](FakeWebServer &s) {
                   s.script(QStringLiteral("mb"), {FakeWebServer::json("{\"releases\":[{\"title\":\"x\"}]}")});
                   commonsAnswers(s);
               })
            << QStringList{mbQuery, commonsAlbumSearch, commonsInfo, commonsFile} << commonsGreen;
        QTest::newRow("no Commons hit")
            << Setup([](FakeWebServer &s) {
                   s.script(QStringLiteral("mb"), {FakeWebServer::json(FakeWebServer::releases({}))});
                   s.script(QStringLiteral("commons"), {FakeWebServer::json(FakeWebServer::searchResults({}))});
               })
            << QStringList{mbQuery, commonsAlbumSearch} << QColor();
        QTest::newRow("Commons page without imageinfo")
            << Setup([](FakeWebServer &s) {
                   s.script(QStringLiteral("mb"), {FakeWebServer::json(FakeWebServer::releases({}))});
                   s.script(QStringLiteral("commons"),
                            {FakeWebServer::json(FakeWebServer::searchResults({QStringLiteral("File:Hours.jpg")})),
                             FakeWebServer::json(FakeWebServer::imageInfo(std::nullopt))});
               })
            << QStringList{mbQuery, commonsAlbumSearch, commonsInfo} << QColor();
        QTest::newRow("Commons answers with an error status but a usable body")
            << Setup([](FakeWebServer &s) {
                   s.script(QStringLiteral("mb"), {FakeWebServer::status(404)});
                   s.script(QStringLiteral("commons"),
                            {FakeWebServer::json(FakeWebServer::searchResults({QStringLiteral("File:Hours.jpg")}), 500),
                             FakeWebServer::json(FakeWebServer::imageInfo(s.serviceUrl(QStringLiteral("upload"))
                                                                          + QStringLiteral("/commons/Hours.png")),
                                                 404)});
               })
            << QStringList{mbQuery, commonsAlbumSearch, commonsInfo, commonsFile} << commonsGreen;
    }

    void albumSequences()
    {
        QFETCH(Setup, setup);
        QFETCH(QStringList, expected);
        QFETCH(QColor, color);
        setup(m_server);

        const std::optional<QImage> image = QCoro::waitFor(online::onlineAlbumArt(
            m_session, QStringLiteral("The Quiet Hours"), QStringLiteral("Low Tide"), CancelToken()));

        QCOMPARE(trail(m_server), expected);
        if (color.isValid())
            QVERIFY(looksLike(image, color, 0));
        else
            QVERIFY(!image);
        // The Cover Art Archive is asked 1.1 s after the search; the Commons
        // fallback follows whatever came before at once.
        for (int i = 1; i < expected.size(); ++i) {
            if (expected[i] == caaFront)
                QVERIFY2(gap(m_server, i - 1, i) >= 1.1, qPrintable(QString::number(gap(m_server, i - 1, i))));
            else
                QVERIFY2(gap(m_server, i - 1, i) < 0.5, qPrintable(expected[i]));
        }
    }

    void artistSequences_data()
    {
        QTest::addColumn<Setup>("setup");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<QColor>("color");

        const auto thumbnail = [](FakeWebServer &s) {
            return FakeWebServer::json(FakeWebServer::pageImages(s.serviceUrl(QStringLiteral("upload"))
                                                                 + QStringLiteral("/thumb/Hours.png")));
        };
        QTest::newRow("thumbnail present")
            << Setup([thumbnail](FakeWebServer &s) {
                   s.script(QStringLiteral("wiki"), {thumbnail(s)});
                   commonsAnswers(s);
               })
            << QStringList{wikiQuery, thumbFile} << thumbBlue;
        QTest::newRow("thumbnail present, status not looked at")
            << Setup([thumbnail](FakeWebServer &s) {
                   Reply r = thumbnail(s);
                   r.status = 404;
                   s.script(QStringLiteral("wiki"), {r});
               })
            << QStringList{wikiQuery, thumbFile} << thumbBlue;
        QTest::newRow("missing page: no thumbnail")
            << Setup([](FakeWebServer &s) {
                   s.script(QStringLiteral("wiki"), {FakeWebServer::json(FakeWebServer::pageImages(std::nullopt))});
                   commonsAnswers(s);
               })
            << QStringList{wikiQuery, commonsArtistSearch, commonsInfo, commonsFile} << commonsGreen;
        QTest::newRow("thumbnail without source fails the whole answer")
            << Setup([](FakeWebServer &s) {
                   s.script(QStringLiteral("wiki"),
                            {FakeWebServer::json("{\"query\":{\"pages\":{\"1\":{\"thumbnail\":{\"width\":5}}}}}")});
                   commonsAnswers(s);
               })
            << QStringList{wikiQuery, commonsArtistSearch, commonsInfo, commonsFile} << commonsGreen;
        QTest::newRow("thumbnail that is not on the web")
            << Setup([](FakeWebServer &s) {
                   s.script(QStringLiteral("wiki"), {FakeWebServer::json(FakeWebServer::pageImages(
                                                        QStringLiteral("file:///etc/hostname")))});
                   commonsAnswers(s);
               })
            << QStringList{wikiQuery, commonsArtistSearch, commonsInfo, commonsFile} << commonsGreen;
        QTest::newRow("Wikipedia down, Commons empty")
            << Setup([](FakeWebServer &s) {
                   s.script(QStringLiteral("wiki"), {FakeWebServer::status(503)});
                   s.script(QStringLiteral("commons"), {FakeWebServer::json(FakeWebServer::searchResults({}))});
               })
            << QStringList{wikiQuery, commonsArtistSearch} << QColor();
        QTest::newRow("Commons file URL is no URL")
            << Setup([](FakeWebServer &s) {
                   s.script(QStringLiteral("wiki"), {FakeWebServer::json("{\"query\":{\"pages\":{}}}")});
                   s.script(QStringLiteral("commons"),
                            {FakeWebServer::json(FakeWebServer::searchResults({QStringLiteral("File:Hours.jpg")})),
                             FakeWebServer::json(FakeWebServer::imageInfo(QStringLiteral("http://exa mple/%%")))});
               })
            << QStringList{wikiQuery, commonsArtistSearch, commonsInfo} << QColor();
    }

    void artistSequences()
    {
        QFETCH(Setup, setup);
        QFETCH(QStringList, expected);
        QFETCH(QColor, color);
        setup(m_server);

        const std::optional<QImage> image =
            QCoro::waitFor(online::onlineArtistImage(m_session, QStringLiteral("The Quiet Hours"), CancelToken()));

        QCOMPARE(trail(m_server), expected);
        if (color.isValid())
            QVERIFY(looksLike(image, color, 0));
        else
            QVERIFY(!image);
    }

    // Names go into the query exactly: & + = and quotation marks encoded, so
    // each name stays one query value; non-ASCII letters as UTF-8 bytes; the
    // kept characters untouched.
    void exactAddresses_data()
    {
        QTest::addColumn<std::optional<QString>>("artist");
        QTest::addColumn<std::optional<QString>>("album");
        QTest::addColumn<QString>("musicBrainz");
        QTest::addColumn<QString>("commons");

        QTest::newRow("ampersand, plus, equals")
            << std::optional(QStringLiteral("Salt & Cedar")) << std::optional(QStringLiteral("1+1=2"))
            << QStringLiteral("artist:%22Salt%20%26%20Cedar%22%20AND%20release:%221%2B1%3D2%22")
            << QStringLiteral("Salt%20%26%20Cedar%201%2B1%3D2%20album%20cover");
        QTest::newRow("quotation marks are not escaped")
            << std::optional(QStringLiteral("The \"Band\"")) << std::optional(QStringLiteral("a\"b"))
            << QStringLiteral("artist:%22The%20%22Band%22%22%20AND%20release:%22a%22b%22")
            << QStringLiteral("The%20%22Band%22%20a%22b%20album%20cover");
        QTest::newRow("non-ASCII letters")
            << std::optional(QStringLiteral("Bj\u00f6rk \u00c5sa")) << std::optional(QStringLiteral("\u65e5\u672c"))
            << QStringLiteral("artist:%22Bj%C3%B6rk%20%C3%85sa%22%20AND%20release:%22%E6%97%A5%E6%9C%AC%22")
            << QStringLiteral("Bj%C3%B6rk%20%C3%85sa%20%E6%97%A5%E6%9C%AC%20album%20cover");
        QTest::newRow("kept characters")
            << std::optional(QStringLiteral("-._~!$'()*,;:@/?")) << std::optional<QString>()
            << QStringLiteral("artist:%22-._~!$'()*,;:@/?%22")
            << QStringLiteral("-._~!$'()*,;:@/?%20album%20cover");
        QTest::newRow("everything else encoded")
            << std::optional<QString>() << std::optional(QStringLiteral("#%[]{}<>\\^`|\t"))
            << QStringLiteral("release:%22%23%25%5B%5D%7B%7D%3C%3E%5C%5E%60%7C%09%22")
            << QStringLiteral("%23%25%5B%5D%7B%7D%3C%3E%5C%5E%60%7C%09%20album%20cover");
        QTest::newRow("only an album")
            << std::optional<QString>() << std::optional(QStringLiteral("Low Tide"))
            << QStringLiteral("release:%22Low%20Tide%22") << QStringLiteral("Low%20Tide%20album%20cover");
        QTest::newRow("neither name: no MusicBrainz request")
            << std::optional<QString>() << std::optional<QString>() << QString()
            << QStringLiteral("album%20cover");
    }

    void exactAddresses()
    {
        QFETCH(std::optional<QString>, artist);
        QFETCH(std::optional<QString>, album);
        QFETCH(QString, musicBrainz);
        QFETCH(QString, commons);
        m_server.script(QStringLiteral("mb"), {FakeWebServer::json(FakeWebServer::releases({}))});

        QVERIFY(!QCoro::waitFor(online::onlineAlbumArt(m_session, artist, album, CancelToken())));

        QStringList expected;
        if (!musicBrainz.isEmpty())
            expected << QStringLiteral("/mb/ws/2/release/?query=") + musicBrainz + QStringLiteral("&fmt=json&limit=5");
        expected << QStringLiteral("/commons/w/api.php?action=query&list=search&srsearch=") + commons
                        + QStringLiteral("&srnamespace=6&format=json&srlimit=3");
        QStringList sent;
        for (const FakeWebServer::Request &r : m_server.requests())
            sent << QString::fromLatin1(r.target);
        QCOMPARE(sent, expected);
    }

    void exactArtistAndTitleAddresses()
    {
        const QString name = QStringLiteral("Salt & Cedar = M\u00fcller + \"Co\"");
        const QString title = QStringLiteral("File:Salt & Cedar (2019) #1.jpg");
        m_server.script(QStringLiteral("commons"),
                        {FakeWebServer::json(FakeWebServer::searchResults({title})),
                         FakeWebServer::json(FakeWebServer::imageInfo(std::nullopt))});

        QVERIFY(!QCoro::waitFor(online::onlineArtistImage(m_session, name, CancelToken())));

        const QByteArray encodedName = "Salt%20%26%20Cedar%20%3D%20M%C3%BCller%20%2B%20%22Co%22";
        QStringList sent;
        for (const FakeWebServer::Request &r : m_server.requests())
            sent << QString::fromLatin1(r.target);
        QCOMPARE(sent, (QStringList{
            QString::fromLatin1("/wiki/w/api.php?action=query&titles=" + encodedName
                                + "&prop=pageimages&pithumbsize=500&piprop=thumbnail&format=json"),
            QString::fromLatin1("/commons/w/api.php?action=query&list=search&srsearch=" + encodedName
                                + "&srnamespace=6&format=json&srlimit=5"),
            QStringLiteral("/commons/w/api.php?action=query&titles=File:Salt%20%26%20Cedar%20(2019)%20%231.jpg"
                           "&prop=imageinfo&iiprop=url&format=json")}));
    }

    void everyRequestCarriesTheUserAgent()
    {
        releaseFound(m_server);
        m_server.script(QStringLiteral("caa"), {FakeWebServer::status(404)});
        commonsAnswers(m_server);
        QVERIFY(QCoro::waitFor(online::onlineAlbumArt(m_session, QStringLiteral("A"), QStringLiteral("B"), {})));
        QCOMPARE(m_server.requests().size(), 5);
        for (const FakeWebServer::Request &r : m_server.requests()) {
            QCOMPARE(r.headers.value("user-agent"), QByteArray("Tarnwell/1.0 (") + contactUrl + ')');
            QVERIFY(!r.headers.contains("cookie"));
        }
    }

    void slowAnswerStillCounts()
    {
        m_server.script(QStringLiteral("wiki"),
                        {FakeWebServer::slow(FakeWebServer::json(FakeWebServer::pageImages(
                                                 m_server.serviceUrl(QStringLiteral("upload")) + "/thumb/Hours.png")),
                                             1200)});
        const auto s = session({std::chrono::milliseconds(800), 32 << 20});
        // The time-out counts silence, not the whole exchange: 1.2 s of waiting
        // for the first byte is longer than 0.8 s and fails...
        QVERIFY(!QCoro::waitFor(online::wikipediaArtistImage(s, QStringLiteral("X"), {})));
        // ...while within the time-out the answer is used.
        m_server.script(QStringLiteral("wiki"),
                        {FakeWebServer::slow(FakeWebServer::json(FakeWebServer::pageImages(
                                                 m_server.serviceUrl(QStringLiteral("upload")) + "/thumb/Hours.png")),
                                             400)});
        QVERIFY(looksLike(QCoro::waitFor(online::wikipediaArtistImage(s, QStringLiteral("X"), {})), thumbBlue, 0));
    }

    // Hostile or broken answers end in nothing, quickly and without taking memory.
    void hostileAnswers_data()
    {
        QTest::addColumn<Setup>("setup");

        QTest::newRow("body declared over 32 MiB") << Setup([](FakeWebServer &s) {
            s.script(QStringLiteral("caa"), {FakeWebServer::oversized(40LL << 20)});
        });
        QTest::newRow("endless body") << Setup([](FakeWebServer &s) {
            s.script(QStringLiteral("caa"), {FakeWebServer::endless()});
        });
        QTest::newRow("image bomb") << Setup([](FakeWebServer &s) {
            s.script(QStringLiteral("caa"), {FakeWebServer::image(FakeWebServer::imageBomb())});
        });
        QTest::newRow("redirect to a local file") << Setup([](FakeWebServer &s) {
            s.script(QStringLiteral("caa"), {FakeWebServer::redirect("file:///etc/hostname")});
        });
        QTest::newRow("redirect to another scheme") << Setup([](FakeWebServer &s) {
            s.script(QStringLiteral("caa"), {FakeWebServer::redirect("ftp://127.0.0.1/cover.png")});
        });
        QTest::newRow("empty body") << Setup([](FakeWebServer &s) {
            FakeWebServer::Reply r = FakeWebServer::oversized(4096);
            r.streamBytes = 0;
            r.declareLength = false;
            s.script(QStringLiteral("caa"), {r});
        });
    }

    void hostileAnswers()
    {
        QFETCH(Setup, setup);
        setup(m_server);
        QElapsedTimer clock;
        clock.start();
        QVERIFY(!QCoro::waitFor(online::coverArtFront(m_session, QStringLiteral("rel-1"), {})));
        QVERIFY2(clock.elapsed() < 5000, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(m_server.requestsFor(QStringLiteral("upload")).size(), 0);
    }

    void imageBombFallsBackToCommons()
    {
        releaseFound(m_server);
        m_server.script(QStringLiteral("caa"), {FakeWebServer::image(FakeWebServer::imageBomb(60000, 60000))});
        commonsAnswers(m_server);
        QVERIFY(looksLike(QCoro::waitFor(online::onlineAlbumArt(m_session, QStringLiteral("The Quiet Hours"),
                                                                QStringLiteral("Low Tide"), {})),
                          commonsGreen, 0));
    }

    void silentServerTimesOutAndTheChainGoesOn()
    {
        m_server.script(QStringLiteral("wiki"), {FakeWebServer::neverAnswer()});
        commonsAnswers(m_server);
        const auto s = session({std::chrono::milliseconds(300), 32 << 20});
        QElapsedTimer clock;
        clock.start();
        QVERIFY(looksLike(QCoro::waitFor(online::onlineArtistImage(s, QStringLiteral("The Quiet Hours"), {})),
                          commonsGreen, 0));
        QVERIFY(clock.elapsed() >= 300);
        QVERIFY(clock.elapsed() < 3000);
        QCOMPARE(trail(m_server), (QStringList{wikiQuery, commonsArtistSearch, commonsInfo, commonsFile}));
    }

    // Cancelled during the pause, the chain finishes at once and sends nothing more.
    void cancelledDuringThePause()
    {
        releaseFound(m_server);
        m_server.script(QStringLiteral("caa"), {cover()});
        commonsAnswers(m_server);
        const CancelToken cancel = CancelToken::create();
        QTimer::singleShot(300, [cancel] { cancel.cancel(); });
        QElapsedTimer clock;
        clock.start();
        QVERIFY(!QCoro::waitFor(online::onlineAlbumArt(m_session, QStringLiteral("The Quiet Hours"),
                                                       QStringLiteral("Low Tide"), cancel)));
        QVERIFY(clock.elapsed() < 1000);
        QCOMPARE(trail(m_server), QStringList{mbQuery});
    }

    void cancelledDuringARequest()
    {
        m_server.script(QStringLiteral("wiki"), {FakeWebServer::neverAnswer()});
        commonsAnswers(m_server);
        const CancelToken cancel = CancelToken::create();
        QTimer::singleShot(200, [cancel] { cancel.cancel(); });
        QElapsedTimer clock;
        clock.start();
        QVERIFY(!QCoro::waitFor(online::onlineArtistImage(m_session, QStringLiteral("The Quiet Hours"), cancel)));
        QVERIFY(clock.elapsed() < 1000);
        QCOMPARE(trail(m_server), QStringList{wikiQuery});
    }
};

QTEST_GUILESS_MAIN(TestOnlineArtwork)
#include "tst_online_artwork.moc"
