// SPDX-License-Identifier: GPL-3.0-or-later
// The two writers of our own, in memory: FLAC metadata blocks and ID3v2 tags,
// checked by the plain readers of the test builders.
#include "TagBuilders.h"
#include "tags/FlacMetadata.h"
#include "tags/MetadataWriter.h"

#include <QTest>

using namespace MetadataWriter;
using build::id3Frame;
using build::id3Tag;
using Frames = QList<plain::Id3Frame>;
using Comments = QList<QByteArray>;
Q_DECLARE_METATYPE(Frames)

namespace {

QByteArray written(const Result &r)
{
    if (!r)
        qWarning() << "writer refused:" << describe(r.error) << r.detail;
    return r.data.value_or(QByteArray());
}

plain::Id3Frame text(const QByteArray &id, const QString &s, int encoding = 3)
{
    return { id, 0, build::id3Text(s, encoding) };
}

QByteArray tagged(const QByteArray &id, const QString &s, int encoding = 3)
{
    return id3Frame(3, id, build::id3Text(s, encoding));
}

const FieldEdit keep = FieldEdit::keep();
const FieldEdit removed = FieldEdit::remove();
FieldEdit set(const char *value)
{
    return FieldEdit::set(QString::fromUtf8(value));
}

} // namespace

class TestTagWriters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void carriedComments_data()
    {
        QTest::addColumn<QList<Comments>>("oldBlocks");
        QTest::addColumn<TagEdit>("edit");
        QTest::addColumn<Comments>("expected");
        const auto row = [](const char *what, const QList<Comments> &old, const TagEdit &edit,
                             const Comments &expected) { QTest::newRow(what) << old << edit << expected; };
        row("order title, artist, album; every spelling of a field replaced, the rest carried",
            { { "album=x", "=TITLE=y", "Artist=z", "COMMENT=c", "DATE=2001" } },
            { set("T"), set("A"), set("B") }, { "TITLE=T", "ARTIST=A", "ALBUM=B", "COMMENT=c", "DATE=2001" });
        row("keep carries every comment of the field, in order",
            { { "ARTIST=a1", "TITLE=t", "ALBUM=b", "ARTIST=a2", "TRACKNUMBER=1" } },
            { set("n"), keep, removed }, { "TITLE=n", "ARTIST=a1", "ARTIST=a2", "TRACKNUMBER=1" });
        row("comments the reader skips are carried byte for byte",
            { { "BAD=\xFF\xFE", "NOEQUALS", "EMPTY=", "" } }, { set("t"), keep, keep },
            { "TITLE=t", "BAD=\xFF\xFE", "NOEQUALS", "EMPTY=", "" });
        row("a second block's comments go first so the first block still decides",
            { { "TITLE=a", "GENRE=g1" }, { "TITLE=b", "GENRE=g2" } }, { keep, keep, set("new") },
            { "TITLE=b", "TITLE=a", "ALBUM=new", "GENRE=g2", "GENRE=g1" });
    }

    void carriedComments()
    {
        QFETCH(QList<Comments>, oldBlocks);
        QFETCH(TagEdit, edit);
        QList<build::Block> blocks { { 0, build::streamInfo() } };
        for (const auto &comments : oldBlocks)
            blocks.append({ 4, build::vorbisBody(comments, "old vendor") });
        const QByteArray out = written(writeFLACTags(build::flacFile(blocks), edit));
        QByteArray vendor;
        QTEST(plain::comments(plain::flacBlocks(out).last().body, &vendor), "expected");
        QCOMPARE(vendor, QByteArray("Tarnwell"));
    }

    // ID3v2: TIT2, TPE1 and TALB come first, then the other frames in ID3v2.3
    // form and in their old order (byte for byte from ID3v2.3 tags: the peer test). A trailing ID3v1 tag:
    // what it alone holds moves into the new ID3v2 tag, and it follows the new values (or goes) so that no
    // reader sees an old one.
    void carriedFrames_data()
    {
        QTest::addColumn<QByteArray>("before"); // the ID3v2 tag; the audio and `trailer` follow
        QTest::addColumn<QByteArray>("trailer");
        QTest::addColumn<TagEdit>("edit");
        QTest::addColumn<Frames>("frames");
        QTest::addColumn<QByteArray>("newTrailer");
        const auto row = [](const char *what, const QByteArray &before, const QByteArray &trailer,
                             const TagEdit &edit, const Frames &frames, const QByteArray &newTrailer = {}) {
            QTest::newRow(what) << before << trailer << edit << frames << newTrailer;
        };
        const QByteArray jpeg("\xFF\xD8\xFF\xE0 picture bytes \xFF\x00 more", 26);
        const QByteArray comm = QByteArray("\0eng", 4) + "desc" + '\0' + "a comment";
        const TagEdit newTitle { set("New"), keep, keep };
        row("v2.3: tag unsynchronisation undone, extended header dropped",
            id3Tag(3,
                QByteArray("\0\0\0\6\0\0\0\0\0\0APIC", 14) + build::be32(16) + QByteArray(2, '\0')
                    + QByteArray("\0image/png\0\3\0\xFF\0\xE0\xFF\0\0", 18),
                0xC0),
            {}, newTitle,
            { text("TIT2", "New"), { "APIC", 0, QByteArray("\0image/png\0\3\0\xFF\xE0\xFF\0", 16) } });
        row("v2.2: renamed, PIC becomes APIC, unknown frames dropped",
            id3Tag(2,
                id3Frame(2, "TT2", build::id3Text("Old", 0)) + id3Frame(2, "TP1", build::id3Text("Art", 0))
                    + id3Frame(2, "PIC", QByteArray("\0JPG\3\0", 6) + jpeg) + id3Frame(2, "ZZZ", "private")
                    + id3Frame(2, "COM", comm)),
            {}, { set("New"), keep, removed },
            { text("TIT2", "New"), text("TPE1", "Art", 0),
                { "APIC", 0, QByteArray("\0image/jpeg\0\3\0", 14) + jpeg }, { "COMM", 0, comm } });
        const QByteArray longText(300, 'L'); // sizes above 127 tell synchsafe from plain
        const QByteArray people("\3producer\0P\0mix\0M", 17);
        row("v2.4: synchsafe sizes, multiple values joined, dates mapped",
            id3Tag(4,
                id3Frame(4, "TPE1", QByteArray("\3A\0B", 4)) + id3Frame(4, "TCOM", build::id3Text(longText))
                    + id3Frame(4, "TDRC", build::id3Text("2001-02-03T04:05", 0))
                    + id3Frame(4, "TDOR", build::id3Text("1999", 0)) + id3Frame(4, "TIPL", people)
                    + id3Frame(4, "SEEK", build::be32(1000)) + id3Frame(4, "TSOP", build::id3Text("Sort"))),
            {}, { removed, keep, set("B") },
            { text("TPE1", "A/B"), text("TALB", "B"), text("TCOM", QString::fromLatin1(longText)),
                text("TYER", "2001"), text("TDAT", "0302"), text("TIME", "0405"), text("TORY", "1999"),
                { "IPLS", 0, people }, text("TSOP", "Sort") });
        row("v2.4: frame flags, unsynchronisation and data length moved to v2.3 places",
            id3Tag(4,
                id3Frame(4, "APIC", "\7" + build::synchsafe(6) + QByteArray("\0\xFF\0\xE0pic", 7), 0x4043)
                    + id3Frame(4, "PRIV", build::synchsafe(100) + "zlib-data", 0x0009)),
            {}, newTitle,
            { text("TIT2", "New"), { "APIC", 0x8020, QByteArray("\7\0\xFF\xE0pic", 7) },
                { "PRIV", 0x0080, build::be32(100) + "zlib-data" } });

        const QByteArray v1 = build::id3v1("Old", "Art", "Alb", "cmt", 7, 17);
        const Frames folded { text("TYER", "1999"), { "COMM", 0, QByteArray("\3XXX\0cmt", 8) },
            text("TRCK", "7"), text("TCON", "(17)") };
        row("ID3v1 only, a title given: the rest folded in, ID3v1 follows", {}, v1, newTitle,
            Frames { text("TIT2", "New"), text("TPE1", "Art"), text("TALB", "Alb") } + folded,
            build::id3v1("New", "Art", "Alb", "cmt", 7, 17));
        row("both tags, album removed: blanked in ID3v1 too",
            id3Tag(3, tagged("TIT2", "T") + tagged("TALB", "Alb")), v1, { keep, keep, removed },
            Frames { text("TIT2", "T"), text("TPE1", "Art") } + folded,
            build::id3v1("T", "Art", "", "cmt", 7, 17));
        row("a value ID3v1 can't hold: ID3v1 removed", {}, v1, { set("東京"), set("Art"), keep },
            Frames { text("TIT2", QStringLiteral("東京")), text("TPE1", "Art"), text("TALB", "Alb") }
                + folded);
        row("a kept field empty in ID3v2 comes from ID3v1", id3Tag(3, tagged("TPE1", "")),
            build::id3v1("", "V1 artist", ""), newTitle,
            { text("TIT2", "New"), text("TPE1", "V1 artist"), text("TYER", "1999") },
            build::id3v1("New", "V1 artist", ""));
        // Removing is removing, whether or not frames are left.
        row("all three removed, other frames kept",
            id3Tag(
                3, tagged("TIT2", "T") + tagged("TPE1", "A") + tagged("TALB", "B") + tagged("TCON", "Jazz")),
            {}, { removed, removed, removed }, { text("TCON", "Jazz") });
        row("all three removed, nothing left: no tag at all", id3Tag(3, tagged("TIT2", "T")), {},
            { removed, removed, removed }, {});
    }

    void carriedFrames()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, trailer);
        QFETCH(TagEdit, edit);
        QFETCH(QByteArray, newTrailer);
        const QByteArray audio = build::mpegAudio();
        QByteArray rest;
        QTEST(plain::id3Frames(written(writeID3Tags(before + audio + trailer, edit)), &rest), "frames");
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
        row("invalid block type", true, build::flacFile({ { 0, si }, { 127, "x" } }), damaged);
        row("unknown major version", false, QByteArray("ID3\7\0\0\0\0\0\2xx", 12) + build::mpegAudio(),
            WriteError::unsupportedFormat, "unsupported ID3v2 version 2.7");
        row("compressed ID3v2.2 tag", false, id3Tag(2, id3Frame(2, "TT2", build::id3Text("x", 0)), 0x40),
            WriteError::unsupportedFormat, "a compressed ID3v2.2 tag");
        row("frame running past the tag", false,
            id3Tag(3, tagged("TCON", "g") + "TPE2" + build::be32(5000) + "xx"), damaged,
            "the ID3v2 tag is damaged: the frame TPE2 runs past the end of the tag");
        row("bytes that are neither frames nor padding", false,
            id3Tag(3, tagged("TCON", "g") + "garbage!!!!" + tagged("TPE1", "a")), damaged,
            "the ID3v2 tag is damaged: the tag holds bytes that are neither frames nor padding");
    }

    void refused()
    {
        QFETCH(bool, flac);
        QFETCH(QByteArray, input);
        QFETCH(QString, detail);
        const TagEdit edit { set("a long enough title"), keep, keep };
        const Result r = flac ? writeFLACTags(input, edit) : writeID3Tags(input, edit);
        QVERIFY(!r);
        QTEST(r.error, "error");
        if (!detail.isEmpty())
            QCOMPARE(r.detail, detail);
    }
};

QTEST_GUILESS_MAIN(TestTagWriters)
#include "tst_tag_writers.moc"
