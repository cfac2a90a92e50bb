// SPDX-License-Identifier: GPL-3.0-or-later
// The online chains against the loopback stand-in for the services: the exact
// requests in order, what comes back, and what a slow, huge or silent answer costs.
#include "ArtworkTestUtil.h"
#include "artwork/OnlineArtwork.h"

#include <QCoro/QCoroTask>
#include <QTest>
#include <QTimer>

using namespace artworktest;
using namespace std::chrono_literals;
using S = FakeWebServer;
using Scripts = QList<std::pair<QString, QList<S::Reply>>>; // service, its replies in order
Q_DECLARE_METATYPE(Scripts)
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

S::Reply picture(const QColor &c) { return S::image(pngOf(c)); }
S::Reply found(const QStringList &titles) { return S::json(searchResults(titles)); }

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

    void init()
    {
        m_server.reset();
        m_server.script(QStringLiteral("commons"),
                        {found({QStringLiteral("File:Hours.jpg")}),
                         S::json(imageInfo(m_server.serviceUrl(QStringLiteral("upload")) + "/commons.png"))});
        m_server.on(QStringLiteral("upload"), [](const S::Request &r) {
            return picture(r.pathAndQuery == "/thumb.png" ? thumbBlue : commonsGreen);
        });
    }

    void chains_data()
    {
        QTest::addColumn<bool>("album"); // or the artist's picture
        QTest::addColumn<Scripts>("scripts");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<QColor>("color"); // invalid: no picture
        QTest::addColumn<bool>("answered");
        const auto row = [](const char *name, bool album, const Scripts &scripts, const QStringList &expected,
                            const QColor &color, bool answered = true) {
            QTest::newRow(name) << album << scripts << expected << color << answered;
        };
        const S::Reply release = S::json(releases({QStringLiteral("rel-1")})), none = S::json(releases({}));
        const QString thumb = m_server.serviceUrl(QStringLiteral("upload")) + "/thumb.png";
        row("release found, cover present", true, {{"mb", {release}}, {"caa", {picture(coverRed)}}},
            {mbQuery, caaFront}, coverRed);
        row("release found, no cover", true, {{"mb", {release}}}, QStringList{mbQuery, caaFront} + toCommons, commonsGreen);
        row("no release", true, {{"mb", {none}}}, QStringList{mbQuery} + toCommons, commonsGreen);
        row("rate limited: only a 200 counts", true, {{"mb", {S::json(release.body, 503)}}},
            QStringList{mbQuery} + toCommons, commonsGreen, false);
        row("Commons page without imageinfo", true,
            {{"mb", {none}}, {"commons", {found({QStringLiteral("File:Hours.jpg")}), S::json(imageInfo({}))}}},
            {mbQuery, toCommons[0], commonsInfo}, QColor());
        row("release whose cover is a bomb", true, {{"mb", {release}}, {"caa", {S::image(S::imageBomb(60000, 60000))}}},
            QStringList{mbQuery, caaFront} + toCommons, commonsGreen);
        row("artist: thumbnail, whatever the status", false, {{"wiki", {S::json(pageImages(thumb), 404)}}},
            {wikiQuery, QStringLiteral("upload /thumb.png")}, thumbBlue);
        row("artist: missing page", false, {{"wiki", {S::json(pageImages({}))}}},
            {wikiQuery, commonsArtistSearch, commonsInfo, toCommons[2]}, commonsGreen);
        row("artist: Wikipedia down, Commons empty", false, {{"wiki", {S::status(503)}}, {"commons", {found({})}}},
            {wikiQuery, commonsArtistSearch}, QColor());
    }

    void chains()
    {
        QFETCH(bool, album);
        QFETCH(Scripts, scripts);
        QFETCH(QColor, color);
        for (const auto &[service, replies] : scripts)
            m_server.script(service, replies);
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

    // A name stays one query value; a release id can't climb out of its path segment.
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
        m_server.script(QStringLiteral("mb"), {S::json(releases({releaseID}))});
        m_server.script(QStringLiteral("caa"), {picture(coverRed)});
        QVERIFY(QCoro::waitFor(online::onlineAlbumArt(lookup(), artist, std::nullopt)));
        QTEST(trail(m_server), "expected");
    }

    // Whatever a server sends, a request ends within its deadline and the cap
    // of its kind: a drip that keeps the idle clock happy, a body too large, silence.
    void limits_data()
    {
        QTest::addColumn<S::Reply>("reply");
        QTest::addColumn<bool>("json");
        QTest::addColumn<bool>("arrives");
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
        m_server.on(QStringLiteral("caa"), [reply](const S::Request &) { return reply; }); // a retry too
        ArtworkSession session(servicesOf(m_server), {5s, 5s, 5s, 64 * 1024, 256 * 1024});
        const auto kind = json ? ArtworkSession::Kind::Json : ArtworkSession::Kind::Picture;
        const auto response = QCoro::waitFor(session.get(QUrl(m_server.serviceUrl(QStringLiteral("caa")) + "/x"), kind, {}));
        QCOMPARE(response.has_value(), arrives);
        if (reply.streamBytes > 0 && !arrives)
            QTRY_VERIFY_WITH_TIMEOUT(m_server.cutStreams() >= 1, 60000);
    }

    // Cancelled during a request, the chain ends at once without sending the rest.
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
