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
using S = FakeWebServer;
using Setup = std::function<void(S &)>;
Q_DECLARE_METATYPE(Setup)
Q_DECLARE_METATYPE(S::Reply)

namespace {

const QColor coverRed(220, 20, 20), commonsGreen(20, 200, 40), thumbBlue(30, 40, 230);

const QString mbQuery = QStringLiteral(
    "mb /ws/2/release/?query=artist:%22The%20Quiet%20Hours%22%20AND%20release:%22Low%20Tide%22&fmt=json&limit=5");
const QString caaFront = QStringLiteral("caa /release/rel-1/front");
const QString commonsInfo = QStringLiteral(
    "commons /w/api.php?action=query&titles=File:Hours.jpg&prop=imageinfo&iiprop=url&format=json");
const QString wikiQuery = QStringLiteral(
    "wiki /w/api.php?action=query&titles=The%20Quiet%20Hours&prop=pageimages&pithumbsize=500"
    "&piprop=thumbnail&format=json");
const QStringList toCommons{
    QStringLiteral("commons /w/api.php?action=query&list=search&srsearch=The%20Quiet%20Hours%20Low%20Tide"
                   "%20album%20cover&srnamespace=6&format=json&srlimit=3"),
    commonsInfo, QStringLiteral("upload /commons.png")};
const QString commonsArtistSearch = QStringLiteral(
    "commons /w/api.php?action=query&list=search&srsearch=The%20Quiet%20Hours&srnamespace=6&format=json&srlimit=5");

S::Reply picture(const QColor &c)
{
    return S::image(S::png(S::solidImage(c)));
}

S::Reply found(const QStringList &titles)
{
    return S::json(S::searchResults(titles));
}

Setup mb(const S::Reply &answer, std::optional<S::Reply> cover = {})
{
    return [answer, cover](S &s) {
        s.script(QStringLiteral("mb"), {answer});
        if (cover)
            s.script(QStringLiteral("caa"), {*cover});
    };
}

} // namespace

class TestOnlineArtwork : public QObject
{
    Q_OBJECT

    S m_server;

    online::Lookup lookup(CancelToken cancel = {})
    {
        return {std::make_shared<ArtworkSession>(servicesOf(m_server), ArtworkSession::Limits{}), cancel};
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_server.start()); }

    // Commons finds File:Hours.jpg; the file host serves the pictures.
    void init()
    {
        m_server.reset();
        m_server.script(QStringLiteral("commons"),
                        {found({QStringLiteral("File:Hours.jpg")}),
                         S::json(S::imageInfo(m_server.serviceUrl(QStringLiteral("upload")) + "/commons.png"))});
        m_server.on(QStringLiteral("upload"), [](const S::Request &r) {
            return picture(r.pathAndQuery == "/thumb.png" ? thumbBlue : commonsGreen);
        });
    }

    void chains_data()
    {
        QTest::addColumn<bool>("album"); // or the artist's picture
        QTest::addColumn<Setup>("setup");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<QColor>("color"); // invalid: no picture
        QTest::addColumn<bool>("answered");

        const S::Reply release = S::json(S::releases({QStringLiteral("rel-1")}));
        const S::Reply none = S::json(S::releases({}));
        QTest::newRow("release found, cover present")
            << true << mb(release, picture(coverRed)) << QStringList{mbQuery, caaFront} << coverRed << true;
        QTest::newRow("release found, no cover")
            << true << mb(release) << QStringList{mbQuery, caaFront} + toCommons << commonsGreen << true;
        QTest::newRow("no release") << true << mb(none) << QStringList{mbQuery} + toCommons << commonsGreen << true;
        QTest::newRow("rate limited: only a 200 counts")
            << true << mb(S::json(release.body, 503)) << QStringList{mbQuery} + toCommons << commonsGreen << false;
        QTest::newRow("Commons page without imageinfo") << true << Setup([none](S &s) {
            mb(none)(s);
            s.script(QStringLiteral("commons"), {found({QStringLiteral("File:Hours.jpg")}), S::json(S::imageInfo({}))});
        }) << QStringList{mbQuery, toCommons[0], commonsInfo} << QColor() << true;
        QTest::newRow("release whose cover is a bomb")
            << true << mb(release, S::image(S::imageBomb(60000, 60000))) << QStringList{mbQuery, caaFront} + toCommons
            << commonsGreen << true;
        QTest::newRow("MusicBrainz unreachable")
            << true << mb(S::redirect("http://127.0.0.1:9/closed")) << QStringList{mbQuery} + toCommons
            << commonsGreen << false;
        QTest::newRow("artist: thumbnail, whatever the status") << false << Setup([](S &s) {
            const QString thumb = s.serviceUrl(QStringLiteral("upload")) + "/thumb.png";
            s.script(QStringLiteral("wiki"), {S::json(S::pageImages(thumb), 404)});
        }) << QStringList{wikiQuery, QStringLiteral("upload /thumb.png")} << thumbBlue << true;
        QTest::newRow("artist: missing page") << false << Setup([](S &s) {
            s.script(QStringLiteral("wiki"), {S::json(S::pageImages({}))});
        }) << QStringList{wikiQuery, commonsArtistSearch, commonsInfo, toCommons[2]} << commonsGreen << true;
        QTest::newRow("artist: Wikipedia down, Commons empty") << false << Setup([](S &s) {
            s.script(QStringLiteral("wiki"), {S::status(503)});
            s.script(QStringLiteral("commons"), {found({})});
        }) << QStringList{wikiQuery, commonsArtistSearch} << QColor() << true;
    }

    void chains()
    {
        QFETCH(bool, album);
        QFETCH(Setup, setup);
        QFETCH(QColor, color);
        setup(m_server);
        const online::Lookup l = lookup();
        const QString artist = QStringLiteral("The Quiet Hours");
        const std::optional<QImage> image = QCoro::waitFor(
            album ? online::onlineAlbumArt(l, artist, QStringLiteral("Low Tide")) : online::onlineArtistImage(l, artist));
        QVERIFY(color.isValid() ? looksLike(image, color, 0) : !image);
        QTEST(trail(m_server), "expected");
        if (album)
            QTEST(l.wasAnswered(), "answered");
        const QList<S::Request> sent = m_server.requests();
        for (qsizetype i = 0; i < sent.size(); ++i) {
            QCOMPARE(sent[i].userAgent, QByteArray("Tarnwell/1.0 (") + contactUrl + ')');
            // The Cover Art Archive is asked no sooner than 1.1 s after the search.
            if (sent[i].service == u"caa")
                QVERIFY(sent[i].time - sent[i - 1].time >= 1.1);
        }
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
        mb(S::json(S::releases({releaseID})), picture(coverRed))(m_server);
        QVERIFY(QCoro::waitFor(online::onlineAlbumArt(lookup(), artist, std::nullopt)));
        QTEST(trail(m_server), "expected");
    }

    // Whatever a server sends, a request ends within its deadline and its
    // memory: a drip that keeps the idle clock happy, a body over the cap of
    // its kind (announced or not), silence. A picture larger than a JSON
    // answer may be shows the caps go by kind.
    void limits_data()
    {
        QTest::addColumn<S::Reply>("reply");
        QTest::addColumn<bool>("json");
        QTest::addColumn<bool>("arrives");
        // Far more than the caps, so that the server sees the client hang up.
        QTest::newRow("JSON drip") << S::stream(1 << 20, false, 50) << true << false;
        QTest::newRow("picture drip with a length") << S::stream(1 << 20, true, 50) << false << false;
        QTest::newRow("JSON announced over its cap") << S::stream(64 << 20, true) << true << false;
        QTest::newRow("picture over its cap, unannounced") << S::stream(64 << 20, false) << false << false;
        QTest::newRow("picture above the JSON cap") << S::stream(256 * 1024, true) << false << true;
        QTest::newRow("JSON at its cap") << S::stream(64 * 1024, false) << true << true;
        QTest::newRow("silence") << S::silence() << true << false;
        QTest::newRow("redirect to a file") << S::redirect("file:///etc/hostname") << false << false;
    }

    void limits()
    {
        QFETCH(S::Reply, reply);
        QFETCH(bool, json);
        QFETCH(bool, arrives);
        m_server.script(QStringLiteral("caa"), {reply});
        // Long enough for what must arrive to arrive on a busy machine.
        ArtworkSession session(servicesOf(m_server), {5s, 5s, 5s, 64 * 1024, 256 * 1024});
        const auto kind = json ? ArtworkSession::Kind::Json : ArtworkSession::Kind::Picture;
        const auto response = QCoro::waitFor(session.get(QUrl(m_server.serviceUrl(QStringLiteral("caa")) + "/x"), kind, {}));
        QCOMPARE(response.has_value(), arrives);
        if (reply.streamBytes > 0 && !arrives)
            QTRY_COMPARE_WITH_TIMEOUT(m_server.cutStreams(), 1, 60000);
    }

    // Cancelled during a request, the chain fails the rest at once without
    // sending them.
    void cancelledDuringARequest()
    {
        m_server.script(QStringLiteral("wiki"), {S::silence()});
        const CancelToken cancel = CancelToken::create();
        QTimer::singleShot(200, [cancel] { cancel.cancel(); });
        const online::Lookup l = lookup(cancel);
        QVERIFY(!QCoro::waitFor(online::onlineArtistImage(l, QStringLiteral("The Quiet Hours"))));
        QCOMPARE(trail(m_server), QStringList{wikiQuery});
        QVERIFY(!l.wasAnswered());
    }
};

QTEST_GUILESS_MAIN(TestOnlineArtwork)
#include "tst_online_artwork.moc"
