// SPDX-License-Identifier: GPL-3.0-or-later
#include "TagBuilders.h"
#include "tags/FlacMetadata.h"
#include "tags/MetadataWriter.h"

#include <QTest>

using namespace MetadataWriter;
using build::Block;

namespace {

QByteArray writeOk(const QByteArray &in, const TagEdit &edit)
{
    const Result r = writeFLACTags(in, edit);
    if (!r)
        qWarning() << "writer refused:" << describe(r.error) << r.detail;
    return r.data.value_or(QByteArray());
}

const TagEdit newTitle = TagEdit::fromValues(QStringLiteral("t"), std::nullopt, std::nullopt);

} // namespace

class TestFlacWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blockLayout_data()
    {
        QTest::addColumn<QList<Block>>("blocks");
        QTest::addColumn<QList<int>>("expectedTypes");
        const QByteArray si = build::streamInfo();
        QTest::newRow("padding loses its last flag, comment ends the metadata")
            << QList<Block> { { 0, si }, { 1, QByteArray(64, '\0') } } << QList<int> { 0, 1, 4 };
        QTest::newRow("two comment blocks become one, picture stays in place") << QList<Block> { { 0, si },
            { 4, build::vorbisBody({ "TITLE=a" }) }, { 6, build::pictureBody("p") },
            { 4, build::vorbisBody({ "ARTIST=b" }) }, { 1, QByteArray(8, '\0') } }
                                                                               << QList<int> { 0, 6, 1, 4 };
        QTest::newRow("unknown and application blocks kept") << QList<Block> { { 0, si }, { 2, "APPLxyz" },
            { 5, "cue" }, { 99, "odd" } } << QList<int> { 0, 2, 5, 99, 4 };
    }

    void blockLayout()
    {
        QFETCH(QList<Block>, blocks);
        QFETCH(QList<int>, expectedTypes);
        const QByteArray audio = build::flacFrame();
        const QByteArray in = build::flacFile(blocks, audio);
        const QByteArray out = writeOk(in, newTitle);
        qsizetype audioStart = 0;
        const QList<plain::FlacBlock> written = plain::flacBlocks(out, &audioStart);
        QList<int> types;
        for (qsizetype i = 0; i < written.size(); ++i) {
            types.append(written[i].type);
            QCOMPARE(written[i].last, i == written.size() - 1);
        }
        QCOMPARE(types, expectedTypes);
        QCOMPARE(out.sliced(audioStart), audio);
        // Every kept block is byte for byte the old one, and the length changes
        // by exactly the new comment block minus the old ones.
        qsizetype k = 0, removed = 0;
        for (const Block &b : blocks) {
            if (b.type == 4)
                removed += 4 + b.body.size();
            else
                QCOMPARE(written[k++].body, b.body);
        }
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
            << QList<QList<QByteArray>> { { "BAD=\xFF\xFE", "NOEQUALS", "EMPTY=", "" } } << newTitle
            << QList<QByteArray> { "TITLE=t", "BAD=\xFF\xFE", "NOEQUALS", "EMPTY=", "" };
        QTest::newRow("a second block's comments go first so the first block still decides")
            << QList<QList<QByteArray>> { { "TITLE=a", "GENRE=g1" }, { "TITLE=b", "GENRE=g2" } }
            << TagEdit { FE::keep(), FE::keep(), FE::set(QStringLiteral("new")) }
            << QList<QByteArray> { "TITLE=b", "TITLE=a", "ALBUM=new", "GENRE=g2", "GENRE=g1" };
        QTest::newRow("UTF-8 values")
            << QList<QList<QByteArray>> {}
            << TagEdit::fromValues(std::nullopt, QStringLiteral("Café"), std::nullopt)
            << QList<QByteArray> { "ARTIST=Caf\xC3\xA9" };
    }

    void carriedComments()
    {
        QFETCH(QList<QList<QByteArray>>, oldBlocks);
        QFETCH(TagEdit, edit);
        QFETCH(QList<QByteArray>, expected);
        QList<Block> blocks { { 0, build::streamInfo() } };
        for (const auto &comments : oldBlocks)
            blocks.append({ 4, build::vorbisBody(comments, "old vendor") });
        QByteArray vendor;
        QCOMPARE(
            plain::comments(plain::flacBlocks(writeOk(build::flacFile(blocks), edit)).last().body, &vendor),
            expected);
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

    // Damage is refused, never read around: bytes after a damaged block are
    // not audio, and a short comment block would lose the comments after it.
    void refused_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<WriteError>("error");
        const QByteArray si = build::streamInfo();
        const QByteArray comment = build::vorbisBody({ "TITLE=x", "GENRE=g", "TRACKNUMBER=3" });
        const QByteArray picture = build::pictureBody(QByteArray(300, 'P'));
        QTest::newRow("empty") << QByteArray() << WriteError::unsupportedFormat;
        QTest::newRow("three bytes") << QByteArray("fLa") << WriteError::unsupportedFormat;
        QTest::newRow("ID3v2 tag in front")
            << build::id3Tag(3, build::id3Frame(3, "TIT2", build::id3Text("x")))
                + build::flacFile({ { 0, si } })
            << WriteError::unsupportedFormat;
        // An old comment that the new block must carry pushes it past 24 bits.
        QTest::newRow("comment block over 16,777,215 bytes") << build::flacFile(
            { { 0, si }, { 4, build::vorbisBody({ "COMMENT=" + QByteArray(0xFFFFFF - 40, 'c') }, "") } })
                                                             << WriteError::tooLarge;
        QTest::newRow("picture block shorter than its picture")
            << build::flacFile({ { 0, si }, { 6, picture, quint32(picture.size() - 100) }, { 4, comment } })
            << WriteError::damagedMetadata;
        QTest::newRow("comment block shorter than its comments") << build::flacFile(
            { { 0, si }, { 4, comment, quint32(comment.size() - 20) }, { 1, QByteArray(40, '\0') } })
                                                                 << WriteError::damagedMetadata;
        QTest::newRow("comment block longer than its comments") << build::flacFile(
            { { 0, si }, { 4, comment + QByteArray(8, '\0') } }) << WriteError::damagedMetadata;
        QTest::newRow("block running past the end")
            << build::flacFile({ { 0, si }, { 1, "pad", 1000 } }, {}) << WriteError::damagedMetadata;
        QTest::newRow("no last-block flag")
            << build::flacFile({ { 0, si }, { 1, "pad" } }, {}, false) << WriteError::damagedMetadata;
        QTest::newRow("no STREAMINFO first")
            << build::flacFile({ { 4, comment }, { 0, si } }) << WriteError::damagedMetadata;
        QTest::newRow("short STREAMINFO")
            << build::flacFile({ { 0, si.first(30) } }) << WriteError::damagedMetadata;
        QTest::newRow("seek table of broken points")
            << build::flacFile({ { 0, si }, { 3, QByteArray(20, 'S') } }) << WriteError::damagedMetadata;
        QTest::newRow("invalid block type")
            << build::flacFile({ { 0, si }, { 127, "x" } }) << WriteError::damagedMetadata;
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
        QCOMPARE(plain::flacBlocks(*r.data).last().body.size(), 0xFFFFFF);
        const Result over = writeFLACTags(in, title + u't', std::nullopt, std::nullopt);
        QCOMPARE(over.error, WriteError::tooLarge);
    }
};

QTEST_GUILESS_MAIN(TestFlacWriter)
#include "tst_flac_writer.moc"
