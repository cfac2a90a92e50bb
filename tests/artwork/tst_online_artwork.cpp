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

const QString mbQuery = u"mb /ws/2/release/?query=artist:%22The%20Quiet%20Hours%22%20AND%20release:%22Low%20Tide%22"
                        "&fmt=json&limit=5"_s;
const QString caaFront = u"caa /release/rel-1/front"_s;
const QString commonsInfo = u"commons /w/api.php?action=query&titles=File:Hours.jpg&prop=imageinfo&iiprop=url&format=json"_s;
const QString wikiQuery = u"wiki /w/api.php?action=query&titles=The%20Quiet%20Hours&prop=pageimages&pithumbsize=500"
                          "&piprop=thumbnail&format=json"_s;
const QStringList toCommons{u"commons /w/api.php?action=query&list=search&srsearch=The%20Quiet%20Hours%20Low%20Tide"
                            "%20album%20cover&srnamespace=6&format=json&srlimit=3"_s, commonsInfo, u"upload /commons.png"_s};
const QString commonsArtistSearch = u"commons /w/api.php?action=query&list=search&srsearch=The%20Quiet%20Hours"
                                    "&srnamespace=6&format=json&srlimit=5"_s;

S::Reply picture(const QColor &c) { return S::image(pngOf(c)); }
S::Reply found(const QString &title = {}) { return S::json(searchResults(title)); }

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
        m_server.script(u"commons"_s,
                        {found(u"File:Hours.jpg"_s),
                         S::json(imageInfo(m_server.serviceUrl(u"upload"_s) + "/commons.png"))});
        m_server.on(u"upload"_s, [](const S::Request &r) {
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
        const S::Reply release = S::json(releases(u"rel-1"_s)), none = S::json(releases());
        const QString thumb = m_server.serviceUrl(u"upload"_s) + "/thumb.png";
        row("release found, cover present", true, {{"mb", {release}}, {"caa", {picture(coverRed)}}},
            {mbQuery, caaFront}, coverRed);
        row("release found, no cover", true, {{"mb", {release}}}, QStringList{mbQuery, caaFront} + toCommons, commonsGreen);
        row("no release", true, {{"mb", {none}}}, QStringList{mbQuery} + toCommons, commonsGreen);
        row("rate limited: only a 200 counts", true, {{"mb", {S::json(release.body, 503)}}},
            QStringList{mbQuery} + toCommons, commonsGreen, false);
        row("Commons page without imageinfo", true,
            {{"mb", {none}}, {"commons", {found(u"File:Hours.jpg"_s), S::json(imageInfo())}}},
            {mbQuery, toCommons[0], commonsInfo}, QColor());
        row("release whose cover is a bomb", true, {{"mb", {release}}, {"caa", {S::image(S::imageBomb(60000, 60000))}}},
            QStringList{mbQuery, caaFront} + toCommons, commonsGreen);
        row("artist: thumbnail, whatever the status", false, {{"wiki", {S::json(pageImages(thumb), 404)}}},
            {wikiQuery, u"upload /thumb.png"_s}, thumbBlue);
        row("artist: missing page", false, {{"wiki", {S::json(pageImages())}}},
            {wikiQuery, commonsArtistSearch, commonsInfo, toCommons[2]}, commonsGreen);
        row("artist: Wikipedia down, Commons empty", false, {{"wiki", {S::status(503)}}, {"commons", {found()}}},
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
        const QString artist = u"The Quiet Hours"_s;
        const std::optional<QImage> image = QCoro::waitFor(
            album ? online::onlineAlbumArt(l, artist, u"Low Tide"_s) : online::onlineArtistImage(l, artist));
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
    void encoding()
    {
        m_server.script(u"mb"_s, {S::json(releases(u"../../admin?x=1#y-._~"_s))});
        m_server.script(u"caa"_s, {picture(coverRed)});
        QVERIFY(QCoro::waitFor(online::onlineAlbumArt(lookup(), u"Salt & Cedar = M\u00fcller + \"Co\" #%[]{}<>\\^`|\t"_s, {})));
        QCOMPARE(trail(m_server), (QStringList{u"mb /ws/2/release/?query=artist:%22Salt%20%26%20Cedar%20%3D%20M%C3%BCller"
                                               "%20%2B%20%22Co%22%20%23%25%5B%5D%7B%7D%3C%3E%5C%5E%60%7C%09%22&fmt=json&limit=5"_s,
                                               u"caa /release/..%2F..%2Fadmin%3Fx%3D1%23y-._~/front"_s}));
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
        m_server.on(u"caa"_s, [reply](const S::Request &) { return reply; }); // a retry too
        ArtworkSession session(servicesOf(m_server), {5s, 5s, 5s, 64 * 1024, 256 * 1024});
        const auto kind = json ? ArtworkSession::Kind::Json : ArtworkSession::Kind::Picture;
        const auto response = QCoro::waitFor(session.get(QUrl(m_server.serviceUrl(u"caa"_s) + "/x"), kind, {}));
        QCOMPARE(response.has_value(), arrives);
        if (reply.streamBytes > 0 && !arrives)
            QTRY_VERIFY_WITH_TIMEOUT(m_server.cutStreams() >= 1, 60000);
    }

    // Cancelled during a request, the chain ends at once without sending the rest.
    void cancelledDuringARequest()
    {
        m_server.script(u"wiki"_s, {S::silence()});
        const CancelToken cancel = CancelToken::create();
        QTimer::singleShot(200, [cancel] { cancel.cancel(); });
        const online::Lookup l = lookup(cancel);
        QVERIFY(!QCoro::waitFor(online::onlineArtistImage(l, u"The Quiet Hours"_s)));
        QCOMPARE(trail(m_server), QStringList{wikiQuery});
        QVERIFY(!l.wasAnswered());
    }
};

QTEST_GUILESS_MAIN(TestOnlineArtwork)
#include "tst_online_artwork.moc"
