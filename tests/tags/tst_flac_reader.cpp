// SPDX-License-Identifier: GPL-3.0-or-later
#include "TagBuilders.h"
#include "support/TestSupport.h"
#include "tags/FlacMetadata.h"
#include "tags/TagReader.h"
#include "tags/VorbisComment.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using Fields = QList<std::optional<QString>>; // title, artist, album, genre
Q_DECLARE_METATYPE(Fields)

namespace {

Fields fieldsOf(const TrackMetadata &m)
{
    return { m.title, m.artist, m.album, m.genre };
}

const std::optional<QString> none = std::nullopt;

Fields titleOnly(const QString &t)
{
    return { t, none, none, none };
}

const Fields nothing { none, none, none, none };

} // namespace

class TestFlacReader : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    // Reads bytes as a file on disk, the way the program does.
    TrackMetadata readAsFile(const QByteArray &bytes, const QString &name = QStringLiteral("song.flac"))
    {
        return readMetadata(testsupport::writeFile(m_dir.path(), name, bytes));
    }

private Q_SLOTS:
    void comments_data()
    {
        QTest::addColumn<QList<QByteArray>>("comments");
        QTest::addColumn<Fields>("expected");
        QTest::newRow("all four keys") << QList<QByteArray> { "TITLE=t", "ARTIST=a", "ALBUM=b", "GENRE=g",
            "DATE=2001" } << Fields { "t", "a", "b", "g" };
        QTest::newRow("last wins, any case") << QList<QByteArray> { "title=A", "TITLE=B" } << titleOnly("B");
        QTest::newRow("mixed-case key") << QList<QByteArray> { "Title=x" } << titleOnly("x");
        QTest::newRow("full Unicode upper-casing of keys")
            << QList<QByteArray> { "t\xC4\xB1tle=dotless" } << titleOnly("dotless");
        QTest::newRow("empty value, no key, no equals sign are skipped")
            << QList<QByteArray> { "ARTIST=", "=Foo", "ARTIST", "===", "=" } << nothing;
        QTest::newRow("skipped comments don't erase an earlier value")
            << QList<QByteArray> { "ARTIST=kept", "ARTIST=" } << Fields { none, "kept", none, none };
        QTest::newRow("equals signs in the value")
            << QList<QByteArray> { "ALBUM=a=b" } << Fields { none, none, "a=b", none };
        QTest::newRow("value starting with equals")
            << QList<QByteArray> { "ALBUM==b" } << Fields { none, none, "=b", none };
        QTest::newRow("leading equals signs passed over")
            << QList<QByteArray> { "=ALBUM=c" } << Fields { none, none, "c", none };
        QTest::newRow("invalid UTF-8 skipped, later comments read")
            << QList<QByteArray> { "TITLE=\xC3\x28", "ARTIST=ok" } << Fields { none, "ok", none, none };
        QTest::newRow("invalid UTF-8 doesn't replace an earlier value")
            << QList<QByteArray> { "TITLE=good", "TITLE=bad\xFF" } << titleOnly("good");
        QTest::newRow("overlong form and surrogate are invalid")
            << QList<QByteArray> { "TITLE=\xC0\xAF", "ALBUM=\xED\xA0\x80" } << nothing;
        QTest::newRow("invalid bytes in an unknown key don't matter")
            << QList<QByteArray> { "X\xFF=1", "GENRE=Jazz" } << Fields { none, none, none, "Jazz" };
        QTest::newRow("value not trimmed, non-ASCII kept")
            << QList<QByteArray> { "TITLE= Caf\xC3\xA9 \t" } << titleOnly(QStringLiteral(" Café \t"));
        QTest::newRow("four-byte UTF-8")
            << QList<QByteArray> { "TITLE=\xF0\x9F\x8E\xB5" } << titleOnly(QStringLiteral("🎵"));
    }

    void comments()
    {
        QFETCH(QList<QByteArray>, comments);
        QFETCH(Fields, expected);
        QCOMPARE(fieldsOf(parseVorbisComment(build::vorbisBody(comments))), expected);
        // The same block inside a FLAC file, read from disk.
        const QByteArray file
            = build::flacFile({ { 0, build::streamInfo() }, { 4, build::vorbisBody(comments) } });
        QCOMPARE(fieldsOf(parseFLACMetadata(file)), expected);
        QCOMPARE(fieldsOf(readAsFile(file)), expected);
    }

    void commentBodies_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<Fields>("expected");
        const QByteArray one = build::vorbisBody({ "TITLE=x" });
        QTest::newRow("empty vendor") << build::vorbisBody({ "TITLE=x" }, "") << titleOnly("x");
        QTest::newRow("shorter than 4 bytes") << QByteArray("\x01\x00", 2) << nothing;
        QTest::newRow("vendor longer than the body") << build::le32(100) + "abc" << nothing;
        QTest::newRow("no room for the count") << build::le32(2) + "ab" + "\x01\x00" << nothing;
        QTest::newRow("count 0 hides what follows") << build::vorbisBody({ "TITLE=x" }, "v", 0) << nothing;
        QTest::newRow("count larger than the comments present") << build::vorbisBody(
            { "TITLE=x", "ARTIST=y" }, "v", 0xFFFFFFFF) << Fields { "x", "y", none, none };
        QTest::newRow("comment running past the end keeps what came before")
            << build::vorbisBody({ "TITLE=x" }, "v", 2) + build::le32(50) + "ARTIST=y" << titleOnly("x");
        QTest::newRow("length field cut short")
            << build::vorbisBody({ "TITLE=x" }, "v", 2) + "\x05\x00" << titleOnly("x");
        QTest::newRow("huge comment length")
            << build::vorbisBody({ "TITLE=x" }, "v", 2) + build::le32(0xFFFFFFFF) << titleOnly("x");
    }

    void commentBodies()
    {
        QFETCH(QByteArray, body);
        QFETCH(Fields, expected);
        QCOMPARE(fieldsOf(parseVorbisComment(body)), expected);
    }

    void blockWalk_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<Fields>("expected");
        const QByteArray comment = build::vorbisBody({ "TITLE=found" });
        const QByteArray si = build::streamInfo();
        QTest::newRow("comment after padding, seek table and picture") << build::flacFile(
            { { 0, si }, { 1, QByteArray(100, '\0') }, { 3, QByteArray(36, 'S') },
                { 6, build::pictureBody("png") }, { 4, comment } }) << titleOnly("found");
        QTest::newRow("no comment block")
            << build::flacFile({ { 0, si }, { 1, QByteArray(10, '\0') } }) << nothing;
        QTest::newRow("last-block flag before the comment")
            << build::flacFile({ { 0, si } }) + build::flacFile({ { 4, comment } }).mid(4) << nothing;
        QTest::newRow("only the first comment block counts") << build::flacFile(
            { { 0, si }, { 4, comment }, { 4, build::vorbisBody({ "TITLE=second", "ARTIST=a" }) } })
                                                             << titleOnly("found");
        QTest::newRow("empty file") << QByteArray() << nothing;
        QTest::newRow("three bytes") << QByteArray("fLa") << nothing;
        QTest::newRow("marker only") << QByteArray("fLaC") << nothing;
        QTest::newRow("header cut short") << QByteArray("fLaC\x00\x00", 6) << nothing;
        QTest::newRow("not FLAC") << QByteArray("OggS") + build::flacFile({ { 4, comment } }).mid(4)
                                  << nothing;
        QTest::newRow("ID3v2 tag in front")
            << build::id3Tag(3, build::id3Frame(3, "TIT2", build::id3Text("x")))
                + build::flacFile({ { 4, comment } })
            << nothing;
        QTest::newRow("block running past the end before the comment")
            << build::flacFile({ { 0, si }, { 1, QByteArray(10, '\0'), 1000000 }, { 4, comment } }, {})
            << nothing;
        QTest::newRow("comment block running past the end")
            << build::flacFile({ { 0, si }, { 4, comment, quint32(comment.size() + 1) } }, {}) << nothing;
        QTest::newRow("comment block ending exactly at the end of the file")
            << build::flacFile({ { 0, si }, { 4, comment } }, {}) << titleOnly("found");
    }

    void blockWalk()
    {
        QFETCH(QByteArray, file);
        QFETCH(Fields, expected);
        QCOMPARE(fieldsOf(parseFLACMetadata(file)), expected);
        QCOMPARE(fieldsOf(readAsFile(file)), expected);
        QCOMPARE(fieldsOf(readAsFile(file, QStringLiteral("upper.FLAC"))), expected);
    }

    // The pure walk sees only the head it is given; the file reader keeps
    // walking block headers past it, so tags written behind a large picture
    // stay visible.
    void commentBehindALargePicture()
    {
        const QByteArray picture = build::pictureBody(QByteArray(600 * 1024, 'P'));
        const QByteArray file = build::flacFile({ { 0, build::streamInfo() }, { 6, picture },
                                                    { 4, build::vorbisBody({ "TITLE=behind", "GENRE=g" }) } },
            QByteArray(300000, 'A'));
        QCOMPARE(fieldsOf(parseFLACMetadata(file.first(524288))), nothing);
        QCOMPARE(fieldsOf(readAsFile(file)), (Fields { "behind", none, none, "g" }));
        QCOMPARE(fieldsOf(parseFLACMetadata(file)), (Fields { "behind", none, none, "g" }));

        // Real damage stays damage: the picture block claims more than the file holds.
        QByteArray damaged = file.first(4 + 4 + 34 + 4 + 200000);
        QCOMPARE(fieldsOf(readAsFile(damaged)), nothing);
    }

    void unreadableFiles()
    {
        // A FIFO reads as nothing at once, without waiting for a writer.
        for (const char *fifo : { "fifo.flac", "fifo.mp3", "fifo.m4a" }) {
            const QString path = m_dir.filePath(QLatin1StringView(fifo));
            QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0644), 0);
            QCOMPARE(fieldsOf(readTrackInfo(path).metadata), nothing);
        }
        QCOMPARE(fieldsOf(readMetadata(m_dir.filePath(QStringLiteral("missing.flac")))), nothing);
        QCOMPARE(fieldsOf(readMetadata(m_dir.path() + QStringLiteral("/folder.flac/"))), nothing);
        QDir(m_dir.path()).mkpath(QStringLiteral("dir.flac"));
        QCOMPARE(fieldsOf(readMetadata(m_dir.filePath(QStringLiteral("dir.flac")))), nothing);
        QVERIFY(!readDuration(m_dir.filePath(QStringLiteral("dir.flac"))));
        QVERIFY(!readEmbeddedArtwork(m_dir.filePath(QStringLiteral("dir.flac"))));
    }

    void pictures_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QByteArray>("expected"); // empty: no picture
        const QByteArray si = build::streamInfo();
        QTest::newRow("first picture with bytes")
            << build::flacFile({ { 0, si }, { 6, build::pictureBody("") },
                   { 6, build::pictureBody("second") }, { 6, build::pictureBody("third") } })
            << QByteArray("second");
        QTest::newRow("damaged picture body skipped") << build::flacFile(
            { { 0, si }, { 6, build::pictureBody("x").first(20) }, { 6, build::pictureBody("ok") } })
                                                      << QByteArray("ok");
        QTest::newRow("picture data length past the block")
            << build::flacFile({ { 0, si }, { 6, build::pictureBody("abc").chopped(1) } }) << QByteArray();
        QTest::newRow("picture after the comment block")
            << build::flacFile({ { 0, si }, { 4, build::vorbisBody({}) }, { 6, build::pictureBody("late") } })
            << QByteArray("late");
        QTest::newRow("no picture") << build::flacFile({ { 0, si } }) << QByteArray();
        QTest::newRow("picture behind a damaged block")
            << build::flacFile({ { 0, si, 100000 }, { 6, build::pictureBody("x") } }) << QByteArray();
    }

    void pictures()
    {
        QFETCH(QByteArray, file);
        QFETCH(QByteArray, expected);
        const auto picture
            = readEmbeddedArtwork(testsupport::writeFile(m_dir.path(), QStringLiteral("p.flac"), file));
        QCOMPARE(picture.value_or(QByteArray()), expected);
        QCOMPARE(picture.has_value(), !expected.isEmpty());
    }

    void durations_data()
    {
        QTest::addColumn<QByteArray>("streamInfo");
        QTest::addColumn<double>("expected"); // negative: unknown
        QTest::newRow("two seconds") << build::streamInfo(88200, 44100) << 2.0;
        QTest::newRow("96 kHz, 36-bit sample count")
            << build::streamInfo(0x900000000ull, 96000) << double(0x900000000ull) / 96000;
        QTest::newRow("unknown length") << build::streamInfo(0, 44100) << -1.0;
        QTest::newRow("short block") << build::streamInfo().first(12) << -1.0;
    }

    void durations()
    {
        QFETCH(QByteArray, streamInfo);
        QFETCH(double, expected);
        const QString path = testsupport::writeFile(m_dir.path(), QStringLiteral("d.flac"),
            build::flacFile({ { 0, streamInfo }, { 4, build::vorbisBody({ "TITLE=t" }) } }));
        const auto duration = readDuration(path);
        QCOMPARE(duration.value_or(-1.0), expected);
        const FileTags info = readTrackInfo(path);
        QCOMPARE(info.duration.value_or(-1.0), expected);
        QCOMPARE(info.metadata.title, std::optional<QString>(QStringLiteral("t")));
    }
};

QTEST_GUILESS_MAIN(TestFlacReader)
#include "tst_flac_reader.moc"
