// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/LocalPath.h"
#include "model/Track.h"

#include <QTest>

#include <cmath>
#include <limits>

class TestTrack : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void equalityIsById()
    {
        const Track a{QUuid::createUuid(), QUrl::fromLocalFile(QStringLiteral("/m/a.mp3")), 1};
        Track sameId = a;
        sameId.url = QUrl::fromLocalFile(QStringLiteral("/m/other.mp3"));
        sameId.duration = 99;
        QCOMPARE(a, sameId);

        Track sameFile = a;
        sameFile.id = QUuid::createUuid();
        QVERIFY(!(a == sameFile));
    }

    void roundTripOfFileNames_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("urlJson");
        QTest::newRow("space") << QByteArray("/Music/My Song.mp3") << QByteArray("file:\\/\\/\\/Music\\/My%20Song.mp3");
        QTest::newRow("accent") << QByteArray("/Music/Café.flac") << QByteArray("file:\\/\\/\\/Music\\/Caf%C3%A9.flac");
        QTest::newRow("hash") << QByteArray("/m/#1 hit.mp3") << QByteArray("file:\\/\\/\\/m\\/%231%20hit.mp3");
        QTest::newRow("percent") << QByteArray("/m/100%.mp3") << QByteArray("file:\\/\\/\\/m\\/100%25.mp3");
        QTest::newRow("question") << QByteArray("/m/why?.wav") << QByteArray("file:\\/\\/\\/m\\/why%3F.wav");
        QTest::newRow("kept as they are") << QByteArray("/m/a&b+c=d(e)!.m4a") << QByteArray("file:\\/\\/\\/m\\/a&b+c=d(e)!.m4a");
        QTest::newRow("quote") << QByteArray("/m/say \"hi\".mp3") << QByteArray("file:\\/\\/\\/m\\/say%20%22hi%22.mp3");
        QTest::newRow("latin-1, not UTF-8") << QByteArray("/m/caf\xe9 \xc3\xa9.mp3")
                                            << QByteArray("file:\\/\\/\\/m\\/caf%E9%20%C3%A9.mp3");
    }

    void roundTripOfFileNames()
    {
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, urlJson);
        const Track t{QUuid::fromString(QStringLiteral("{0f8fad5b-d9cb-469f-a165-70867728950e}")),
                      localpath::fileUrlFromBytes(path), 12.5};
        const auto json = trackjson::encode(t);
        QVERIFY(json);
        QCOMPARE(*json, QByteArray("{\"id\":\"0F8FAD5B-D9CB-469F-A165-70867728950E\",\"url\":\"") + urlJson
                            + "\",\"duration\":12.5}");
        const auto back = trackjson::decode(*json);
        QVERIFY(back);
        QCOMPARE(back->id, t.id);
        QCOMPARE(localpath::toBytes(back->path()), path);
        QCOMPARE(back->url, t.url);
        QCOMPARE(back->duration, 12.5);
    }

    void decodingFailures_data()
    {
        QTest::addColumn<QByteArray>("json");
        const QByteArray id = "\"id\":\"0F8FAD5B-D9CB-469F-A165-70867728950E\"";
        const QByteArray url = "\"url\":\"file:\\/\\/\\/a.mp3\"";
        const QByteArray dur = "\"duration\":3";
        QTest::newRow("missing id") << QByteArray("{") + url + "," + dur + "}";
        QTest::newRow("missing url") << QByteArray("{") + id + "," + dur + "}";
        QTest::newRow("missing duration") << QByteArray("{") + id + "," + url + "}";
        QTest::newRow("id not a uuid") << QByteArray("{\"id\":\"not-a-uuid\",") + url + "," + dur + "}";
        QTest::newRow("id in braces") << QByteArray("{\"id\":\"{0F8FAD5B-D9CB-469F-A165-70867728950E}\",") + url + "," + dur + "}";
        QTest::newRow("id without hyphens") << QByteArray("{\"id\":\"0F8FAD5BD9CB469FA16570867728950E\",") + url + "," + dur + "}";
        QTest::newRow("id a number") << QByteArray("{\"id\":7,") + url + "," + dur + "}";
        QTest::newRow("url a number") << QByteArray("{") + id + ",\"url\":7," + dur + "}";
        QTest::newRow("url empty") << QByteArray("{") + id + ",\"url\":\"\"," + dur + "}";
        QTest::newRow("url not a url") << QByteArray("{") + id + ",\"url\":\"a b c\"," + dur + "}";
        QTest::newRow("duration a string") << QByteArray("{") + id + "," + url + ",\"duration\":\"3\"}";
        QTest::newRow("duration null") << QByteArray("{") + id + "," + url + ",\"duration\":null}";
        QTest::newRow("an array") << QByteArray("[") + id + "]";
        QTest::newRow("not json") << QByteArray("{");
    }

    void decodingFailures()
    {
        QFETCH(QByteArray, json);
        QVERIFY(!trackjson::decode(json));
    }

    void readsLowerCaseIdsAndPlainSlashes()
    {
        const QByteArray json =
            "{\"duration\":0,\"url\":\"file:///Music/a%20b.mp3\",\"id\":\"0f8fad5b-d9cb-469f-a165-70867728950e\"}";
        const auto t = trackjson::decode(json);
        QVERIFY(t);
        QCOMPARE(t->path(), QStringLiteral("/Music/a b.mp3"));
        QVERIFY(trackjson::encode(*t)->startsWith("{\"id\":\"0F8FAD5B-D9CB-469F-A165-70867728950E\""));
    }

    void nonFiniteDurationCannotBeEncoded_data()
    {
        QTest::addColumn<double>("duration");
        QTest::newRow("nan") << std::numeric_limits<double>::quiet_NaN();
        QTest::newRow("inf") << std::numeric_limits<double>::infinity();
        QTest::newRow("-inf") << -std::numeric_limits<double>::infinity();
    }

    void nonFiniteDurationCannotBeEncoded()
    {
        QFETCH(double, duration);
        Track t = Track::create(QUrl::fromLocalFile(QStringLiteral("/a.mp3")));
        t.duration = duration;
        QVERIFY(!trackjson::encode(t));
    }
};

QTEST_GUILESS_MAIN(TestTrack)
#include "tst_track.moc"
