// SPDX-License-Identifier: GPL-3.0-or-later
// Reading tags, durations and pictures from files built byte by byte: FLAC and
// Vorbis comments, ID3v2 and ID3v1, RIFF INFO. Damage reads as absent.
#include "TagBuilders.h"
#include "support/TestSupport.h"
#include "tags/FlacMetadata.h"
#include "tags/TagReader.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using Fields = QList<std::optional<QString>>; // title, artist, album, genre
Q_DECLARE_METATYPE(Fields)

namespace {

const std::optional<QString> none = std::nullopt;
const Fields nothing { none, none, none, none };

Fields fieldsOf(const TrackMetadata &m)
{
    return { m.title, m.artist, m.album, m.genre };
}

Fields titleOnly(const QString &t)
{
    return { t, none, none, none };
}

QByteArray flacWith(const QList<QByteArray> &comments)
{
    return build::flacFile({ { 0, build::streamInfo() }, { 4, build::vorbisBody(comments) } });
}

QByteArray riffChunk(const QByteArray &id, const QByteArray &body)
{
    return id + build::le32(quint32(body.size())) + body
        + (body.size() % 2 ? QByteArray(1, '\0') : QByteArray());
}

// A mono 16-bit WAV file of 800 samples (0.1 s) with the given chunks after the audio.
QByteArray wavFile(const QByteArray &extraChunks)
{
    const QByteArray fmt = QByteArray("\x01\x00\x01\x00", 4) + build::le32(8000) + build::le32(16000)
        + QByteArray("\x02\x00\x10\x00", 4);
    const QByteArray chunks
        = riffChunk("fmt ", fmt) + riffChunk("data", QByteArray(1600, '\x10')) + extraChunks;
    return "RIFF" + build::le32(quint32(4 + chunks.size())) + "WAVE" + chunks;
}

QByteArray infoList(const QByteArray &title)
{
    return riffChunk("LIST", "INFO" + riffChunk("INAM", title + '\0') + riffChunk("IGNR", "InfoGenre\0"));
}

} // namespace

class TestTagReaders : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString write(const QString &name, const QByteArray &bytes)
    {
        return testsupport::writeFile(m_dir.path(), name, bytes);
    }

private Q_SLOTS:
    void reads_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<Fields>("expected");
        QTest::addColumn<double>("duration"); // negative: unknown
        const auto row
            = [](const char *what, const char *name, const QByteArray &file, const Fields &expected,
                  double duration = -1) { QTest::newRow(what) << name << file << expected << duration; };

        // Vorbis comments
        row("last wins, any case", "a.FLAC", flacWith({ "title=A", "Title=B" }), titleOnly("B"), 1.0);
        row("empty value, no key, no equals sign: skipped, earlier value kept", "a.flac",
            flacWith({ "ARTIST=kept", "ARTIST=", "=Foo", "ARTIST", "===" }), { none, "kept", none, none },
            1.0);
        row("equals signs", "a.flac", flacWith({ "TITLE=a=b", "ARTIST==b", "=ALBUM=c" }),
            { "a=b", "=b", "c", none }, 1.0);
        row("invalid UTF-8 (overlong, surrogate) skipped, the rest read", "a.flac",
            flacWith({ "TITLE=good", "TITLE=bad\xFF", "ARTIST=\xC3\x28", "ARTIST=ok", "ALBUM=\xC0\xAF",
                "X\xFF=1", "GENRE=\xED\xA0\x80" }),
            { "good", "ok", none, none }, 1.0);
        row("values not trimmed, four-byte UTF-8", "a.flac",
            flacWith({ "TITLE= Caf\xC3\xA9 \t", "ARTIST=\xF0\x9F\x8E\xB5" }),
            { QStringLiteral(" Café \t"), QStringLiteral("🎵"), none, none }, 1.0);
        const auto body = [](const QByteArray &b) {
            return build::flacFile({ { 0, build::streamInfo() }, { 4, b } });
        };
        row("count larger than the comments", "a.flac",
            body(build::vorbisBody({ "TITLE=x", "ARTIST=y" }, "v", 0xFFFFFFFF)), { "x", "y", none, none },
            1.0);
        row("comment running past the block", "a.flac",
            body(build::vorbisBody({ "TITLE=x" }, "v", 2) + build::le32(50) + "A=y"), titleOnly("x"), 1.0);

        // FLAC blocks
        const QByteArray comment = build::vorbisBody({ "TITLE=found" });
        const QByteArray si = build::streamInfo();
        row("comment after padding, seek table and picture", "a.flac",
            build::flacFile({ { 0, si }, { 1, QByteArray(100, '\0') }, { 3, QByteArray(36, 'S') },
                { 6, build::pictureBody("png") }, { 4, comment } }),
            titleOnly("found"), 1.0);
        row("last-block flag before the comment", "a.flac",
            build::flacFile({ { 0, si } }) + build::flacFile({ { 4, comment } }).mid(4), nothing, 1.0);
        row("only the first comment block counts", "a.flac",
            build::flacFile(
                { { 0, si }, { 4, comment }, { 4, build::vorbisBody({ "TITLE=second", "ARTIST=a" }) } }),
            titleOnly("found"), 1.0);
        row("ID3v2 tag in front", "a.flac",
            build::id3Tag(3, build::id3Frame(3, "TIT2", build::id3Text("x"))) + flacWith({ "TITLE=t" }),
            nothing);
        row("block running past the end before the comment", "a.flac",
            build::flacFile({ { 0, si }, { 1, QByteArray(10, '\0'), 1000000 }, { 4, comment } }, {}), nothing,
            1.0);
        row("comment block ending exactly at the end of the file", "a.flac",
            build::flacFile({ { 0, si }, { 4, comment } }, {}), titleOnly("found"), 1.0);
        row("96 kHz, 36-bit sample count", "a.flac",
            build::flacFile({ { 0, build::streamInfo(0x900000000ull, 96000) } }), nothing,
            double(0x900000000ull) / 96000);

        // MPEG
        using build::id3Frame;
        using build::id3Text;
        const QByteArray audio = build::mpegAudio();
        const double frames = 0.104; // four frames of 1152 samples at 44.1 kHz, in whole milliseconds
        row("two titles: the second decides", "m.mp3",
            build::id3Tag(3, id3Frame(3, "TIT2", id3Text("one")) + id3Frame(3, "TIT2", id3Text("two")))
                + audio,
            titleOnly("two"), frames);
        row("ID3v2.2 names", "m.mp3",
            build::id3Tag(2, id3Frame(2, "TT2", id3Text("t", 0)) + id3Frame(2, "TCO", id3Text("(17)", 0)))
                + audio,
            { "t", none, none, "Rock" }, frames);
        row("an empty frame doesn't hide the frames after it", "m.mp3",
            build::id3Tag(3,
                id3Frame(3, "TIT2", id3Text("t")) + id3Frame(3, "TPE2", "")
                    + id3Frame(3, "TPE1", id3Text("a")))
                + audio,
            { "t", "a", none, none }, frames);
        row("genre references and lists", "m.mp3",
            build::id3Tag(4,
                id3Frame(4, "TCON",
                    QByteArray("\x03(RX)(17)Rocky\x00"
                               "8\x00Pop",
                        20)))
                + audio,
            { none, none, none, "Remix/Rock/Rocky/Jazz/Pop" }, frames);
        row("ID3v1 fills what ID3v2 leaves without text", "m.mp3",
            build::id3Tag(3,
                id3Frame(3, "TIT2", id3Text("v2")) + id3Frame(3, "TALB", id3Text(""))
                    + id3Frame(3, "TCON", id3Text("Soul")))
                + audio + build::id3v1("v1", "v1 artist", "v1 album", {}, 0, 8),
            { "v2", "v1 artist", "v1 album", "Soul" }, frames);
        row("ID3v2 of an unknown version, ID3v1 still read", "m.mp3",
            QByteArray("ID3\x07\x00\x00\x00\x00\x00\x02xx", 12) + audio + build::id3v1("v1", "", ""),
            titleOnly("v1"), frames);
        row("garbage", "m.mp3", QByteArray(3000, 'g'), nothing);

        // WAV keeps tags in RIFF INFO and in an ID3v2 chunk; the later one decides.
        const QByteArray id3 = riffChunk("id3 ",
            build::id3Tag(
                3, id3Frame(3, "TIT2", id3Text("from id3")) + id3Frame(3, "TCON", id3Text("Id3Genre"))));
        row("INFO then ID3", "w.wav", wavFile(infoList("from info") + id3),
            { "from id3", none, none, "InfoGenre" }, 0.1);
        row("ID3 then INFO", "w.wav", wavFile(id3 + infoList("from info")),
            { "from info", none, none, "Id3Genre" }, 0.1);

        row("unknown extension", "x.ogg", flacWith({ "TITLE=t" }), nothing);
    }

    void reads()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, file);
        QFETCH(Fields, expected);
        QFETCH(double, duration);
        const QString path = write(name, file);
        QCOMPARE(fieldsOf(readMetadata(path)), expected);
        const FileTags info = readTrackInfo(path);
        QCOMPARE(fieldsOf(info.metadata), expected);
        QCOMPARE(info.duration.value_or(-1), duration);
        if (name.endsWith(u"flac", Qt::CaseInsensitive))
            QCOMPARE(fieldsOf(parseFLACMetadata(file)), expected);
    }

    // The pure walk sees only the head it is given; the file reader keeps
    // walking block headers past it, so tags written behind a large picture
    // stay visible. Real damage stays damage.
    void commentBehindALargePicture()
    {
        const QByteArray picture = build::pictureBody(QByteArray(600 * 1024, 'P'));
        const QByteArray file = build::flacFile({ { 0, build::streamInfo() }, { 6, picture },
                                                    { 4, build::vorbisBody({ "TITLE=behind", "GENRE=g" }) } },
            QByteArray(300000, 'A'));
        QCOMPARE(fieldsOf(parseFLACMetadata(file.first(524288))), nothing);
        QCOMPARE(fieldsOf(readMetadata(write(QStringLiteral("a.flac"), file))),
            (Fields { "behind", none, none, "g" }));
        QCOMPARE(fieldsOf(readMetadata(write(QStringLiteral("b.flac"), file.first(200000)))), nothing);
    }

    void unreadableFiles()
    {
        // A FIFO reads as nothing at once, without waiting for a writer.
        for (const char *name : { "fifo.flac", "fifo.mp3", "fifo.m4a", "dir.flac", "missing.flac" }) {
            const QString path = m_dir.filePath(QLatin1StringView(name));
            if (name[0] == 'f')
                QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0644), 0);
            else if (name[0] == 'd')
                QVERIFY(QDir().mkpath(path));
            QCOMPARE(fieldsOf(readTrackInfo(path).metadata), nothing);
            QVERIFY(!readEmbeddedArtwork(path));
        }
    }

    void pictures_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QByteArray>("expected"); // empty: no picture
        const QByteArray si = build::streamInfo();
        QTest::newRow("FLAC: the first picture with bytes")
            << "p.flac"
            << build::flacFile(
                   { { 0, si }, { 6, build::pictureBody("") }, { 6, build::pictureBody("x").first(20) },
                       { 4, build::vorbisBody({}) }, { 6, build::pictureBody("second") } })
            << QByteArray("second");
        QTest::newRow("FLAC: picture behind a damaged block")
            << "p.flac" << build::flacFile({ { 0, si, 100000 }, { 6, build::pictureBody("x") } })
            << QByteArray();
        // A UTF-16 description ends with two zero bytes at an even offset.
        QTest::newRow("MP3: the first APIC with bytes")
            << "p.mp3"
            << build::id3Tag(3,
                   build::id3Frame(3, "APIC", QByteArray("\x00image/png\x00\x03\x00", 13))
                       + build::id3Frame(3, "APIC",
                           QByteArray("\x01image/jpeg\x00\x00\xFF\xFE"
                                      "d\x00\x00\x00",
                               19)
                               + "JPEG BYTES"))
                + build::mpegAudio()
            << QByteArray("JPEG BYTES");
    }

    void pictures()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, file);
        QFETCH(QByteArray, expected);
        const auto picture = readEmbeddedArtwork(write(name, file));
        QCOMPARE(picture.value_or(QByteArray()), expected);
        QCOMPARE(picture.has_value(), !expected.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestTagReaders)
#include "tst_tag_readers.moc"
