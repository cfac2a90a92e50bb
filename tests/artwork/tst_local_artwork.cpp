// SPDX-License-Identifier: GPL-3.0-or-later
// Pictures on disk: sanitised folder names and copy paths, decoding limits and
// formats, and the choice of a folder's picture.
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

namespace {

const QColor red(220, 20, 20);
const QColor green(20, 200, 40);
const QColor blue(30, 40, 230);

bool looksLike(const std::optional<QImage> &image, const QColor &color)
{
    if (!image)
        return false;
    const QColor c = image->pixelColor(image->width() / 2, image->height() / 2);
    return qAbs(c.red() - color.red()) <= 12 && qAbs(c.green() - color.green()) <= 12
        && qAbs(c.blue() - color.blue()) <= 12;
}

QByteArray pngOf(const QColor &c)
{
    return FakeWebServer::png(FakeWebServer::solidImage(c));
}

QByteArray jpegOf(const QColor &c)
{
    return FakeWebServer::jpeg(FakeWebServer::solidImage(c));
}

} // namespace

class TestLocalArtwork : public QObject
{
    Q_OBJECT

    QTemporaryDir m_songs;

private Q_SLOTS:
    void init()
    {
        QDir(m_songs.path()).removeRecursively();
        QDir().mkpath(m_songs.path());
    }

    void sanitizedPathComponent_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("slash") << QStringLiteral("Day/Night") << QStringLiteral("Day-Night");
        QTest::newRow("all nine") << QStringLiteral("a/b\\c:d*e?f\"g<h>i|j") << QStringLiteral("a-b-c-d-e-f-g-h-i-j");
        QTest::newRow("neighbours") << QStringLiteral("AC//DC") << QStringLiteral("AC--DC");
        QTest::newRow("spaces and tabs") << QStringLiteral(" \t Low Tide\t ") << QStringLiteral("Low Tide");
        QTest::newRow("unicode spaces") << QStringLiteral("\u00a0Low\u2003Tide\u3000") << QStringLiteral("Low\u2003Tide");
        QTest::newRow("line breaks stay") << QStringLiteral("\nLow Tide\n") << QStringLiteral("\nLow Tide\n");
        QTest::newRow("trim after replacing") << QStringLiteral(" /x/ ") << QStringLiteral("-x-");
        QTest::newRow("nothing left") << QStringLiteral(" \t ") << QString();
        QTest::newRow("dots kept") << QStringLiteral("..") << QStringLiteral("..");
        QTest::newRow("accents kept") << QStringLiteral("Sigur R\u00f3s") << QStringLiteral("Sigur R\u00f3s");
    }

    void sanitizedPathComponent()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(artwork::sanitizedPathComponent(text), expected);
    }

    // Pictures in the formats of the web decode; other formats Qt could read,
    // bombs and garbage do not.
    void decodeFormats_data()
    {
        QTest::addColumn<QByteArray>("format");
        QTest::addColumn<bool>("decodes");
        QTest::newRow("jpeg") << QByteArray("jpg") << true;
        QTest::newRow("png") << QByteArray("png") << true;
        QTest::newRow("gif") << QByteArray("gif") << true;
        QTest::newRow("bmp") << QByteArray("bmp") << true;
        QTest::newRow("webp") << QByteArray("webp") << true;
        QTest::newRow("tiff") << QByteArray("tiff") << true;
        QTest::newRow("xpm") << QByteArray("xpm") << false;
        QTest::newRow("tga") << QByteArray("tga") << false;
        QTest::newRow("ppm") << QByteArray("ppm") << false;
    }

    void decodeFormats()
    {
        QFETCH(QByteArray, format);
        QFETCH(bool, decodes);
        QByteArray bytes;
        if (format == "gif" || format == "tga") { // Qt writes neither
            if (!testsupport::haveTool(QStringLiteral("convert")))
                QSKIP("ImageMagick missing");
            bytes = testsupport::run(QStringLiteral("convert"), {QStringLiteral("-size"), QStringLiteral("8x8"),
                                                                 QStringLiteral("xc:red"), QString::fromLatin1(format + ":-")})
                        .out;
            QVERIFY(!bytes.isEmpty());
        } else {
            QBuffer buffer(&bytes);
            buffer.open(QIODevice::WriteOnly);
            if (!QImageWriter(&buffer, format).write(FakeWebServer::solidImage(red)))
                QSKIP("no writer for this format here");
        }
        QCOMPARE(artwork::decodeImage(bytes).has_value(), decodes);
    }

    void decodeRefusals()
    {
        QVERIFY(!artwork::decodeImage(FakeWebServer::imageBomb(20000, 20000)));
        QVERIFY(!artwork::decodeImage("GIF89a garbage"));
        QVERIFY(!artwork::decodeImage(QByteArray()));
        // Just inside the limit still decodes.
        QVERIFY(artwork::decodeImage(FakeWebServer::png(FakeWebServer::solidImage(red, QSize(4000, 3000)))));
    }

    // Where copies go; a name that can't be a folder of its own gets none.
    void copyPaths_data()
    {
        QTest::addColumn<QString>("artist");
        QTest::addColumn<OptionalText>("album");
        QTest::addColumn<OptionalText>("expected");
        QTest::newRow("artist") << QStringLiteral("Day/Night") << OptionalText() << OptionalText(QStringLiteral("Day-Night/artist.jpg"));
        QTest::newRow("album") << QStringLiteral("AC/DC") << OptionalText(QStringLiteral("Back: In Black"))
                               << OptionalText(QStringLiteral("AC-DC/Back- In Black/folder.jpg"));
        QTest::newRow("three dots are a name") << QStringLiteral("...") << OptionalText(QStringLiteral("x"))
                                               << OptionalText(QStringLiteral(".../x/folder.jpg"));
        QTest::newRow("dot-dot artist") << QStringLiteral("..") << OptionalText() << OptionalText();
        QTest::newRow("dot artist") << QStringLiteral(".") << OptionalText() << OptionalText();
        QTest::newRow("empty artist") << QString() << OptionalText() << OptionalText();
        QTest::newRow("blank artist") << QStringLiteral(" \t") << OptionalText() << OptionalText();
        QTest::newRow("dot-dot once trimmed") << QStringLiteral("\u00a0..\t") << OptionalText() << OptionalText();
        QTest::newRow("dot-dot album") << QStringLiteral("Low") << OptionalText(QStringLiteral("..")) << OptionalText();
        QTest::newRow("dot-dot artist of album") << QStringLiteral("..") << OptionalText(QStringLiteral("etc")) << OptionalText();
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
        QVERIFY(!artwork::artistCopyPath(QString(), QStringLiteral("Low")));
    }

    void folderImagePreference_data()
    {
        QTest::addColumn<QStringList>("files"); // name=colour; a colour "bad" is no picture
        QTest::addColumn<QColor>("expected");
        QTest::newRow("folder before cover") << QStringList{"cover.jpg=red", "folder.png=green"} << green;
        QTest::newRow("names before extensions")
            << QStringList{"albumart.jpg=red", "front.png=blue", "album.jpeg=green"} << green;
        QTest::newRow("jpg before jpeg before png") << QStringList{"cover.png=red", "cover.jpeg=green"} << green;
        QTest::newRow("unreadable well-known file is skipped")
            << QStringList{"folder.jpg=bad", "artwork.png=blue"} << blue;
        QTest::newRow("any picture in name order") << QStringList{"scan02.png=red", "scan01.JPG=green"} << green;
        QTest::newRow("extension case ignored when listing") << QStringList{"Scan.JpEg=blue"} << blue;
        QTest::newRow("well-known names are exact") << QStringList{"Folder.JPG=red", "cover.png=green"} << green;
        QTest::newRow("hidden pictures are skipped") << QStringList{".hidden.jpg=red"} << QColor();
        QTest::newRow("other files are not pictures") << QStringList{"notes.txt=red", "cover.gif=red"} << QColor();
        QTest::newRow("listed file that is no picture") << QStringList{"a.png=bad", "b.png=blue"} << blue;
        QTest::newRow("empty folder") << QStringList{} << QColor();
    }

    void folderImagePreference()
    {
        QFETCH(QStringList, files);
        QFETCH(QColor, expected);
        for (const QString &f : files) {
            const QString name = f.section(u'=', 0, 0);
            const QString colourName = f.section(u'=', 1);
            const QColor colour = colourName == u"red" ? red : colourName == u"green" ? green : blue;
            const QByteArray bytes = colourName == u"bad" ? QByteArray("not a picture")
                : name.endsWith(QStringLiteral("png"), Qt::CaseInsensitive) ? pngOf(colour)
                                                                              : jpegOf(colour);
            writeFile(m_songs.path(), name, bytes);
        }
        const std::optional<QImage> image = artwork::folderImage(m_songs.path());
        if (expected.isValid())
            QVERIFY(looksLike(image, expected));
        else
            QVERIFY(!image);
    }

    void folderImageIgnoresFifos()
    {
        QVERIFY(testsupport::run(QStringLiteral("mkfifo"), {m_songs.path() + QStringLiteral("/folder.jpg")}).exitCode == 0);
        writeFile(m_songs.path(), QStringLiteral("cover.png"), pngOf(red));
        QVERIFY(looksLike(artwork::folderImage(m_songs.path()), red));
    }
};

QTEST_GUILESS_MAIN(TestLocalArtwork)
#include "tst_local_artwork.moc"
