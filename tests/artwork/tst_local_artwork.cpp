// SPDX-License-Identifier: GPL-3.0-or-later
// Pictures on disk: folder names of the copies, decoding, a folder's picture.
#include "ArtworkTestUtil.h"
#include "artwork/ImageCodec.h"
#include "artwork/LocalArtwork.h"
#include "support/TestSupport.h"

#include <QBuffer>
#include <QDir>
#include <QImageWriter>
#include <QTemporaryDir>
#include <QTest>

using testsupport::writeFile;
using OptionalText = std::optional<QString>;

class TestLocalArtwork : public QObject
{
    Q_OBJECT

    QTemporaryDir m_songs;

private Q_SLOTS:
    // Names past 255 bytes are cut on a character and tagged with a digest of
    // the whole name, so names that begin alike keep folders of their own.
    void overlongNames()
    {
        const QString base = QString(200, u'\u00e9'); // 400 bytes
        QSet<QString> names;
        for (const QChar last : {u'a', u'b', u'*', u'?'}) {
            const QString name = artwork::sanitizedPathComponent(base + last);
            QVERIFY(name.toUtf8().size() <= 255 && name.startsWith(QString(100, u'\u00e9')) && name.contains(u'~'));
            QCOMPARE(artwork::sanitizedPathComponent(base + last), name);
            names.insert(name);
        }
        QCOMPARE(names.size(), 4);
        QCOMPARE(artwork::sanitizedPathComponent(QString(255, u'x')), QString(255, u'x'));
    }

    // Where copies go, and what becomes of a name on its way to a folder; a
    // name that can't be a folder of its own gets none.
    void copyPaths_data()
    {
        QTest::addColumn<QString>("artist");
        QTest::addColumn<OptionalText>("album");
        QTest::addColumn<OptionalText>("expected");
        const auto artist = [](const char *name, const QString &text, const char *folder) {
            QTest::newRow(name) << text << OptionalText() << OptionalText(QString::fromUtf8(folder) + "/artist.jpg");
        };
        artist("separators", QStringLiteral("a/b\\c:d|e"), "a-b-c-d-e");
        artist("others keep apart", QStringLiteral("*?\"<>"), "\uff0a\uff1f\uff02\uff1c\uff1e");
        artist("unicode spaces trimmed", QStringLiteral("\u00a0Low\u2003Tide\u3000"), "Low\u2003Tide");
        artist("controls, line breaks, bidi overrides and joiners dropped",
               QStringLiteral("\tLow\nTi\u0000de\r\u2028 \u202eedit\u200d woL\u202c"), "LowTide edit woL");
        artist("broken surrogate dropped, pairs kept", QStringLiteral("a") + QChar(0xd800) + QStringLiteral("b\U0001F3B5"),
               "ab\U0001F3B5");
        QTest::newRow("album") << QStringLiteral("AC/DC") << OptionalText("Back: In Black")
                               << OptionalText("AC-DC/Back- In Black/folder.jpg");
        QTest::newRow("three dots are a name") << QStringLiteral("...") << OptionalText("x")
                                               << OptionalText(".../x/folder.jpg");
        QTest::newRow("dot-dot artist") << QStringLiteral("..") << OptionalText() << OptionalText();
        QTest::newRow("dot-dot hidden by invisibles") << QStringLiteral("\u202e.\n.") << OptionalText() << OptionalText();
        QTest::newRow("nothing left") << QStringLiteral(" \u200b ") << OptionalText() << OptionalText();
        QTest::newRow("dot-dot album") << QStringLiteral("Low") << OptionalText("..") << OptionalText();
    }

    void copyPaths()
    {
        QFETCH(QString, artist);
        QFETCH(OptionalText, album);
        QFETCH(OptionalText, expected);
        const QString music = QStringLiteral("/home/u/Music");
        const OptionalText path = album ? artwork::albumCopyPath(music, artist, *album) : artwork::artistCopyPath(music, artist);
        QCOMPARE(path, expected ? OptionalText(music + u'/' + *expected) : OptionalText());
    }

    // Pictures in the formats of the web decode, at most at the kept size;
    // other formats Qt could read, bombs and garbage do not.
    void decoding_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QSize>("expected"); // invalid: refused
        const auto encoded = [](const char *format, QSize size, bool progressive = false) {
            QByteArray bytes;
            QBuffer buffer(&bytes);
            buffer.open(QIODevice::WriteOnly);
            QImageWriter writer(&buffer, format);
            writer.setProgressiveScanWrite(progressive);
            writer.write(FakeWebServer::solidImage(Qt::red, size));
            return bytes;
        };
        const int kept = artwork::keptEdge;
        QTest::newRow("small jpeg") << encoded("jpg", QSize(64, 48)) << QSize(64, 48);
        QTest::newRow("small webp") << encoded("webp", QSize(64, 48)) << QSize(64, 48);
        QTest::newRow("bmp") << encoded("bmp", QSize(8, 8)) << QSize(8, 8);
        QTest::newRow("large jpeg, scaled while decoding") << encoded("jpg", QSize(4000, 3000)) << QSize(kept, kept * 3 / 4);
        QTest::newRow("progressive jpeg that fits") << encoded("jpg", QSize(4000, 3000), true) << QSize(kept, kept * 3 / 4);
        QTest::newRow("progressive jpeg too large") << encoded("jpg", QSize(5000, 3000), true) << QSize();
        QTest::newRow("large png, scaled") << encoded("png", QSize(1500, 3000)) << QSize(kept / 2, kept);
        QTest::newRow("png too large to decode whole") << FakeWebServer::imageBomb(3000, 3000) << QSize();
        QTest::newRow("jpeg-sized bomb") << FakeWebServer::imageBomb(50000, 50000) << QSize();
        QTest::newRow("xpm") << encoded("xpm", QSize(8, 8)) << QSize();
        QTest::newRow("garbage") << QByteArray("GIF89a garbage") << QSize();
    }

    void decoding()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QSize, expected);
        const std::optional<QImage> image = artwork::decodeImage(bytes);
        QCOMPARE(image ? image->size() : QSize(), expected);
    }

    void folderImagePreference_data()
    {
        QTest::addColumn<QStringList>("files"); // *: the one expected; -: no picture; |: a fifo
        QTest::newRow("folder before cover") << QStringList{"cover.jpg", "*folder.png"};
        QTest::newRow("names before extensions") << QStringList{"albumart.jpg", "front.png", "*album.jpeg"};
        QTest::newRow("jpg before jpeg before png") << QStringList{"cover.png", "*cover.jpeg"};
        QTest::newRow("unreadable well-known file skipped") << QStringList{"-folder.jpg", "*artwork.png"};
        QTest::newRow("any picture in name order") << QStringList{"scan02.png", "*scan01.JPG"};
        QTest::newRow("hidden files and other files are no pictures") << QStringList{".hidden.jpg", "notes.txt", "cover.gif"};
        QTest::newRow("a fifo named like a picture") << QStringList{"|folder.jpg", "*cover.png"};
    }

    // Each file is a picture of its own colour, so the one chosen shows.
    void folderImagePreference()
    {
        QFETCH(QStringList, files);
        QVERIFY(QDir(m_songs.path()).removeRecursively() && QDir().mkpath(m_songs.path()));
        QColor expected;
        for (qsizetype i = 0; i < files.size(); ++i) {
            const QColor colour = QColor::fromHsv(30 + int(i) * 60, 255, 255);
            const QString name = files[i].mid(QStringLiteral("*-|").contains(files[i].front()) ? 1 : 0);
            const QImage image = FakeWebServer::solidImage(colour);
            if (files[i].startsWith(u'*'))
                expected = colour;
            if (files[i].startsWith(u'|'))
                QCOMPARE(testsupport::run(QStringLiteral("mkfifo"), {m_songs.filePath(name)}).exitCode, 0);
            else
                writeFile(m_songs.path(), name, files[i].startsWith(u'-') ? QByteArray("not a picture")
                                                : name.endsWith(u"png") ? FakeWebServer::png(image) : FakeWebServer::jpeg(image));
        }
        const std::optional<QImage> image = artwork::folderImage(m_songs.path());
        QCOMPARE(image.has_value(), expected.isValid());
        QVERIFY(!image || artworktest::looksLike(image, expected));
    }
};

QTEST_GUILESS_MAIN(TestLocalArtwork)
#include "tst_local_artwork.moc"
