// SPDX-License-Identifier: GPL-3.0-or-later
// The online chains against the loopback stand-in for the services: which
// requests go out, in which order, to which exact addresses, what comes back,
// and what a slow, huge or silent answer costs.
#include "ArtworkTestUtil.h"
#include "artwork/OnlineArtwork.h"

#include <QCoro/QCoroTask>
#include <QTest>
#include <QTimer>

using namespace artworktest;
using namespace std::chrono_literals;
using Reply = FakeWebServer::Reply;
using Setup = std::function<void(FakeWebServer &)>;
Q_DECLARE_METATYPE(Setup)
Q_DECLARE_METATYPE(FakeWebServer::Reply)

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
const QString commonsFile = QStringLiteral("upload /commons.png");
const QString thumbFile = QStringLiteral("upload /thumb.png");

Reply picture(const QColor &c)
{
    return FakeWebServer::image(FakeWebServer::png(FakeWebServer::solidImage(c)));
}

// Commons finds File:Hours.jpg; the file host serves the pictures.
void commonsAndUploads(FakeWebServer &s)
{
    s.script(QStringLiteral("commons"),
             {FakeWebServer::json(FakeWebServer::searchResults({QStringLiteral("File:Hours.jpg")})),
              FakeWebServer::json(FakeWebServer::imageInfo(s.serviceUrl(QStringLiteral("upload")) + "/commons.png"))});
    s.on(QStringLiteral("upload"), [](const FakeWebServer::Request &r) {
        return r.pathAndQuery == "/thumb.png" ? picture(thumbBlue) : picture(commonsGreen);
    });
}

void release(FakeWebServer &s)
{
    s.script(QStringLiteral("mb"), {FakeWebServer::json(FakeWebServer::releases({QStringLiteral("rel-1")}))});
}

void noRelease(FakeWebServer &s)
{
    s.script(QStringLiteral("mb"), {FakeWebServer::json(FakeWebServer::releases({}))});
}

} // namespace

class TestOnlineArtwork : public QObject
{
    Q_OBJECT

    FakeWebServer m_server;

    online::Lookup lookup(ArtworkSession::Limits limits = {}, CancelToken cancel = {})
    {
        return {std::make_shared<ArtworkSession>(servicesOf(m_server), limits), cancel};
    }

    void checkResult(const std::optional<QImage> &image, const QColor &color)
    {
        if (color.isValid())
            QVERIFY(looksLike(image, color, 0));
        else
            QVERIFY(!image);
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_server.start()); }

    void init()
    {
        m_server.reset();
        commonsAndUploads(m_server);
    }

    void albumChains_data()
    {
        QTest::addColumn<Setup>("setup");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<QColor>("color"); // invalid: no picture
        QTest::addColumn<bool>("answered");

        const QStringList toCommons{commonsAlbumSearch, commonsInfo, commonsFile};
        QTest::newRow("release found, cover present")
            << Setup([](FakeWebServer &s) {
                   release(s);
                   s.script(QStringLiteral("caa"), {picture(coverRed)});
               })
            << QStringList{mbQuery, caaFront} << coverRed << true;
        QTest::newRow("release found, no cover")
            << Setup([](FakeWebServer &s) { release(s); })
            << QStringList{mbQuery, caaFront} + toCommons << commonsGreen << true;
        QTest::newRow("no release") << Setup(noRelease) << QStringList{mbQuery} + toCommons << commonsGreen << true;
        QTest::newRow("rate limited: only a 200 counts")
            << Setup([](FakeWebServer &s) {
                   s.script(QStringLiteral("mb"),
                            {FakeWebServer::json(FakeWebServer::releases({QStringLiteral("rel-1")}), 503)});
               })
            << QStringList{mbQuery} + toCommons << commonsGreen << false;
        QTest::newRow("Commons page without imageinfo")
            << Setup([](FakeWebServer &s) {
                   noRelease(s);
                   s.script(QStringLiteral("commons"),
                            {FakeWebServer::json(FakeWebServer::searchResults({QStringLiteral("File:Hours.jpg")})),
                             FakeWebServer::json(FakeWebServer::imageInfo(std::nullopt))});
               })
            << QStringList{mbQuery, commonsAlbumSearch, commonsInfo} << QColor() << true;
        QTest::newRow("release whose cover is a bomb")
            << Setup([](FakeWebServer &s) {
                   release(s);
                   s.script(QStringLiteral("caa"), {FakeWebServer::image(FakeWebServer::imageBomb(60000, 60000))});
               })
            << QStringList{mbQuery, caaFront} + toCommons << commonsGreen << true;
        QTest::newRow("MusicBrainz unreachable")
            << Setup([](FakeWebServer &s) {
                   s.script(QStringLiteral("mb"), {FakeWebServer::redirect("http://127.0.0.1:9/closed")});
               })
            << QStringList{mbQuery} + toCommons << commonsGreen << false;
    }

    void albumChains()
    {
        QFETCH(Setup, setup);
        QFETCH(QStringList, expected);
        QFETCH(QColor, color);
        QFETCH(bool, answered);
        setup(m_server);

        const online::Lookup l = lookup();
        checkResult(QCoro::waitFor(online::onlineAlbumArt(l, QStringLiteral("The Quiet Hours"),
                                                          QStringLiteral("Low Tide"))),
                    color);
        QCOMPARE(trail(m_server), expected);
        QCOMPARE(l.wasAnswered(), answered);
        const QList<FakeWebServer::Request> sent = m_server.requests();
        for (qsizetype i = 0; i < sent.size(); ++i) {
            QCOMPARE(sent[i].headers.value("user-agent"), QByteArray("Tarnwell/1.0 (") + contactUrl + ')');
            // The Cover Art Archive is asked no sooner than 1.1 s after the search.
            if (sent[i].service == u"caa")
                QVERIFY(sent[i].time - sent[i - 1].time >= 1.1);
        }
    }

    void artistChains_data()
    {
        QTest::addColumn<Setup>("setup");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<QColor>("color");

        QTest::newRow("thumbnail, whatever the status") << Setup([](FakeWebServer &s) {
            const QString thumb = s.serviceUrl(QStringLiteral("upload")) + "/thumb.png";
            s.script(QStringLiteral("wiki"), {FakeWebServer::json(FakeWebServer::pageImages(thumb), 404)});
        }) << QStringList{wikiQuery, thumbFile} << thumbBlue;
        QTest::newRow("missing page") << Setup([](FakeWebServer &s) {
            s.script(QStringLiteral("wiki"), {FakeWebServer::json(FakeWebServer::pageImages(std::nullopt))});
        }) << QStringList{wikiQuery, commonsArtistSearch, commonsInfo, commonsFile} << commonsGreen;
        QTest::newRow("Wikipedia down, Commons empty") << Setup([](FakeWebServer &s) {
            s.script(QStringLiteral("wiki"), {FakeWebServer::status(503)});
            s.script(QStringLiteral("commons"), {FakeWebServer::json(FakeWebServer::searchResults({}))});
        }) << QStringList{wikiQuery, commonsArtistSearch} << QColor();
    }

    void artistChains()
    {
        QFETCH(Setup, setup);
        QFETCH(QStringList, expected);
        QFETCH(QColor, color);
        setup(m_server);
        checkResult(QCoro::waitFor(online::onlineArtistImage(lookup(), QStringLiteral("The Quiet Hours"))), color);
        QCOMPARE(trail(m_server), expected);
    }

    // Every value goes into its address encoded: & + = and quotation marks in a
    // query, so a name stays one value; everything but letters, digits and
    // - . _ ~ in a path segment, so a release id can't climb out of its path.
    void encoding_data()
    {
        QTest::addColumn<QString>("artist");
        QTest::addColumn<QString>("releaseID");
        QTest::addColumn<QStringList>("expected");

        QTest::newRow("query values and a path segment")
            << QStringLiteral("Salt & Cedar = M\u00fcller + \"Co\"") << QStringLiteral("../../admin?x=1#y")
            << QStringList{QStringLiteral("mb /ws/2/release/?query=artist:%22Salt%20%26%20Cedar%20%3D%20M%C3%BCller"
                                          "%20%2B%20%22Co%22%22&fmt=json&limit=5"),
                           QStringLiteral("caa /release/..%2F..%2Fadmin%3Fx%3D1%23y/front")};
        QTest::newRow("kept characters")
            << QStringLiteral("-._~!$'()*,;:@/?") << QStringLiteral("a b/\u65e5")
            << QStringList{QStringLiteral("mb /ws/2/release/?query=artist:%22-._~!$'()*,;:@/?%22&fmt=json&limit=5"),
                           QStringLiteral("caa /release/a%20b%2F%E6%97%A5/front")};
        QTest::newRow("everything else")
            << QStringLiteral("#%[]{}<>\\^`|\t") << QStringLiteral("-._~")
            << QStringList{QStringLiteral("mb /ws/2/release/?query=artist:%22%23%25%5B%5D%7B%7D%3C%3E%5C%5E%60%7C%09%22"
                                          "&fmt=json&limit=5"),
                           QStringLiteral("caa /release/-._~/front")};
    }

    void encoding()
    {
        QFETCH(QString, artist);
        QFETCH(QString, releaseID);
        QFETCH(QStringList, expected);
        m_server.script(QStringLiteral("caa"), {picture(coverRed)});
        m_server.script(QStringLiteral("mb"), {FakeWebServer::json(FakeWebServer::releases({releaseID}))});
        QVERIFY(QCoro::waitFor(online::onlineAlbumArt(lookup(), artist, std::nullopt)));
        QCOMPARE(trail(m_server), expected);
    }

    // Whatever a server sends, a request ends within its deadline and its
    // memory: a drip that keeps the idle clock happy, a body over the cap of
    // its kind (announced or not), silence. The limits are shortened so the
    // test waits seconds; a picture larger than a JSON answer may be shows the
    // caps go by kind.
    void limits_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<bool>("json");
        QTest::addColumn<bool>("arrives");

        const qint64 jsonCap = 64 * 1024;
        const qint64 pictureCap = 256 * 1024;
        QTest::newRow("JSON drip") << FakeWebServer::stream(1 << 20, false, 50, 64) << true << false;
        QTest::newRow("picture drip with a length") << FakeWebServer::stream(1 << 20, true, 50, 64) << false << false;
        // Far more than the cap, so that the server sees the client hang up.
        QTest::newRow("JSON announced over its cap") << FakeWebServer::stream(64 << 20, true) << true << false;
        QTest::newRow("JSON over its cap, unannounced") << FakeWebServer::stream(64 << 20, false) << true << false;
        QTest::newRow("picture announced over its cap") << FakeWebServer::stream(64 << 20, true) << false << false;
        QTest::newRow("picture over its cap, unannounced")
            << FakeWebServer::stream(64 << 20, false) << false << false;
        QTest::newRow("picture above the JSON cap") << FakeWebServer::stream(pictureCap, true) << false << true;
        QTest::newRow("JSON at its cap") << FakeWebServer::stream(jsonCap, false) << true << true;
        QTest::newRow("silence") << FakeWebServer::silence() << true << false;
        QTest::newRow("redirect to a file") << FakeWebServer::redirect("file:///etc/hostname") << false << false;
    }

    void limits()
    {
        QFETCH(Reply, reply);
        QFETCH(bool, json);
        QFETCH(bool, arrives);
        m_server.script(QStringLiteral("caa"), {reply});
        ArtworkSession::Limits limits;
        // Long enough for what must arrive to arrive on a busy machine.
        limits.idleTimeout = 5s;
        limits.jsonDeadline = 5s;
        limits.pictureDeadline = 5s;
        limits.maxJsonBytes = 64 * 1024;
        limits.maxPictureBytes = 256 * 1024;
        ArtworkSession session(servicesOf(m_server), limits);

        const auto kind = json ? ArtworkSession::Kind::Json : ArtworkSession::Kind::Picture;
        const auto response =
            QCoro::waitFor(session.get(QUrl(m_server.serviceUrl(QStringLiteral("caa")) + "/x"), kind, {}));
        QCOMPARE(response.has_value(), arrives);
        if (reply.streamBytes > 0 && !arrives)
            QTRY_COMPARE_WITH_TIMEOUT(m_server.cutStreams(), 1, 60000);
    }

    // Cancelled during a request, the chain fails the rest at once without
    // sending them.
    void cancelledDuringARequest()
    {
        m_server.script(QStringLiteral("wiki"), {FakeWebServer::silence()});
        const CancelToken cancel = CancelToken::create();
        QTimer::singleShot(200, [cancel] { cancel.cancel(); });
        const online::Lookup l = lookup({}, cancel);
        QVERIFY(!QCoro::waitFor(online::onlineArtistImage(l, QStringLiteral("The Quiet Hours"))));
        QCOMPARE(trail(m_server), QStringList{wikiQuery});
        QVERIFY(!l.wasAnswered());
    }
};

QTEST_GUILESS_MAIN(TestOnlineArtwork)
#include "tst_online_artwork.moc"
