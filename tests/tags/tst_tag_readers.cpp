// SPDX-License-Identifier: GPL-3.0-or-later
// Reading tags, durations and pictures from files built byte by byte: FLAC and
// Vorbis comments, ID3v2 and ID3v1, RIFF INFO. Damage reads as absent.
#include "FuzzTargets.h"
#include "TagBuilders.h"
#include "support/TestSupport.h"
#include "tags/FlacMetadata.h"
#include "tags/TagReader.h"

#include <QDirIterator>
#include <QTemporaryDir>
#include <QTest>

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
        QTest::addColumn<QByteArray>("picture"); // empty: none
        const auto row = [](const char *what, const char *name, const QByteArray &file,
                             const Fields &expected, double duration = -1, const QByteArray &picture = {}) {
            QTest::newRow(what) << name << file << expected << duration << picture;
        };

        // Vorbis comments
        row("last wins, any case", "a.FLAC", flacWith({ "title=A", "Title=B" }), titleOnly("B"), 1.0);
        row("empty value, no key, no equals sign, invalid UTF-8: skipped, earlier value kept", "a.flac",
            flacWith({ "ARTIST=kept", "ARTIST=", "=Foo", "ARTIST", "===", "ARTIST=\xC3\x28", "TITLE=a=b",
                "TITLE=bad\xFF", "=ALBUM=c", "ALBUM=\xC0\xAF", "X\xFF=1", "GENRE==g", "GENRE=\xED\xA0\x80" }),
            { "a=b", "kept", "c", "=g" }, 1.0);
        const auto body = [](const QByteArray &b) {
            return build::flacFile({ { 0, build::streamInfo() }, { 4, b } });
        };
        row("comment running past the block", "a.flac",
            body(build::vorbisBody({ "TITLE=x" }, "v", 2) + build::le32(50) + "A=y"), titleOnly("x"), 1.0);

        // FLAC blocks
        const QByteArray comment = build::vorbisBody({ "TITLE=found" });
        const QByteArray si = build::streamInfo();
        row("comment after padding, seek table and picture", "a.flac",
            build::flacFile({ { 0, si }, { 1, QByteArray(100, '\0') }, { 3, QByteArray(36, 'S') },
                { 6, build::pictureBody("png") }, { 4, comment } }),
            titleOnly("found"), 1.0, "png");
        row("picture after the comment", "a.flac",
            build::flacFile({ { 0, si }, { 4, comment }, { 1, QByteArray(10, '\0') }, { 6, build::pictureBody("after") } }),
            titleOnly("found"), 1.0, "after");
        row("last-block flag before the comment", "a.flac",
            build::flacFile({ { 0, si } }) + build::flacFile({ { 4, comment } }).mid(4), nothing, 1.0);
        row("only the first comment block counts", "a.flac",
            build::flacFile(
                { { 0, si }, { 4, comment }, { 4, build::vorbisBody({ "TITLE=second", "ARTIST=a" }) } }),
            titleOnly("found"), 1.0);
        row("block running past the end before the comment", "a.flac",
            build::flacFile({ { 0, si }, { 1, QByteArray(10, '\0'), 1000000 }, { 4, comment } }, {}), nothing,
            1.0);
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
        row("genre references and lists", "m.mp3",
            build::id3Tag(4, id3Frame(4, "TCON", QByteArray("\3(RX)(17)Rocky\08\0Pop", 20))) + audio,
            { none, none, none, "Remix/Rock/Rocky/Jazz/Pop" }, frames);
        row("ID3v1 fills what ID3v2 leaves without text", "m.mp3",
            build::id3Tag(3,
                id3Frame(3, "TIT2", id3Text("v2")) + id3Frame(3, "TALB", id3Text(""))
                    + id3Frame(3, "TCON", id3Text("Soul")))
                + audio + build::id3v1("v1", "v1 artist", "v1 album", {}, 0, 8),
            { "v2", "v1 artist", "v1 album", "Soul" }, frames);

        // WAV keeps tags in RIFF INFO and in an ID3v2 chunk; the later one decides (the
        // genre comes from the one that has it).
        const QByteArray id3 = riffChunk("id3 ",
            build::id3Tag(
                3, id3Frame(3, "TIT2", id3Text("from id3")) + id3Frame(3, "TCON", id3Text("Id3Genre"))));
        row("INFO then ID3", "w.wav", wavFile(infoList("from info") + id3),
            { "from id3", none, none, "InfoGenre" }, 0.1);

        // The first picture with bytes; none behind damage.
        row("FLAC pictures", "p.flac",
            build::flacFile(
                { { 0, si }, { 6, build::pictureBody("") }, { 6, build::pictureBody("x").first(20) },
                    { 4, build::vorbisBody({}) }, { 6, build::pictureBody("second") } }),
            nothing, 1.0, "second");
        row("FLAC picture behind a damaged block", "p.flac",
            build::flacFile({ { 0, si, 100000 }, { 6, build::pictureBody("x") } }), nothing);
        // A UTF-16 description ends with two zero bytes at an even offset.
        row("MP3 pictures", "p.mp3",
            build::id3Tag(3,
                id3Frame(3, "APIC", QByteArray("\0image/png\0\3\0", 13))
                    + id3Frame(3, "APIC",
                        QByteArray("\1image/jpeg\0\0\xFF\xFE"
                                   "d\0\0\0",
                            19)
                            + "JPEG BYTES"))
                + audio,
            nothing, frames, "JPEG BYTES");
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
        const auto picture = readEmbeddedArtwork(path);
        QTEST(picture.value_or(QByteArray()), "picture");
        QCOMPARE(picture.has_value(), !picture.value_or(QByteArray()).isEmpty());
        // What the tags tell of a picture spares opening the file for one.
        QCOMPARE(readMetadata(path).hasPicture, picture.has_value());
        QCOMPARE(info.metadata.hasPicture, picture.has_value());
    }

    // Inputs the fuzzers once failed on, kept as hex under regressions/TARGET/,
    // through the same checks as the fuzz targets (which trap).
    void fuzzRegressions_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QByteArray>("input");
        QDirIterator it(QStringLiteral(TARNWELL_FUZZ_REGRESSIONS), { QStringLiteral("*.hex") }, QDir::Files,
            QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QFileInfo file(it.next());
            const QString target = file.dir().dirName();
            QTest::newRow(qPrintable(target + u'/' + file.fileName()))
                << target << QByteArray::fromHex(testsupport::readFile(file.filePath()));
        }
    }

    void fuzzRegressions()
    {
        QFETCH(QString, target);
        QFETCH(QByteArray, input);
        const auto found = std::find_if(std::begin(fuzz::targets), std::end(fuzz::targets),
            [&](const fuzz::Target &t) { return target == QLatin1StringView(t.name); });
        QVERIFY2(found != std::end(fuzz::targets), qPrintable(target));
        found->run(input);
    }
};

QTEST_GUILESS_MAIN(TestTagReaders)
#include "tst_tag_readers.moc"
