// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/LocalPath.h"
#include "model/TextUtil.h"
#include "model/Track.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace localpath;

class TestLocalPath : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Any name comes back byte for byte through the path string, the file URL
    // and its text; valid UTF-8 gives the URL Qt itself makes.
    void namesRoundTrip_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QByteArray>("url");
        QTest::newRow("utf-8") << QByteArray("/m/caf\xc3\xa9.mp3") << u"/m/café.mp3"_qs
                               << QByteArray("file:///m/caf%C3%A9.mp3");
        QTest::newRow("latin-1") << QByteArray("/m/caf\xe9.mp3") << u"/m/caf\uFFFD.mp3"_qs
                                 << QByteArray("file:///m/caf%E9.mp3");
        QTest::newRow("percent beside a raw byte")
            << QByteArray("/m/100%\xe9%41.mp3") << u"/m/100%\uFFFD%41.mp3"_qs
            << QByteArray("file:///m/100%25%E9%2541.mp3");
        QTest::newRow("encoded surrogate") << QByteArray("/m/\xed\xb3\xa9") << u"/m/\uFFFD\uFFFD\uFFFD"_qs
                                           << QByteArray("file:///m/%ED%B3%A9");
        QTest::newRow("emoji then raw byte") << QByteArray("/m/\xf0\x9f\x8e\xb5\xe9") << u"/m/🎵\uFFFD"_qs
                                             << QByteArray("file:///m/%F0%9F%8E%B5%E9");
    }

    void namesRoundTrip()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, shown);
        QFETCH(QByteArray, url);
        const QString path = fromBytes(bytes);
        QCOMPARE(toBytes(path), bytes);
        QCOMPARE(readable(path), shown);
        QCOMPARE(hasRawBytes(path), shown.contains(QChar(0xFFFD)));

        const QUrl fileUrl = localpath::fileUrl(path);
        QCOMPARE(fileUrl.toEncoded(), url);
        QCOMPARE(bytesOf(fileUrl), bytes);
        QCOMPARE(toBytes(pathOf(QUrl(QString::fromLatin1(url), QUrl::StrictMode))), bytes);
        if (!hasRawBytes(path))
            QCOMPARE(fileUrl, QUrl::fromLocalFile(path));
        QCOMPARE(text::displayName(path), QFileInfo(shown).completeBaseName());
    }

    // Arguments of the command line: relative to the current folder, whose own
    // name need not be UTF-8, or file URLs as the JSON output gives them.
    void absolutePaths()
    {
        QTemporaryDir dir;
        const QByteArray here = QFile::encodeName(dir.path()) + "/caf\xe9";
        QVERIFY(::mkdir(here.constData(), 0755) == 0);
        const QByteArray before = QFile::encodeName(QDir::currentPath());
        QVERIFY(::chdir(here.constData()) == 0);
        const QString relative = absolute(fromBytes("sub/../x\xff.mp3"));
        const QString url = absolute(QStringLiteral("file:///m/a%20b/caf%E9 \u00e9.mp3"));
        const QString cleaned = absolute(QStringLiteral("/m//./a/../b.mp3"));
        QVERIFY(::chdir(before.constData()) == 0);
        QVERIFY(::rmdir(here.constData()) == 0);
        QCOMPARE(toBytes(relative), here + "/x\xff.mp3");
        QCOMPARE(toBytes(url), QByteArray("/m/a b/caf\xe9 \xc3\xa9.mp3"));
        QCOMPARE(cleaned, u"/m/b.mp3"_qs);
        for (const QUrl &url :
            { QUrl::fromEncoded("file:///m/a%00b.mp3"), QUrl(QStringLiteral("https://e.org/a.mp3")), QUrl() })
            QVERIFY(bytesOf(url).isEmpty() && pathOf(url).isEmpty());
        QVERIFY(absolute(QStringLiteral("file:///a%00b")).isEmpty()); // names no file
    }

    // The exact bytes of a name survive, whatever they are (more names above).
    void roundTripOfFileNames()
    {
        const QByteArray path("/m/#1 100% caf\xe9 \xc3\xa9 a&b+(e)!?.mp3");
        const Track t { QUuid::fromString(QStringLiteral("{0f8fad5b-d9cb-469f-a165-70867728950e}")),
            localpath::fileUrlFromBytes(path), 12.5 };
        const auto json = trackjson::encode(t);
        QCOMPARE(json.value_or(""),
            R"({"id":"0F8FAD5B-D9CB-469F-A165-70867728950E","url":"file:\/\/\/m\/%231%20100%25%20caf%E9%20%C3%A9%20a&b+(e)!%3F.mp3","duration":12.5})");
        const auto back = trackjson::decode(*json);
        QVERIFY(back);
        QCOMPARE(back->id, t.id);
        QCOMPARE(localpath::toBytes(back->path()), path);
    }

    // Other writers' spelling: lower-case ids, plain slashes, any key order, whitespace.
    void readsLowerCaseIdsAndPlainSlashes()
    {
        const auto t = trackjson::decode("{ \"duration\": 0,\n \"url\": \"file:///Music/a%20b.mp3\", \"id\": "
                                         "\"0f8fad5b-d9cb-469f-a165-70867728950e\" }");
        QVERIFY(t);
        QCOMPARE(t->path(), QStringLiteral("/Music/a b.mp3"));
        QCOMPARE(t->id, QUuid::fromString(QStringLiteral("0F8FAD5B-D9CB-469F-A165-70867728950E")));
    }

    void decodingFailures()
    {
        for (const char *json : { R"({"url":"file:///a.mp3","duration":3})",
                 R"({"id":"0F8FAD5B-D9CB-469F-A165-70867728950E","duration":3})",
                 R"({"id":"not-a-uuid","url":"file:///a.mp3","duration":3})",
                 R"({"id":"{0F8FAD5B-D9CB-469F-A165-70867728950E}","url":"file:///a.mp3","duration":3})",
                 R"({"id":"0F8FAD5B-D9CB-469F-A165-70867728950E","url":"a b c","duration":3})",
                 R"({"id":"0F8FAD5B-D9CB-469F-A165-70867728950E","url":"file:///a.mp3","duration":"3"})",
                 R"(["0F8FAD5B-D9CB-469F-A165-70867728950E"])", "{" })
            QVERIFY2(!trackjson::decode(json), json);
    }
};

QTEST_GUILESS_MAIN(TestLocalPath)
#include "tst_local_path.moc"
