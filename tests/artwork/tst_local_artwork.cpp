// SPDX-License-Identifier: GPL-3.0-or-later
// Pictures on disk: folder names of the copies, decoding limits and formats,
// and the choice of a folder's picture.
#include "artwork/ImageCodec.h"
#include "artwork/LocalArtwork.h"
#include "support/FakeWebServer.h"
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
        const QString a = artwork::sanitizedPathComponent(base + u'a');
        const QString b = artwork::sanitizedPathComponent(base + u'b');
        const QString star = artwork::sanitizedPathComponent(base + u'*');
        const QString question = artwork::sanitizedPathComponent(base + u'?');
        for (const QString &name : {a, b, star, question}) {
            QVERIFY(name.toUtf8().size() <= 255);
            QVERIFY(name.startsWith(QString(100, u'\u00e9')));
            QVERIFY(name.contains(u'~'));
        }
        QCOMPARE(QSet<QString>({a, b, star, question}).size(), 4);
        QCOMPARE(artwork::sanitizedPathComponent(base + u'a'), a);
        const QString fits = QString(255, u'x');
        QCOMPARE(artwork::sanitizedPathComponent(fits), fits);
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
        artist("neighbours", QStringLiteral("AC//DC"), "AC--DC");
        artist("unicode spaces trimmed", QStringLiteral("\u00a0Low\u2003Tide\u3000"), "Low\u2003Tide");
        artist("controls and line breaks dropped", QStringLiteral("\tLow\nTi\u0000de\r\u2028"), "LowTide");
        artist("bidi overrides and joiners dropped", QStringLiteral("\u202eedit\u200d woL\u202c"), "edit woL");
        artist("broken surrogate dropped, pairs kept", QStringLiteral("a") + QChar(0xd800) + QStringLiteral("b\U0001F3B5"),
               "ab\U0001F3B5");
        QTest::newRow("album") << QStringLiteral("AC/DC") << OptionalText("Back: In Black")
                               << OptionalText("AC-DC/Back- In Black/folder.jpg");
        QTest::newRow("three dots are a name") << QStringLiteral("...") << OptionalText("x")
                                               << OptionalText(".../x/folder.jpg");
        QTest::newRow("dot-dot artist") << QStringLiteral("..") << OptionalText() << OptionalText();
        QTest::newRow("dot artist") << QStringLiteral(".") << OptionalText() << OptionalText();
        QTest::newRow("dot-dot hidden by invisibles") << QStringLiteral("\u202e.\n.") << OptionalText() << OptionalText();
        QTest::newRow("nothing left") << QStringLiteral(" \u200b ") << OptionalText() << OptionalText();
        QTest::newRow("dot-dot album") << QStringLiteral("Low") << OptionalText("..") << OptionalText();
        QTest::newRow("empty album") << QStringLiteral("Low") << OptionalText(QString()) << OptionalText();
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
        QTest::newRow("tiff") << encoded("tiff", QSize(8, 8)) << QSize(8, 8);
        QTest::newRow("bmp") << encoded("bmp", QSize(8, 8)) << QSize(8, 8);
        QTest::newRow("large jpeg, scaled while decoding") << encoded("jpg", QSize(4000, 3000)) << QSize(kept, kept * 3 / 4);
        QTest::newRow("progressive jpeg that fits") << encoded("jpg", QSize(4000, 3000), true) << QSize(kept, kept * 3 / 4);
        QTest::newRow("progressive jpeg too large") << encoded("jpg", QSize(5000, 3000), true) << QSize();
        QTest::newRow("large png, scaled") << encoded("png", QSize(1500, 3000)) << QSize(kept / 2, kept);
        QTest::newRow("png too large to decode whole") << FakeWebServer::imageBomb(3000, 3000) << QSize();
        QTest::newRow("jpeg-sized bomb") << FakeWebServer::imageBomb(50000, 50000) << QSize();
        QTest::newRow("xpm") << encoded("xpm", QSize(8, 8)) << QSize();
        QTest::newRow("ppm") << encoded("ppm", QSize(8, 8)) << QSize();
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
        QTest::addColumn<QStringList>("files"); // the one marked * is expected
        QTest::newRow("folder before cover") << QStringList{"cover.jpg", "*folder.png"};
        QTest::newRow("names before extensions") << QStringList{"albumart.jpg", "front.png", "*album.jpeg"};
        QTest::newRow("jpg before jpeg before png") << QStringList{"cover.png", "*cover.jpeg"};
        QTest::newRow("unreadable well-known file skipped") << QStringList{"-folder.jpg", "*artwork.png"};
        QTest::newRow("any picture in name order") << QStringList{"scan02.png", "*scan01.JPG"};
        QTest::newRow("well-known names are exact") << QStringList{"Folder.JPG", "*cover.png"};
        QTest::newRow("hidden pictures skipped") << QStringList{".hidden.jpg"};
        QTest::newRow("other files are no pictures") << QStringList{"notes.txt", "cover.gif"};
        QTest::newRow("a fifo named like a picture") << QStringList{"|folder.jpg", "*cover.png"};
    }

    // Each file is a picture of its own colour, so the one chosen shows;
    // "-" marks a file that is no picture, "|" a fifo.
    void folderImagePreference()
    {
        QFETCH(QStringList, files);
        QVERIFY(QDir(m_songs.path()).removeRecursively() && QDir().mkpath(m_songs.path()));
        QColor expected;
        for (qsizetype i = 0; i < files.size(); ++i) {
            QString name = files[i];
            const QColor colour = QColor::fromHsv(30 + int(i) * 60, 255, 255);
            if (name.startsWith(u'*'))
                expected = colour;
            if (name.startsWith(u'|')) {
                QCOMPARE(testsupport::run(QStringLiteral("mkfifo"), {m_songs.filePath(name.mid(1))}).exitCode, 0);
                continue;
            }
            if (name.startsWith(u'-')) {
                writeFile(m_songs.path(), name.mid(1), "not a picture");
                continue;
            }
            name.remove(u'*');
            const QImage image = FakeWebServer::solidImage(colour);
            writeFile(m_songs.path(), name,
                      name.endsWith(QStringLiteral("png")) ? FakeWebServer::png(image) : FakeWebServer::jpeg(image));
        }
        const std::optional<QImage> image = artwork::folderImage(m_songs.path());
        QCOMPARE(image.has_value(), expected.isValid());
        if (image) {
            const QColor c = image->pixelColor(image->width() / 2, image->height() / 2);
            QVERIFY2(qAbs(c.hue() - expected.hue()) <= 6, qPrintable(c.name() + u' ' + expected.name()));
        }
    }
};

QTEST_GUILESS_MAIN(TestLocalArtwork)
#include "tst_local_artwork.moc"
