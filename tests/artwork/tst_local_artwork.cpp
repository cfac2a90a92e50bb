// SPDX-License-Identifier: GPL-3.0-or-later
// Pictures on disk: folder names of the copies, decoding, a folder's picture,
// and tarnwell-cli artwork answering from them (the web is a closed port).
#include "ArtworkTestUtil.h"
#include "artwork/ImageCodec.h"
#include "artwork/LocalArtwork.h"
#include "support/TestSupport.h"

#include <QBuffer>
#include <QDir>
#include <QImageWriter>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using testsupport::writeFile;

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
    void copyPaths()
    {
        const struct { QString artist; const char *album, *expected; } cases[] { // no album: the artist's copy
            {u"a/b\\c:d|e"_s, nullptr, "a-b-c-d-e/artist.jpg"},
            {u"*?\"<>"_s, nullptr, "\uff0a\uff1f\uff02\uff1c\uff1e/artist.jpg"}, // kept apart
            {u"\u00a0Low\u2003Tide\u3000"_s, nullptr, "Low\u2003Tide/artist.jpg"}, // unicode spaces trimmed
            // controls, line breaks, bidi overrides, joiners and broken surrogates dropped
            {u"\tLow\nTi\u0000de\r\u2028 \u202eedit\u200d woL\u202c"_s, nullptr, "LowTide edit woL/artist.jpg"},
            {u"a"_s + QChar(0xd800) + u"b\U0001F3B5"_s, nullptr, "ab\U0001F3B5/artist.jpg"},
            {u"AC/DC"_s, "Back: In Black", "AC-DC/Back- In Black/folder.jpg"}, {u"..."_s, "x", ".../x/folder.jpg"},
            {u".."_s, nullptr, nullptr}, {u"\u202e.\n."_s, nullptr, nullptr}, {u" \u200b "_s, nullptr, nullptr},
            {u"Low"_s, "..", nullptr}};
        const QString music = u"/home/u/Music"_s;
        for (const auto &c : cases) {
            const std::optional<QString> path = c.album ? artwork::albumCopyPath(music, c.artist, QString::fromUtf8(c.album))
                                              : artwork::artistCopyPath(music, c.artist);
            QCOMPARE(path.value_or(u"none"_s), c.expected ? music + u'/' + QString::fromUtf8(c.expected) : u"none"_s);
        }
    }

    // Pictures in the formats of the web decode, at most at the kept size;
    // other formats Qt could read, bombs and garbage do not.
    void decoding()
    {
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
        const struct { QByteArray bytes; QSize expected; } cases[] { // invalid size: refused
            {encoded("jpg", {64, 48}), {64, 48}}, {encoded("webp", {64, 48}), {64, 48}},
            {encoded("jpg", {4000, 3000}), {kept, kept * 3 / 4}}, // scaled while decoding
            {encoded("jpg", {4000, 3000}, true), {kept, kept * 3 / 4}}, {encoded("jpg", {5000, 3000}, true), {}},
            {encoded("png", {1500, 3000}), {kept / 2, kept}}, {FakeWebServer::imageBomb(3000, 3000), {}},
            {encoded("xpm", {8, 8}), {}}, {"GIF89a garbage", {}}};
        for (const auto &c : cases) {
            const std::optional<QImage> image = artwork::decodeImage(c.bytes);
            QCOMPARE(image ? image->size() : QSize(), c.expected);
        }
    }

    // Each file is a picture of its own colour, so the one chosen shows.
    // *: the one expected; -: no picture; |: a fifo.
    void folderImagePreference()
    {
        const QList<QStringList> cases {
            {"cover.jpg", "*folder.png"}, {"albumart.jpg", "front.png", "*album.jpeg"}, {"cover.png", "*cover.jpeg"},
            {"-folder.jpg", "*artwork.png"}, {"scan02.png", "*scan01.JPG"}, {".hidden.jpg", "notes.txt", "cover.gif"},
            {"|folder.jpg", "*cover.png"}};
        for (const QStringList &files : cases) {
            QVERIFY(QDir(m_songs.path()).removeRecursively() && QDir().mkpath(m_songs.path()));
            QColor expected;
            for (qsizetype i = 0; i < files.size(); ++i) {
                const QColor colour = QColor::fromHsv(30 + int(i) * 60, 255, 255);
                const QString name = files[i].mid(u"*-|"_s.contains(files[i].front()) ? 1 : 0);
                expected = files[i].startsWith(u'*') ? colour : expected;
                if (files[i].startsWith(u'|'))
                    QCOMPARE(testsupport::run(u"mkfifo"_s, {m_songs.filePath(name)}).exitCode, 0);
                else
                    writeFile(m_songs.path(), name, files[i].startsWith(u'-') ? QByteArray("not a picture")
                                                    : name.endsWith(u"png") ? artworktest::pngOf(colour)
                                                                            : artworktest::jpegOf(colour));
            }
            const std::optional<QImage> image = artwork::folderImage(m_songs.path());
            QVERIFY2(image.has_value() == expected.isValid(), qPrintable(files.join(u' ')));
            QVERIFY(!image || artworktest::looksLike(image, expected));
        }

        // A folder that can be entered but not listed still gives its well-known picture.
        QVERIFY(QFile::setPermissions(m_songs.path(), QFileDevice::ExeOwner | QFileDevice::WriteOwner));
        {
            const testsupport::PermissionsEnforced enforced;
            const std::optional<QImage> image = artwork::folderImage(m_songs.path());
            QVERIFY(artworktest::looksLike(image, QColor::fromHsv(90, 255, 255)));
        }
        QVERIFY(QFile::setPermissions(m_songs.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner));
    }

    // tarnwell-cli artwork: its arguments, the JPEG it writes, and its answers
    // when nothing is found or written.
    void cli_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("exitCode"); // 0: out.jpg holds the blue picture
        QTest::addColumn<QByteArray>("says");
        const QString song = writeFile(m_songs.path(), u"cli/one.flac"_s, "x");
        writeFile(m_songs.path(), u"cli/cover.png"_s, artworktest::pngOf(Qt::blue));
        writeFile(artworktest::musicFolder(), u"Low/artist.jpg"_s, artworktest::jpegOf(Qt::blue));
        writeFile(artworktest::musicFolder(), u"Low/Tide-1/folder.jpg"_s, artworktest::jpegOf(Qt::blue));
        const QString out = m_songs.filePath(u"out.jpg"_s);
        QTest::newRow("song") << QStringList{"--file", song, "--out", out} << 0 << QByteArray();
        QTest::newRow("artist") << QStringList{"--artist", "Low", "--out", out} << 0 << QByteArray();
        QTest::newRow("album") << QStringList{"--artist", "Low", "--album", "Tide/1", "--out", out} << 0 << QByteArray();
        for (const QStringList &usage : {QStringList{"--artist", "A"}, QStringList{"--out", "x.jpg", "--artist"},
                                         QStringList{"--artist", "A", "--size", "3", "--out", "x.jpg"}})
            QTest::newRow(qPrintable(usage.join(u' '))) << usage << 2 << QByteArray("usage");
        QTest::newRow("no such song") << QStringList{"--file", "/nonexistent.flac", "--out", "x.jpg"} << 1
                                      << QByteArray("/nonexistent.flac: there is no such file");
        QTest::newRow("nothing found") << QStringList{"--album", "Nowhere", "--out", "x.jpg"} << 1
                                       << QByteArray("no picture found");
        QTest::newRow("output not writable") << QStringList{"--artist", "Low", "--out", "/proc/out.jpg"} << 1
                                             << QByteArray("/proc/out.jpg: the picture cannot be written");
    }

    void cli()
    {
        QFETCH(QStringList, args);
        QFETCH(int, exitCode);
        QFETCH(QByteArray, says);
        const QString out = m_songs.filePath(u"out.jpg"_s);
        QFile::remove(out);
        const testsupport::ToolResult r = testsupport::run(QStringLiteral(TARNWELL_CLI), QStringList{"artwork"} + args);
        QCOMPARE(r.exitCode, exitCode);
        QVERIFY2(r.err.contains(says), r.err.constData());
        QVERIFY(!QFile::exists(u"x.jpg"_s));
        QVERIFY(exitCode != 0
                || (testsupport::readFile(out).startsWith("\xff\xd8\xff") && artworktest::looksLike(artwork::loadImageFile(out), Qt::blue)));
    }
};

QTEST_GUILESS_MAIN(TestLocalArtwork)
#include "tst_local_artwork.moc"
