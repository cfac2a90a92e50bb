// SPDX-License-Identifier: GPL-3.0-or-later
#include "TagBuilders.h"
#include "support/TestSupport.h"
#include "tags/CafReader.h"
#include "tags/ContainerReader.h"
#include "tags/TagReader.h"

#include <QTemporaryDir>
#include <QTest>

using container::CommonKey;
using container::Item;
using Fields = QList<std::optional<QString>>; // title, artist, album, genre
Q_DECLARE_METATYPE(Fields)

namespace {

const std::optional<QString> none = std::nullopt;

Fields fieldsOf(const TrackMetadata &m)
{
    return { m.title, m.artist, m.album, m.genre };
}

Item common(CommonKey key, std::optional<QString> text)
{
    return { key, std::nullopt, std::move(text), std::nullopt };
}

Item keyed(const QString &key, std::optional<QString> text)
{
    return { std::nullopt, key, std::move(text), std::nullopt };
}

QByteArray le16(quint16 v)
{
    return QByteArray(1, char(v)) + char(v >> 8);
}

QByteArray riffChunk(const QByteArray &id, const QByteArray &body)
{
    return id + build::le32(quint32(body.size())) + body
        + (body.size() % 2 ? QByteArray(1, '\0') : QByteArray());
}

// A mono 16-bit WAV file of 800 samples (0.1 s) with the given extra chunks after the audio.
QByteArray wavFile(const QByteArray &extraChunks)
{
    const QByteArray fmt = le16(1) + le16(1) + build::le32(8000) + build::le32(16000) + le16(2) + le16(16);
    const QByteArray chunks
        = riffChunk("fmt ", fmt) + riffChunk("data", QByteArray(1600, '\x10')) + extraChunks;
    return "RIFF" + build::le32(quint32(4 + chunks.size())) + "WAVE" + chunks;
}

QByteArray infoList(const QByteArray &title)
{
    return riffChunk("LIST", "INFO" + riffChunk("INAM", title + '\0') + riffChunk("IGNR", "InfoGenre\0"));
}

} // namespace

class TestContainerReader : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private Q_SLOTS:
    void itemRules_data()
    {
        QTest::addColumn<QList<Item>>("items");
        QTest::addColumn<Fields>("expected");
        const QString copyrightGen = QString(QChar(0xA9)) + QStringLiteral("gen");
        QTest::newRow("common keys") << QList<Item> { common(CommonKey::title, "t"),
            common(CommonKey::artist, "a"), common(CommonKey::albumName, "b"),
            common(CommonKey::artwork, none) }
                                     << Fields { "t", "a", "b", none };
        QTest::newRow("the second title decides") << QList<Item> { common(CommonKey::title, "first"),
            common(CommonKey::title, "second") } << Fields { "second", none, none, none };
        QTest::newRow("a later title without text leaves title absent")
            << QList<Item> { common(CommonKey::title, "first"), common(CommonKey::title, none) }
            << Fields { none, none, none, none };
        QTest::newRow("items without a common key don't set fields")
            << QList<Item> { keyed("TIT2", "not common"), keyed("title", "x") }
            << Fields { none, none, none, none };
        QTest::newRow("genre under TCON")
            << QList<Item> { keyed("TCON", "Rock") } << Fields { none, none, none, "Rock" };
        QTest::newRow("genre under the iTunes atom, any case")
            << QList<Item> { keyed(copyrightGen.toUpper(), "Jazz") } << Fields { none, none, none, "Jazz" };
        QTest::newRow("genre under a key spelled genre")
            << QList<Item> { keyed("GeNrE", "Pop") } << Fields { none, none, none, "Pop" };
        QTest::newRow("first genre with a value wins")
            << QList<Item> { keyed("TCON", none), keyed(copyrightGen, "Soul"), keyed("genre", "Later") }
            << Fields { none, none, none, "Soul" };
        QTest::newRow("other keys aren't genres") << QList<Item> { keyed("gnre", "17"), keyed("TCON2", "x"),
            keyed("GENRES", "y") } << Fields { none, none, none, none };
    }

    void itemRules()
    {
        QFETCH(QList<Item>, items);
        QFETCH(Fields, expected);
        QCOMPARE(fieldsOf(container::metadataFromItems(items)), expected);
    }

    void artworkRules()
    {
        const QList<Item> items { { CommonKey::artwork, none, none, std::nullopt },
            { CommonKey::artwork, none, none, QByteArray() },
            { CommonKey::artwork, none, none, QByteArray("not an image, still the answer") },
            { CommonKey::artwork, none, none, QByteArray("\x89PNG") } };
        QCOMPARE(
            container::artworkFromItems(items), std::optional<QByteArray>("not an image, still the answer"));
        QCOMPARE(container::artworkFromItems({}), std::nullopt);
    }

    // MPEG files built byte by byte, read through TagLib.
    void mpegFiles_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<Fields>("expected");
        const QByteArray audio = build::mpegAudio();
        using build::id3Frame;
        using build::id3Text;
        QTest::newRow("ID3v2.3 frames")
            << build::id3Tag(3,
                   id3Frame(3, "TIT2", id3Text("t")) + id3Frame(3, "TPE1", id3Text("a", 1))
                       + id3Frame(3, "TALB", id3Text("b", 0)) + id3Frame(3, "TCON", id3Text("g")))
                + audio
            << Fields { "t", "a", "b", "g" };
        QTest::newRow("two titles: the second decides")
            << build::id3Tag(3, id3Frame(3, "TIT2", id3Text("one")) + id3Frame(3, "TIT2", id3Text("two")))
                + audio
            << Fields { "two", none, none, none };
        QTest::newRow("numeric genre reference") << build::id3Tag(3, id3Frame(3, "TCON", id3Text("(17)", 0)))
                + audio << Fields { none, none, none, "Rock" };
        QTest::newRow("ID3v2.2 names")
            << build::id3Tag(2, id3Frame(2, "TT2", id3Text("t", 0)) + id3Frame(2, "TCO", id3Text("g", 0)))
                + audio
            << Fields { "t", none, none, "g" };
        QTest::newRow("an empty frame doesn't hide the frames after it")
            << build::id3Tag(3,
                   id3Frame(3, "TIT2", id3Text("t")) + id3Frame(3, "TPE2", "")
                       + id3Frame(3, "TPE1", id3Text("a")) + id3Frame(3, "TALB", id3Text("b")))
                + audio
            << Fields { "t", "a", "b", none };
        QTest::newRow("genre references and lists") << build::id3Tag(4,
                                                           id3Frame(4, "TCON",
                                                               QByteArray("\x03(RX)(17)Rocky\x00"
                                                                          "8\x00Pop",
                                                                   20)))
                + audio << Fields { none, none, none, "Remix/Rock/Rocky/Jazz/Pop" };
        QTest::newRow("ID3v1 only") << audio + build::id3v1("v1 title", "v1 artist", "", "c", 3, 8)
                                    << Fields { "v1 title", "v1 artist", none, "Jazz" };
        QTest::newRow("ID3v1 fills what ID3v2 leaves without text")
            << build::id3Tag(3,
                   id3Frame(3, "TIT2", id3Text("v2")) + id3Frame(3, "TALB", id3Text(""))
                       + id3Frame(3, "TCON", id3Text("Soul")))
                + audio + build::id3v1("v1", "v1 artist", "v1 album", {}, 0, 8)
            << Fields { "v2", "v1 artist", "v1 album", "Soul" };
        QTest::newRow("ID3v2 of an unknown version, ID3v1 still read")
            << QByteArray("ID3\x07\x00\x00\x00\x00\x00\x02xx", 12) + audio + build::id3v1("v1", "", "")
            << Fields { "v1", none, none, none };
        QTest::newRow("garbage") << QByteArray(3000, 'g') << Fields { none, none, none, none };
        QTest::newRow("empty file") << QByteArray() << Fields { none, none, none, none };
    }

    void mpegFiles()
    {
        QFETCH(QByteArray, file);
        QFETCH(Fields, expected);
        QCOMPARE(fieldsOf(readMetadata(testsupport::writeFile(m_dir.path(), QStringLiteral("m.MP3"), file))),
            expected);
    }

    void mpegArtwork()
    {
        const QByteArray apic1 = QByteArray("\x00image/png\x00\x03\x00", 13);
        // A UTF-16 description ends with two zero bytes at an even offset.
        const QByteArray apic2 = QByteArray("\x01image/jpeg\x00\x00\xFF\xFE"
                                            "d\x00\x00\x00",
                                     19)
            + "JPEG BYTES";
        const QByteArray file
            = build::id3Tag(3, build::id3Frame(3, "APIC", apic1) + build::id3Frame(3, "APIC", apic2))
            + build::mpegAudio();
        const QString path = testsupport::writeFile(m_dir.path(), QStringLiteral("art.mp3"), file);
        QCOMPARE(readEmbeddedArtwork(path), std::optional<QByteArray>("JPEG BYTES"));
    }

    // WAV keeps tags in RIFF INFO and in an ID3v2 chunk; the later one in the file decides.
    void wavTagOrder_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<Fields>("expected");
        const QByteArray id3 = riffChunk("id3 ",
            build::id3Tag(3,
                build::id3Frame(3, "TIT2", build::id3Text("from id3"))
                    + build::id3Frame(3, "TCON", build::id3Text("Id3Genre"))));
        QTest::newRow("INFO then ID3")
            << wavFile(infoList("from info") + id3) << Fields { "from id3", none, none, "InfoGenre" };
        QTest::newRow("ID3 then INFO")
            << wavFile(id3 + infoList("from info")) << Fields { "from info", none, none, "Id3Genre" };
        QTest::newRow("INFO only") << wavFile(infoList("from info"))
                                   << Fields { "from info", none, none, "InfoGenre" };
    }

    void wavTagOrder()
    {
        QFETCH(QByteArray, file);
        QFETCH(Fields, expected);
        const QString path = testsupport::writeFile(m_dir.path(), QStringLiteral("w.wav"), file);
        QCOMPARE(fieldsOf(readMetadata(path)), expected);
        QCOMPARE(readDuration(path).value_or(-1), 0.1);
    }

    void caf_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<Fields>("expected");
        QTest::addColumn<double>("duration"); // negative: unknown
        using build::cafChunk;
        const QByteArray info = cafChunk("info",
            build::cafInfo({ { "title", "T" }, { "artist", "Ä" }, { "album", "B" }, { "genre", "G" },
                { "year", "2001" } }));
        const QByteArray desc = cafChunk("desc", build::cafDesc());
        QTest::newRow("info, desc and data")
            << build::cafFile(desc + info + cafChunk("data", QByteArray(4 + 4 * 22050, '\0')))
            << Fields { "T", QStringLiteral("Ä"), "B", "G" } << 0.5;
        QTest::newRow("data to the end of the file, info behind it is not reached")
            << build::cafFile(desc + cafChunk("data", QByteArray(4 + 4 * 441, '\0'), -1) + info)
            << Fields { none, none, none, none } << (4 * 441 + info.size()) / 4 / 44100.0;
        QTest::newRow("packet table gives the frames") << build::cafFile(desc
            + cafChunk("pakt", build::be64(10) + build::be64(4410) + build::be32(0) + build::be32(0)) + info
            + cafChunk("data", QByteArray(100, '\0'))) << Fields { "T", QStringLiteral("Ä"), "B", "G" }
                                                       << 0.1;
        QTest::newRow("the last title decides, later damage keeps earlier entries")
            << build::cafFile(
                   cafChunk("info", build::be32(4) + QByteArray("title\0one\0title\0two\0artist\0cut", 30)))
            << Fields { "two", none, none, none } << -1.0;
        QTest::newRow("invalid UTF-8 value reads as absent")
            << build::cafFile(cafChunk("info", build::cafInfo({ { "title", "ok" }, { "title", "\xFF" } })))
            << Fields { none, none, none, none } << -1.0;
        QTest::newRow("chunk running past the end")
            << build::cafFile(info + cafChunk("free", "x", 1000) + info)
            << Fields { "T", QStringLiteral("Ä"), "B", "G" } << -1.0;
        QTest::newRow("negative chunk size")
            << build::cafFile(cafChunk("free", "", -5) + info) << Fields { none, none, none, none } << -1.0;
        QTest::newRow("not CAF") << QByteArray("RIFF\0\0\0\0", 8) + info << Fields { none, none, none, none }
                                 << -1.0;
        QTest::newRow("huge entry count")
            << build::cafFile(cafChunk("info", build::be32(0xFFFFFFFF) + QByteArray("title\0x\0", 8)))
            << Fields { "x", none, none, none } << -1.0;
    }

    void caf()
    {
        QFETCH(QByteArray, file);
        QFETCH(Fields, expected);
        QFETCH(double, duration);
        const caf::Info parsed = caf::parse(file);
        QCOMPARE(fieldsOf(container::metadataFromItems(parsed.items)), expected);
        const QString path = testsupport::writeFile(m_dir.path(), QStringLiteral("c.caf"), file);
        const FileTags info = readTrackInfo(path);
        QCOMPARE(fieldsOf(info.metadata), expected);
        QCOMPARE(info.duration.value_or(-1), duration);
        QVERIFY(!readEmbeddedArtwork(path));
    }

    void unknownExtensionsReadNothing()
    {
        const QString path = testsupport::writeFile(m_dir.path(), QStringLiteral("x.ogg"),
            build::flacFile({ { 4, build::vorbisBody({ "TITLE=t" }) } }));
        QVERIFY(readMetadata(path).isEmpty());
        QVERIFY(!readDuration(path));
    }
};

QTEST_GUILESS_MAIN(TestContainerReader)
#include "tst_container_reader.moc"
