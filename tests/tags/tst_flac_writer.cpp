// SPDX-License-Identifier: GPL-3.0-or-later
#include "TagBuilders.h"
#include "tags/FlacMetadata.h"
#include "tags/MetadataWriter.h"

#include <QTest>

using namespace MetadataWriter;

namespace {

struct ParsedBlock
{
    int type;
    bool last;
    QByteArray body;
};

// An independent walk over writer output: every block up to the flagged one,
// and where the audio starts.
QList<ParsedBlock> blocksOf(const QByteArray &file, qsizetype *audioStart = nullptr)
{
    QList<ParsedBlock> blocks;
    qsizetype pos = 4;
    while (pos + 4 <= file.size()) {
        const quint8 h = quint8(file[pos]);
        const qsizetype len
            = (quint8(file[pos + 1]) << 16) | (quint8(file[pos + 2]) << 8) | quint8(file[pos + 3]);
        blocks.append({ h & 0x7F, bool(h & 0x80), file.mid(pos + 4, len) });
        pos += 4 + len;
        if (h & 0x80)
            break;
    }
    if (audioStart)
        *audioStart = pos;
    return blocks;
}

QList<QByteArray> commentsOf(const QByteArray &body, QByteArray *vendor = nullptr)
{
    const auto u32 = [&](qsizetype at) {
        return quint32(quint8(body[at])) | quint32(quint8(body[at + 1])) << 8
            | quint32(quint8(body[at + 2])) << 16 | quint32(quint8(body[at + 3])) << 24;
    };
    const quint32 v = u32(0);
    if (vendor)
        *vendor = body.mid(4, v);
    qsizetype pos = 4 + v;
    const quint32 n = u32(pos);
    pos += 4;
    QList<QByteArray> out;
    for (quint32 i = 0; i < n; ++i) {
        const quint32 len = u32(pos);
        out.append(body.mid(pos + 4, len));
        pos += 4 + len;
    }
    return out;
}

QByteArray writeOk(const QByteArray &in, const TagEdit &edit)
{
    const Result r = writeFLACTags(in, edit);
    if (!r)
        qWarning() << "writer refused:" << describe(r.error);
    return r.data.value_or(QByteArray());
}

} // namespace

class TestFlacWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blockLayout_data()
    {
        QTest::addColumn<QList<build::Block>>("blocks");
        QTest::addColumn<QList<int>>("expectedTypes");
        const QByteArray si = build::streamInfo();
        QTest::newRow("padding loses its last flag, comment ends the metadata")
            << QList<build::Block> { { 0, si }, { 1, QByteArray(64, '\0') } } << QList<int> { 0, 1, 4 };
        QTest::newRow("two comment blocks become one, picture stays in place") << QList<build::Block> {
            { 0, si }, { 4, build::vorbisBody({ "TITLE=a" }) }, { 6, build::pictureBody("p") },
            { 4, build::vorbisBody({ "ARTIST=b" }) }, { 1, QByteArray(8, '\0') }
        } << QList<int> { 0, 6, 1, 4 };
        QTest::newRow("unknown and application blocks kept") << QList<build::Block> { { 0, si },
            { 2, "APPLxyz" }, { 5, "cue" }, { 99, "odd" } } << QList<int> { 0, 2, 5, 99, 4 };
    }

    void blockLayout()
    {
        QFETCH(QList<build::Block>, blocks);
        QFETCH(QList<int>, expectedTypes);
        const QByteArray audio = build::mpegAudio();
        const QByteArray in = build::flacFile(blocks, audio);
        const QByteArray out
            = writeOk(in, TagEdit::fromValues(QStringLiteral("t"), std::nullopt, std::nullopt));
        qsizetype audioStart = 0;
        const QList<ParsedBlock> written = blocksOf(out, &audioStart);
        QList<int> types;
        for (qsizetype i = 0; i < written.size(); ++i) {
            types.append(written[i].type);
            QCOMPARE(written[i].last, i == written.size() - 1);
        }
        QCOMPARE(types, expectedTypes);
        QCOMPARE(out.sliced(audioStart), audio);
        // Every kept block is byte for byte the old one.
        qsizetype k = 0;
        for (const build::Block &b : blocks) {
            if (b.type == 4)
                continue;
            QCOMPARE(written[k].body, b.body);
            ++k;
        }
        // The length changes by exactly the new comment block minus the old ones.
        qsizetype removed = 0;
        for (const build::Block &b : blocks)
            removed += b.type == 4 ? 4 + b.body.size() : 0;
        QCOMPARE(out.size(), in.size() - removed + 4 + written.last().body.size());
    }

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
        QTest::newRow("empty fields write nothing")
            << QList<QList<QByteArray>> { { "TITLE=t", "GENRE=g" } }
            << TagEdit::fromValues(QString(), QString(), QString()) << QList<QByteArray> { "GENRE=g" };
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
        QTest::newRow("UTF-8 values")
            << QList<QList<QByteArray>> {}
            << TagEdit::fromValues(std::nullopt, QStringLiteral("Café"), std::nullopt)
            << QList<QByteArray> { "ARTIST=Caf\xC3\xA9" };
        QTest::newRow("damaged comment list keeps what came before")
            << QList<QList<QByteArray>> { { "GENRE=g", "X=1" } }
            << TagEdit::fromValues(QStringLiteral("t"), std::nullopt, std::nullopt)
            << QList<QByteArray> { "TITLE=t", "GENRE=g" };
    }

    void carriedComments()
    {
        QFETCH(QList<QList<QByteArray>>, oldBlocks);
        QFETCH(TagEdit, edit);
        QFETCH(QList<QByteArray>, expected);
        QList<build::Block> blocks { { 0, build::streamInfo() } };
        for (const auto &comments : oldBlocks) {
            QByteArray body = build::vorbisBody(comments, "old vendor");
            if (QTest::currentDataTag() == QByteArray("damaged comment list keeps what came before"))
                body = body.chopped(2); // the last comment runs past the block
            blocks.append({ 4, body });
        }
        const QByteArray out = writeOk(build::flacFile(blocks), edit);
        QByteArray vendor;
        QCOMPARE(commentsOf(blocksOf(out).last().body, &vendor), expected);
        QCOMPARE(vendor, QByteArray("Tarnwell"));
    }

    void newBlockBytes()
    {
        const QByteArray expected = build::le32(8) + "Tarnwell" + build::le32(2) + build::le32(7) + "TITLE=t"
            + build::le32(12) + "ALBUM=Caf\xC3\xA9!";
        QCOMPARE(buildVorbisComment(QStringLiteral("t"), QString(), QStringLiteral("Café!")), expected);
        QCOMPARE(buildVorbisComment(std::nullopt, std::nullopt, std::nullopt),
            build::le32(8) + "Tarnwell" + build::le32(0));
    }

    void damagedBlockCarriedAsAudio()
    {
        const QByteArray tail = QByteArray("\x06\x00\x10\x00", 4) + "short picture";
        const QByteArray in
            = build::flacFile(
                  { { 0, build::streamInfo() }, { 4, build::vorbisBody({ "TITLE=x" }) } }, {}, false)
            + tail;
        const QByteArray out
            = writeOk(in, TagEdit::fromValues(QStringLiteral("y"), std::nullopt, std::nullopt));
        qsizetype audioStart = 0;
        const QList<ParsedBlock> blocks = blocksOf(out, &audioStart);
        QCOMPARE(blocks.size(), 2);
        QCOMPARE(out.sliced(audioStart), tail);
        QCOMPARE(parseFLACMetadata(out).title, std::optional<QString>(QStringLiteral("y")));
    }

    void refused_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<WriteError>("error");
        QTest::newRow("empty") << QByteArray() << WriteError::unsupportedFormat;
        QTest::newRow("three bytes") << QByteArray("fLa") << WriteError::unsupportedFormat;
        QTest::newRow("ID3v2 tag in front")
            << build::id3Tag(3, build::id3Frame(3, "TIT2", build::id3Text("x")))
                + build::flacFile({ { 0, build::streamInfo() } })
            << WriteError::unsupportedFormat;
        // An old comment that the new block must carry pushes it past 24 bits.
        QTest::newRow("comment block over 16,777,215 bytes") << build::flacFile({ { 0, build::streamInfo() },
            { 4, build::vorbisBody({ "COMMENT=" + QByteArray(0xFFFFFF - 40, 'c') }, "") } })
                                                             << WriteError::tooLarge;
    }

    void refused()
    {
        QFETCH(QByteArray, input);
        QFETCH(WriteError, error);
        const Result r
            = writeFLACTags(input, QStringLiteral("a long enough title"), std::nullopt, std::nullopt);
        QVERIFY(!r);
        QCOMPARE(r.error, error);
    }

    void commentBlockAtTheLimitIsWritten()
    {
        // Vendor length, vendor, count and comment length frame one comment.
        const QString title(0xFFFFFF - (4 + 8 + 4 + 4) - 6, u't');
        const QByteArray in = build::flacFile({ { 0, build::streamInfo() } });
        const Result r = writeFLACTags(in, title, std::nullopt, std::nullopt);
        QVERIFY(r);
        QCOMPARE(blocksOf(*r.data).last().body.size(), 0xFFFFFF);
        const Result over = writeFLACTags(in, title + u't', std::nullopt, std::nullopt);
        QVERIFY(!over);
        QCOMPARE(over.error, WriteError::tooLarge);
    }
};

QTEST_GUILESS_MAIN(TestFlacWriter)
#include "tst_flac_writer.moc"
