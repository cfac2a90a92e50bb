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

    void chains()
    {
        const S::Reply release = S::json(releases(u"rel-1"_s)), none = S::json(releases());
        const QString thumb = m_server.serviceUrl(u"upload"_s) + "/thumb.png";
        const struct {
            const char *name;
            bool album; // or the artist's picture
            QList<std::pair<QString, QList<S::Reply>>> scripts; // service, its replies in order
            QStringList expected;
            QColor color; // invalid: no picture
            bool answered = true;
        } cases[] {
            {"release found, cover present", true, {{"mb", {release}}, {"caa", {picture(coverRed)}}}, {mbQuery, caaFront},
             coverRed},
            {"release found, no cover", true, {{"mb", {release}}}, QStringList{mbQuery, caaFront} + toCommons, commonsGreen},
            {"no release", true, {{"mb", {none}}}, QStringList{mbQuery} + toCommons, commonsGreen},
            {"rate limited: only a 200 counts", true, {{"mb", {S::json(release.body, 503)}}},
             QStringList{mbQuery} + toCommons, commonsGreen, false},
            {"Commons page without imageinfo", true,
             {{"mb", {none}}, {"commons", {found(u"File:Hours.jpg"_s), S::json(imageInfo())}}},
             {mbQuery, toCommons[0], commonsInfo}, QColor()},
            {"release whose cover is a bomb", true, {{"mb", {release}}, {"caa", {S::image(S::imageBomb(60000, 60000))}}},
             QStringList{mbQuery, caaFront} + toCommons, commonsGreen},
            {"artist: thumbnail, whatever the status", false, {{"wiki", {S::json(pageImages(thumb), 404)}}},
             {wikiQuery, u"upload /thumb.png"_s}, thumbBlue},
            {"artist: missing page", false, {{"wiki", {S::json(pageImages())}}},
             {wikiQuery, commonsArtistSearch, commonsInfo, toCommons[2]}, commonsGreen},
            {"artist: Wikipedia down, Commons empty", false, {{"wiki", {S::status(503)}}, {"commons", {found()}}},
             {wikiQuery, commonsArtistSearch}, QColor()}};
        for (const auto &c : cases) {
            init();
            for (const auto &[service, replies] : c.scripts)
                m_server.script(service, replies);
            const online::Lookup l = lookup();
            const std::optional<QImage> image = QCoro::waitFor(c.album ? online::onlineAlbumArt(l, u"The Quiet Hours"_s, u"Low Tide"_s)
                                                                       : online::onlineArtistImage(l, u"The Quiet Hours"_s));
            QVERIFY2(c.color.isValid() ? looksLike(image, c.color, 0) : !image, c.name);
            QCOMPARE(trail(m_server), c.expected);
            QVERIFY2(!c.album || l.wasAnswered() == c.answered, c.name);
            const QList<S::Request> sent = m_server.requests();
            for (qsizetype i = 0; i < sent.size(); ++i) {
                QCOMPARE(sent[i].userAgent, QByteArray("Tarnwell/1.0 (") + contactUrl + ')');
                // The Cover Art Archive is asked no sooner than 1.1 s after the search.
                QVERIFY(sent[i].service != u"caa" || sent[i].time - sent[i - 1].time >= 1.1);
            }
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
    void limits()
    {
        const struct { const char *name; S::Reply reply; bool json, arrives; } cases[] {
            {"JSON drip", S::stream(1 << 20, false, 50), true, false},
            {"picture drip with a length", S::stream(1 << 20, true, 50), false, false},
            {"JSON announced over its cap", S::stream(64 << 20, true), true, false},
            {"picture over its cap, unannounced", S::stream(64 << 20, false), false, false},
            {"picture above the JSON cap", S::stream(256 * 1024, true), false, true},
            {"JSON at its cap", S::stream(64 * 1024, false), true, true},
            {"silence", S::silence(), true, false}, {"redirect to a file", S::redirect("file:///etc/hostname"), false, false}};
        for (const auto &c : cases) {
            const int cut = m_server.cutStreams();
            m_server.on(u"caa"_s, [reply = c.reply](const S::Request &) { return reply; }); // a retry too
            ArtworkSession session(servicesOf(m_server), {5s, 5s, 5s, 64 * 1024, 256 * 1024});
            const auto kind = c.json ? ArtworkSession::Kind::Json : ArtworkSession::Kind::Picture;
            const auto response = QCoro::waitFor(session.get(QUrl(m_server.serviceUrl(u"caa"_s) + "/x"), kind, {}));
            QVERIFY2(response.has_value() == c.arrives, c.name);
            if (c.reply.streamBytes > 0 && !c.arrives)
                QTRY_VERIFY_WITH_TIMEOUT(m_server.cutStreams() > cut, 60000);
        }
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
