// SPDX-License-Identifier: GPL-3.0-or-later
#include "TagBuilders.h"
#include "tags/MetadataWriter.h"

#include <QTest>

using namespace MetadataWriter;
using build::id3Frame;
using build::id3Text;
using Frames = QList<plain::Id3Frame>;
using plain::id3Text;

namespace {

QByteArray write(const QByteArray &in, const TagEdit &edit)
{
    const Result r = writeID3Tags(in, edit);
    if (!r)
        qWarning() << "writer refused:" << describe(r.error) << r.detail;
    return r.data.value_or(QByteArray());
}

const TagEdit newTitle = TagEdit::fromValues(QStringLiteral("New"), std::nullopt, std::nullopt);

} // namespace

Q_DECLARE_METATYPE(Frames)

class TestId3Writer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void buildingBlocks()
    {
        QCOMPARE(id3Header(200), QByteArray("ID3\x03\x00\x00\x00\x00\x01\x48", 10));
        QCOMPARE(id3Header(0x0FFFFFFF), QByteArray("ID3\x03\x00\x00\x7F\x7F\x7F\x7F", 10));
        QCOMPARE(id3TextFrame("TPE1", QStringLiteral("Café")),
            QByteArray("TPE1\x00\x00\x00\x06\x00\x00\x03"
                       "Caf\xC3\xA9",
                16));
    }

    void strip_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QByteArray>("expected");
        const QByteArray audio = build::mpegAudio();
        const QByteArray tag = build::id3Tag(4, id3Frame(4, "TIT2", id3Text("x")), 0, 20);
        QTest::newRow("leading tag with padding") << tag + audio << audio;
        QTest::newRow("no tag") << audio << audio;
        QTest::newRow("tag larger than the data stays") << tag.first(15) << tag.first(15);
        QTest::newRow("fewer than 10 bytes")
            << QByteArray("ID3\x03\x00\x00\x00", 7) << QByteArray("ID3\x03\x00\x00\x00", 7);
        QTest::newRow("only the first of two tags") << tag + tag + audio << tag + audio;
        QTest::newRow("empty tag at the end of the data")
            << tag.first(6) + build::synchsafe(0) << QByteArray();
    }

    void strip()
    {
        QFETCH(QByteArray, input);
        QFETCH(QByteArray, expected);
        QCOMPARE(stripID3v2(input).toByteArray(), expected);
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
        QTest::newRow("v2.3: kept fields stay, in the field order")
            << build::id3Tag(3,
                   id3Frame(3, "TALB", id3Text("Alb", 1)) + id3Frame(3, "TPE1", id3Text("Art"))
                       + id3Frame(3, "TIT2", id3Text("Old")))
            << TagEdit { FE::set(QStringLiteral("New")), FE::keep(), FE::keep() }
            << Frames { id3Text("TIT2", "New"), id3Text("TPE1", "Art"), id3Text("TALB", "Alb", 1) };
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
        QTest::newRow("v2.4: sizes written as plain integers")
            << build::id3Tag(4,
                   QByteArray("TCOM") + build::be32(300) + QByteArray(2, '\0') + id3Text(QString(299, u'c'))
                       + id3Frame(4, "TCON", id3Text("g")))
            << newTitle
            << Frames { id3Text("TIT2", "New"), id3Text("TCOM", QString(299, u'c')), id3Text("TCON", "g") };
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

    void unchanged_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<TagEdit>("edit");
        const QByteArray tagged = build::id3Tag(3, id3Frame(3, "TIT2", id3Text("t"))) + build::mpegAudio();
        QTest::newRow("keep everything") << tagged << TagEdit {};
        QTest::newRow("remove all three from an untagged file")
            << build::mpegAudio() << TagEdit::fromValues(std::nullopt, std::nullopt, std::nullopt);
    }

    void unchanged()
    {
        QFETCH(QByteArray, input);
        QFETCH(TagEdit, edit);
        QCOMPARE(write(input, edit), input);
    }

    void refused_data()
    {
        QTest::addColumn<QByteArray>("oldTag");
        QTest::addColumn<WriteError>("error");
        QTest::addColumn<QString>("detail");
        QTest::newRow("unknown major version")
            << QByteArray("ID3\x07\x00\x00\x00\x00\x00\x02xx", 12) << WriteError::unsupportedFormat
            << "unsupported ID3v2 version 2.7";
        QTest::newRow("compressed ID3v2.2 tag")
            << build::id3Tag(2, id3Frame(2, "TT2", id3Text("x", 0)), 0x40) << WriteError::unsupportedFormat
            << "a compressed ID3v2.2 tag";
        QTest::newRow("frame running past the tag")
            << build::id3Tag(3, id3Frame(3, "TCON", id3Text("g")) + "TPE2" + build::be32(5000) + "xx")
            << WriteError::damagedMetadata
            << "the ID3v2 tag is damaged: the frame TPE2 runs past the end of the tag";
        QTest::newRow("bytes that are neither frames nor padding")
            << build::id3Tag(
                   3, id3Frame(3, "TCON", id3Text("g")) + "garbage!!!!" + id3Frame(3, "TPE1", id3Text("a")))
            << WriteError::damagedMetadata
            << "the ID3v2 tag is damaged: the tag holds bytes that are neither frames nor padding";
    }

    void refused()
    {
        QFETCH(QByteArray, oldTag);
        QFETCH(WriteError, error);
        QFETCH(QString, detail);
        const Result r = writeID3Tags(oldTag + build::mpegAudio(), newTitle);
        QVERIFY(!r);
        QCOMPARE(r.error, error);
        QCOMPARE(r.detail, detail);
    }
};

QTEST_GUILESS_MAIN(TestId3Writer)
#include "tst_id3_writer.moc"
