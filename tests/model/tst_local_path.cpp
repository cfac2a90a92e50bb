// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/LocalPath.h"
#include "model/TextUtil.h"

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
    // Every name the file system can hold comes back byte for byte, through
    // the path string and through the file URL and its text; valid UTF-8 gives
    // the URL Qt itself makes.
    void namesRoundTrip_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QByteArray>("url");
        QTest::newRow("ascii") << QByteArray("/m/a b.mp3") << u"/m/a b.mp3"_qs << QByteArray("file:///m/a%20b.mp3");
        QTest::newRow("utf-8") << QByteArray("/m/caf\xc3\xa9.mp3") << u"/m/café.mp3"_qs
                               << QByteArray("file:///m/caf%C3%A9.mp3");
        QTest::newRow("emoji") << QByteArray("/m/\xf0\x9f\x8e\xb5.mp3") << u"/m/🎵.mp3"_qs
                               << QByteArray("file:///m/%F0%9F%8E%B5.mp3");
        QTest::newRow("latin-1") << QByteArray("/m/caf\xe9.mp3") << u"/m/caf\uFFFD.mp3"_qs
                                 << QByteArray("file:///m/caf%E9.mp3");
        QTest::newRow("latin-1 folder") << QByteArray("/Bj\xf6rk/J\xf3ga.flac") << u"/Bj\uFFFDrk/J\uFFFDga.flac"_qs
                                        << QByteArray("file:///Bj%F6rk/J%F3ga.flac");
        QTest::newRow("cp1252 quotes") << QByteArray("/m/\x93hi\x94 #1?.mp3") << u"/m/\uFFFDhi\uFFFD #1?.mp3"_qs
                                       << QByteArray("file:///m/%93hi%94%20%231%3F.mp3");
        QTest::newRow("percent beside a raw byte") << QByteArray("/m/100%\xe9%41.mp3")
                                                   << u"/m/100%\uFFFD%41.mp3"_qs
                                                   << QByteArray("file:///m/100%25%E9%2541.mp3");
        QTest::newRow("cut-off sequence") << QByteArray("/m/a\xc3") << u"/m/a\uFFFD"_qs << QByteArray("file:///m/a%C3");
        QTest::newRow("overlong slash") << QByteArray("/m/\xc0\xaf") << u"/m/\uFFFD\uFFFD"_qs
                                        << QByteArray("file:///m/%C0%AF");
        QTest::newRow("encoded surrogate") << QByteArray("/m/\xed\xb3\xa9") << u"/m/\uFFFD\uFFFD\uFFFD"_qs
                                           << QByteArray("file:///m/%ED%B3%A9");
        QTest::newRow("past U+10FFFF") << QByteArray("/m/\xf4\x90\x80\x80") << u"/m/\uFFFD\uFFFD\uFFFD\uFFFD"_qs
                                       << QByteArray("file:///m/%F4%90%80%80");
        QTest::newRow("emoji then raw byte") << QByteArray("/m/\xf0\x9f\x8e\xb5\xe9") << u"/m/🎵\uFFFD"_qs
                                             << QByteArray("file:///m/%F0%9F%8E%B5%E9");
        QTest::newRow("leading slashes") << QByteArray("//m/\xe9") << u"//m/\uFFFD"_qs
                                         << QByteArray("file:///m/%E9");
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
        const QByteArray exact = bytes.startsWith("//") ? bytes.mid(1) : bytes;
        QCOMPARE(bytesOf(fileUrl), exact);
        QCOMPARE(toBytes(pathOf(QUrl(QString::fromLatin1(url), QUrl::StrictMode))), exact);
        if (!hasRawBytes(path))
            QCOMPARE(fileUrl, QUrl::fromLocalFile(path));
    }

    void urlsThatNameNoFile_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::newRow("NUL in the path") << QUrl::fromEncoded("file:///m/a%00b.mp3");
        QTest::newRow("web address") << QUrl(QStringLiteral("https://example.org/a.mp3"));
        QTest::newRow("empty") << QUrl();
    }

    void urlsThatNameNoFile()
    {
        QFETCH(QUrl, url);
        QVERIFY(bytesOf(url).isEmpty());
        QVERIFY(pathOf(url).isEmpty());
    }

    void namesOnScreen()
    {
        QCOMPARE(text::displayName(fromBytes("/m/01 caf\xe9.mp3")), u"01 caf\uFFFD"_qs);
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
        QVERIFY(absolute(QStringLiteral("file:///a%00b")).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestLocalPath)
#include "tst_local_path.moc"
