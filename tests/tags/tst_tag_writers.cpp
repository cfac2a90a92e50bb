// SPDX-License-Identifier: GPL-3.0-or-later
// The two writers of our own, in memory: FLAC metadata blocks and ID3v2 tags,
// checked by the plain readers of the test builders.
#include "TagBuilders.h"
#include "tags/FlacMetadata.h"
#include "tags/MetadataWriter.h"

#include <QTest>

using namespace MetadataWriter;
using build::id3Frame;
using build::id3Text;
using Frames = QList<plain::Id3Frame>;
using plain::id3Text;

namespace {

QByteArray written(const Result &r)
{
    if (!r)
        qWarning() << "writer refused:" << describe(r.error) << r.detail;
    return r.data.value_or(QByteArray());
}

QByteArray writeOk(const QByteArray &in, const TagEdit &edit)
{
    return written(writeFLACTags(in, edit));
}

QByteArray write(const QByteArray &in, const TagEdit &edit)
{
    return written(writeID3Tags(in, edit));
}

const TagEdit newTitle = TagEdit::fromValues(QStringLiteral("New"), std::nullopt, std::nullopt);

} // namespace

Q_DECLARE_METATYPE(Frames)

class TestTagWriters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void carriedComments_data()
    {
        QTest::addColumn<QList<QList<QByteArray>>>("oldBlocks");
        QTest::addColumn<TagEdit>("edit");
        QTest::addColumn<QList<QByteArray>>("expected");
        using FE = FieldEdit;
        QTest::newRow("title given on a block with a title: one title, the rest carried")
            << QList<QList<QByteArray>> { { "TITLE=old", "GENRE=Rock", "TRACKNUMBER=3", "DATE=2001" } }
            << TagEdit::fromValues(QStringLiteral("new"), std::nullopt, std::nullopt)
            << QList<QByteArray> { "TITLE=new", "GENRE=Rock", "TRACKNUMBER=3", "DATE=2001" };
        QTest::newRow("order title, artist, album; every spelling of a field replaced")
            << QList<QList<QByteArray>> { { "album=x", "=TITLE=y", "Artist=z", "COMMENT=c" } }
            << TagEdit::fromValues(QStringLiteral("T"), QStringLiteral("A"), QStringLiteral("B"))
            << QList<QByteArray> { "TITLE=T", "ARTIST=A", "ALBUM=B", "COMMENT=c" };
        QTest::newRow("keep carries every comment of the field, in order")
            << QList<QList<QByteArray>> { { "ARTIST=a1", "TITLE=t", "ALBUM=b", "ARTIST=a2",
                   "TRACKNUMBER=1" } }
            << TagEdit { FE::set(QStringLiteral("n")), FE::keep(), FE::remove() }
            << QList<QByteArray> { "TITLE=n", "ARTIST=a1", "ARTIST=a2", "TRACKNUMBER=1" };
        QTest::newRow("comments the reader skips are carried byte for byte")
            << QList<QList<QByteArray>> { { "BAD=\xFF\xFE", "NOEQUALS", "EMPTY=", "" } }
            << TagEdit::fromValues(QStringLiteral("t"), std::nullopt, std::nullopt)
            << QList<QByteArray> { "TITLE=t", "BAD=\xFF\xFE", "NOEQUALS", "EMPTY=", "" };
        QTest::newRow("a second block's comments go first so the first block still decides")
            << QList<QList<QByteArray>> { { "TITLE=a", "GENRE=g1" }, { "TITLE=b", "GENRE=g2" } }
            << TagEdit { FE::keep(), FE::keep(), FE::set(QStringLiteral("new")) }
            << QList<QByteArray> { "TITLE=b", "TITLE=a", "ALBUM=new", "GENRE=g2", "GENRE=g1" };
    }

    void carriedComments()
    {
        QFETCH(QList<QList<QByteArray>>, oldBlocks);
        QFETCH(TagEdit, edit);
        QFETCH(QList<QByteArray>, expected);
        QList<build::Block> blocks { { 0, build::streamInfo() } };
        for (const auto &comments : oldBlocks)
            blocks.append({ 4, build::vorbisBody(comments, "old vendor") });
        QByteArray vendor;
        QCOMPARE(
            plain::comments(plain::flacBlocks(writeOk(build::flacFile(blocks), edit)).last().body, &vendor),
            expected);
        QCOMPARE(vendor, QByteArray("Tarnwell"));
    }

    // Old tags of every version: TIT2, TPE1 and TALB come first, then the
    // other frames in ID3v2.3 form and in their old order.
    void carriedFrames_data()
    {
        QTest::addColumn<QByteArray>("oldTag");
        QTest::addColumn<TagEdit>("edit");
        QTest::addColumn<Frames>("expected");
        using FE = FieldEdit;
        const QByteArray jpeg("\xFF\xD8\xFF\xE0 picture bytes \xFF\x00 more", 26);
        const QByteArray apicBody = QByteArray("\x00image/jpeg\x00\x03", 13) + "cover" + '\0' + jpeg;
        const QByteArray comm = QByteArray("\x00"
                                           "eng",
                                    4)
            + "desc" + '\0' + "a comment";

        QTest::newRow("v2.3: every other frame carried byte for byte")
            << build::id3Tag(3,
                   id3Frame(3, "TIT2", id3Text("Old")) + id3Frame(3, "APIC", apicBody)
                       + id3Frame(3, "TCON", id3Text("(17)Rock", 0)) + id3Frame(3, "TRCK", id3Text("3/12", 0))
                       + id3Frame(3, "COMM", comm) + id3Frame(3, "TPE1", id3Text("Gone"))
                       + id3Frame(3, "TXXX", QByteArray("\x00key\x00value", 10), 0x8000),
                   0, 100)
            << newTitle
            << Frames { id3Text("TIT2", "New"), { "APIC", 0, apicBody }, id3Text("TCON", "(17)Rock", 0),
                   id3Text("TRCK", "3/12", 0), { "COMM", 0, comm },
                   { "TXXX", 0x8000, QByteArray("\x00key\x00value", 10) } };
        QTest::newRow("v2.3: empty frames left out, the frames after them carried")
            << build::id3Tag(3,
                   id3Frame(3, "TIT2", id3Text("Old")) + id3Frame(3, "TPE2", "")
                       + id3Frame(3, "TPE1", id3Text("Art")))
            << TagEdit { FE::keep(), FE::keep(), FE::set(QStringLiteral("B")) }
            << Frames { id3Text("TIT2", "Old"), id3Text("TPE1", "Art"), id3Text("TALB", "B") };
        QTest::newRow("v2.3: tag unsynchronisation undone, extended header dropped")
            << build::id3Tag(3,
                   QByteArray("\x00\x00\x00\x06\x00\x00\x00\x00\x00\x00", 10) + "APIC" + build::be32(16)
                       + QByteArray(2, '\0')
                       + QByteArray("\x00image/png\x00\x03\x00\xFF\x00\xE0\xFF\x00\x00", 18),
                   0xC0)
            << newTitle
            << Frames { id3Text("TIT2", "New"),
                   { "APIC", 0, QByteArray("\x00image/png\x00\x03\x00\xFF\xE0\xFF\x00", 16) } };
        QTest::newRow("v2.2: renamed, PIC becomes APIC, unknown frames dropped")
            << build::id3Tag(2,
                   id3Frame(2, "TT2", id3Text("Old", 0)) + id3Frame(2, "TP1", id3Text("Art", 0))
                       + id3Frame(2, "PIC", QByteArray("\x00JPG\x03\x00", 6) + jpeg)
                       + id3Frame(2, "ZZZ", "private") + id3Frame(2, "TCO", id3Text("Jazz", 0))
                       + id3Frame(2, "COM", comm))
            << TagEdit { FE::set(QStringLiteral("New")), FE::keep(), FE::remove() }
            << Frames { id3Text("TIT2", "New"), id3Text("TPE1", "Art", 0),
                   { "APIC", 0, QByteArray("\x00image/jpeg\x00\x03\x00", 14) + jpeg },
                   id3Text("TCON", "Jazz", 0), { "COMM", 0, comm } };
        const QByteArray longText(300, 'L'); // sizes above 127 tell synchsafe from plain
        const QByteArray people("\x03producer\x00P\x00mix\x00M", 17);
        QTest::newRow("v2.4: synchsafe sizes, multiple values joined, dates mapped")
            << build::id3Tag(4,
                   id3Frame(4, "TPE1",
                       QByteArray("\x03"
                                  "A\x00"
                                  "B",
                           4))
                       + id3Frame(4, "TCOM", id3Text(longText))
                       + id3Frame(4, "TDRC", id3Text("2001-02-03T04:05", 0))
                       + id3Frame(4, "TDOR", id3Text("1999", 0)) + id3Frame(4, "TIPL", people)
                       + id3Frame(4, "SEEK", build::be32(1000)) + id3Frame(4, "TSOP", id3Text("Sort")))
            << TagEdit { FE::remove(), FE::keep(), FE::set(QStringLiteral("B")) }
            << Frames { id3Text("TPE1", "A/B"), id3Text("TALB", "B"),
                   id3Text("TCOM", QString::fromLatin1(longText)), id3Text("TYER", "2001"),
                   id3Text("TDAT", "0302"), id3Text("TIME", "0405"), id3Text("TORY", "1999"),
                   { "IPLS", 0, people }, id3Text("TSOP", "Sort") };
        QTest::newRow("v2.4: frame flags, unsynchronisation and data length moved to v2.3 places")
            << build::id3Tag(4,
                   id3Frame(4, "APIC",
                       QByteArray("\x07") + build::synchsafe(6) + QByteArray("\x00\xFF\x00\xE0pic", 7),
                       0x4043)
                       + id3Frame(4, "PRIV", build::synchsafe(100) + "zlib-data", 0x0009))
            << newTitle
            << Frames { id3Text("TIT2", "New"), { "APIC", 0x8020, QByteArray("\x07\x00\xFF\xE0pic", 7) },
                   { "PRIV", 0x0080, build::be32(100) + "zlib-data" } };
    }

    void carriedFrames()
    {
        QFETCH(QByteArray, oldTag);
        QFETCH(TagEdit, edit);
        QFETCH(Frames, expected);
        const QByteArray audio = build::mpegAudio();
        QByteArray rest;
        QCOMPARE(plain::id3Frames(write(oldTag + audio, edit), &rest), expected);
        QCOMPARE(rest, audio);
    }

    // A trailing ID3v1 tag: what it alone holds moves into the new ID3v2 tag,
    // and it follows the new values (or goes) so that no reader sees an old one.
    // Removing is removing, whether or not frames are left.
    void trailingTagAndRemoval_data()
    {
        QTest::addColumn<QByteArray>("before"); // the ID3v2 tag; the audio and `trailer` follow
        QTest::addColumn<QByteArray>("trailer");
        QTest::addColumn<TagEdit>("edit");
        QTest::addColumn<Frames>("frames");
        QTest::addColumn<QByteArray>("newTrailer");
        using FE = FieldEdit;
        const QByteArray v1 = build::id3v1("Old", "Art", "Alb", "cmt", 7, 17);
        const Frames folded { id3Text("TYER", "1999"),
            { "COMM", 0,
                QByteArray("\x03XXX\x00"
                           "cmt",
                    8) },
            id3Text("TRCK", "7"), id3Text("TCON", "(17)") };
        QTest::newRow("ID3v1 only, a title given: the rest folded in, ID3v1 follows")
            << QByteArray() << v1 << TagEdit { FE::set(QStringLiteral("New")), FE::keep(), FE::keep() }
            << Frames { id3Text("TIT2", "New"), id3Text("TPE1", "Art"), id3Text("TALB", "Alb") } + folded
            << build::id3v1("New", "Art", "Alb", "cmt", 7, 17);
        QTest::newRow("both tags, album removed: blanked in ID3v1 too")
            << build::id3Tag(3, id3Frame(3, "TIT2", id3Text("T")) + id3Frame(3, "TALB", id3Text("Alb"))) << v1
            << TagEdit { FE::keep(), FE::keep(), FE::remove() }
            << Frames { id3Text("TIT2", "T"), id3Text("TPE1", "Art") } + folded
            << build::id3v1("T", "Art", "", "cmt", 7, 17);
        QTest::newRow("a value ID3v1 can't hold: ID3v1 removed")
            << QByteArray() << v1
            << TagEdit::fromValues(QStringLiteral("東京"), QStringLiteral("Art"), std::nullopt)
            << Frames { id3Text("TIT2", QStringLiteral("東京")), id3Text("TPE1", "Art") } + folded
            << QByteArray();
        QTest::newRow("all three removed, other frames kept")
            << build::id3Tag(3,
                   id3Frame(3, "TIT2", id3Text("T")) + id3Frame(3, "TPE1", id3Text("A"))
                       + id3Frame(3, "TALB", id3Text("B")) + id3Frame(3, "TCON", id3Text("Jazz")))
            << QByteArray() << TagEdit::fromValues(QString(), QString(), QString())
            << Frames { id3Text("TCON", "Jazz") } << QByteArray();
        QTest::newRow("all three removed, nothing left: no tag at all")
            << build::id3Tag(3, id3Frame(3, "TIT2", id3Text("T"))) << QByteArray()
            << TagEdit::fromValues(QString(), QString(), QString()) << Frames {} << QByteArray();
        QTest::newRow("keep everything")
            << build::id3Tag(3, id3Frame(3, "TIT2", id3Text("t"), 0x0040)) << QByteArray() << TagEdit {}
            << Frames { { "TIT2", 0x0040, build::id3Text("t") } } << QByteArray();
        QTest::newRow("all three removed from an untagged file")
            << QByteArray() << QByteArray() << TagEdit::fromValues(QString(), QString(), QString())
            << Frames {} << QByteArray();
        QTest::newRow("a kept field empty in ID3v2 comes from ID3v1")
            << build::id3Tag(3, id3Frame(3, "TPE1", id3Text(""))) << build::id3v1("", "V1 artist", "")
            << TagEdit { FE::set(QStringLiteral("T")), FE::keep(), FE::keep() }
            << Frames { id3Text("TIT2", "T"), id3Text("TPE1", "V1 artist"), id3Text("TYER", "1999") }
            << build::id3v1("T", "V1 artist", "");
    }

    void trailingTagAndRemoval()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, trailer);
        QFETCH(TagEdit, edit);
        QFETCH(Frames, frames);
        QFETCH(QByteArray, newTrailer);
        const QByteArray audio = build::mpegAudio();
        QByteArray rest;
        QCOMPARE(plain::id3Frames(write(before + audio + trailer, edit), &rest), frames);
        QCOMPARE(rest, audio + newTrailer);
    }

    // Refused, never read around: bytes after a damaged FLAC block are not
    // audio, a short comment block would lose the comments after it, frames
    // after damage in an ID3v2 tag would be lost.
    void refused_data()
    {
        QTest::addColumn<bool>("flac");
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<WriteError>("error");
        QTest::addColumn<QString>("detail"); // empty: not compared
        const auto row
            = [](const char *what, bool flac, const QByteArray &input, WriteError error,
                  const char *detail = "") { QTest::newRow(what) << flac << input << error << detail; };
        const QByteArray si = build::streamInfo();
        const QByteArray comment = build::vorbisBody({ "TITLE=x", "GENRE=g", "TRACKNUMBER=3" });
        const QByteArray picture = build::pictureBody(QByteArray(300, 'P'));
        const auto damaged = WriteError::damagedMetadata;
        row("three bytes", true, "fLa", WriteError::unsupportedFormat);
        // An old comment that the new block must carry pushes it past 24 bits.
        row("comment block over 16,777,215 bytes", true,
            build::flacFile(
                { { 0, si }, { 4, build::vorbisBody({ "COMMENT=" + QByteArray(0xFFFFFF - 40, 'c') }, "") } }),
            WriteError::tooLarge);
        row("picture block shorter than its picture", true,
            build::flacFile({ { 0, si }, { 6, picture, quint32(picture.size() - 100) }, { 4, comment } }),
            damaged);
        row("comment block shorter than its comments", true,
            build::flacFile(
                { { 0, si }, { 4, comment, quint32(comment.size() - 20) }, { 1, QByteArray(40, '\0') } }),
            damaged);
        row("comment block longer than its comments", true,
            build::flacFile({ { 0, si }, { 4, comment + QByteArray(8, '\0') } }), damaged);
        row("block running past the end", true, build::flacFile({ { 0, si }, { 1, "pad", 1000 } }, {}),
            damaged);
        row("no last-block flag", true, build::flacFile({ { 0, si }, { 1, "pad" } }, {}, false), damaged);
        row("no STREAMINFO first", true, build::flacFile({ { 4, comment }, { 0, si } }), damaged);
        row("short STREAMINFO", true, build::flacFile({ { 0, si.first(30) } }), damaged);
        row("seek table of broken points", true, build::flacFile({ { 0, si }, { 3, QByteArray(20, 'S') } }),
            damaged);
        row("invalid block type", true, build::flacFile({ { 0, si }, { 127, "x" } }), damaged);
        row("unknown major version", false,
            QByteArray("ID3\x07\x00\x00\x00\x00\x00\x02xx", 12) + build::mpegAudio(),
            WriteError::unsupportedFormat, "unsupported ID3v2 version 2.7");
        row("compressed ID3v2.2 tag", false, build::id3Tag(2, id3Frame(2, "TT2", id3Text("x", 0)), 0x40),
            WriteError::unsupportedFormat, "a compressed ID3v2.2 tag");
        row("frame running past the tag", false,
            build::id3Tag(3, id3Frame(3, "TCON", id3Text("g")) + "TPE2" + build::be32(5000) + "xx"), damaged,
            "the ID3v2 tag is damaged: the frame TPE2 runs past the end of the tag");
        row("bytes that are neither frames nor padding", false,
            build::id3Tag(
                3, id3Frame(3, "TCON", id3Text("g")) + "garbage!!!!" + id3Frame(3, "TPE1", id3Text("a"))),
            damaged, "the ID3v2 tag is damaged: the tag holds bytes that are neither frames nor padding");
    }

    void refused()
    {
        QFETCH(bool, flac);
        QFETCH(QByteArray, input);
        QFETCH(WriteError, error);
        QFETCH(QString, detail);
        const TagEdit edit
            = TagEdit::fromValues(QStringLiteral("a long enough title"), std::nullopt, std::nullopt);
        const Result r = flac ? writeFLACTags(input, edit) : writeID3Tags(input, edit);
        QVERIFY(!r);
        QCOMPARE(r.error, error);
        if (!detail.isEmpty())
            QCOMPARE(r.detail, detail);
    }
};

QTEST_GUILESS_MAIN(TestTagWriters)
#include "tst_tag_writers.moc"
