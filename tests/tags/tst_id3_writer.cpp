// SPDX-License-Identifier: GPL-3.0-or-later
#include "TagBuilders.h"
#include "tags/MetadataWriter.h"

#include <QTest>

using namespace MetadataWriter;

namespace {

struct V23Frame
{
    QByteArray id;
    quint16 flags;
    QByteArray body;
    bool operator==(const V23Frame &) const = default;
};

// An independent reader of writer output: an ID3v2.3 header without flags and
// plain-sized frames filling it exactly.
QList<V23Frame> framesOf(const QByteArray &file, QByteArray *audio = nullptr)
{
    if (!file.startsWith("ID3\x03\x00\x00"))
        return {};
    const qsizetype size
        = (quint8(file[6]) << 21) | (quint8(file[7]) << 14) | (quint8(file[8]) << 7) | quint8(file[9]);
    QList<V23Frame> frames;
    qsizetype pos = 10;
    while (pos < 10 + size) {
        const qsizetype len = (qsizetype(quint8(file[pos + 4])) << 24) | (quint8(file[pos + 5]) << 16)
            | (quint8(file[pos + 6]) << 8) | quint8(file[pos + 7]);
        frames.append({ file.mid(pos, 4), quint16((quint8(file[pos + 8]) << 8) | quint8(file[pos + 9])),
            file.mid(pos + 10, len) });
        pos += 10 + len;
    }
    if (pos != 10 + size)
        qWarning() << "frames overrun the tag";
    if (audio)
        *audio = file.mid(pos);
    return frames;
}

V23Frame text(const QByteArray &id, const QString &s, int encoding = 3)
{
    return { id, 0, build::id3Text(s, encoding) };
}

QByteArray write(const QByteArray &in, const TagEdit &edit)
{
    const Result r = writeID3Tags(in, edit);
    if (!r)
        qWarning() << "writer refused:" << describe(r.error);
    return r.data.value_or(QByteArray());
}

const TagEdit newTitle = TagEdit::fromValues(QStringLiteral("New"), std::nullopt, std::nullopt);

} // namespace

Q_DECLARE_METATYPE(QList<V23Frame>)

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
        const QByteArray tag = build::id3Tag(4, build::id3Frame(4, "TIT2", build::id3Text("x")), 0, 20);
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

    void unchangedWithoutValues_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<TagEdit>("edit");
        const QByteArray tagged
            = build::id3Tag(3, build::id3Frame(3, "TIT2", build::id3Text("t"))) + build::mpegAudio();
        QTest::newRow("all three empty") << tagged << TagEdit::fromValues(QString(), QString(), QString());
        QTest::newRow("all three absent, no tag")
            << build::mpegAudio() << TagEdit::fromValues(std::nullopt, std::nullopt, std::nullopt);
        QTest::newRow("keep everything") << tagged << TagEdit {};
        QTest::newRow("keep a field the tag doesn't have, remove the rest")
            << build::id3Tag(3, build::id3Frame(3, "TCON", build::id3Text("g"))) + build::mpegAudio()
            << TagEdit { FieldEdit::keep(), FieldEdit::remove(), FieldEdit::remove() };
        QTest::newRow("unknown tag version, nothing to write")
            << QByteArray("ID3\x09\x00\x00\x00\x00\x00\x00", 10) + build::mpegAudio()
            << TagEdit::fromValues(QString(), QString(), QString());
    }

    void unchangedWithoutValues()
    {
        QFETCH(QByteArray, input);
        QFETCH(TagEdit, edit);
        QCOMPARE(write(input, edit), input);
    }

    void newTagInFront()
    {
        const QByteArray audio
            = build::mpegAudio() + "TAG" + QByteArray(125, 'v'); // ID3v1 stays with the audio
        QByteArray rest;
        const QByteArray out = write(
            audio, TagEdit::fromValues(QStringLiteral("T"), QStringLiteral("Café"), QStringLiteral("B")));
        QCOMPARE(framesOf(out, &rest),
            (QList<V23Frame> { text("TIT2", "T"), text("TPE1", QStringLiteral("Café")), text("TALB", "B") }));
        QCOMPARE(rest, audio);
    }

    // Old tags of every version: TIT2, TPE1 and TALB come first, then the
    // other frames in ID3v2.3 form and in their old order.
    void carriedFrames_data()
    {
        QTest::addColumn<QByteArray>("oldTag");
        QTest::addColumn<TagEdit>("edit");
        QTest::addColumn<QList<V23Frame>>("expected");
        using FE = FieldEdit;
        const QByteArray jpeg("\xFF\xD8\xFF\xE0 picture bytes \xFF\x00 more", 26);
        const QByteArray apicBody = QByteArray("\x00image/jpeg\x00\x03", 13) + "cover" + '\0' + jpeg;
        const QByteArray comm = QByteArray("\x00"
                                           "eng",
                                    4)
            + "desc" + '\0' + "a comment";

        QTest::newRow("v2.3: every other frame carried byte for byte")
            << build::id3Tag(3,
                   build::id3Frame(3, "TIT2", build::id3Text("Old")) + build::id3Frame(3, "APIC", apicBody)
                       + build::id3Frame(3, "TCON", build::id3Text("(17)Rock", 0))
                       + build::id3Frame(3, "TRCK", build::id3Text("3/12", 0))
                       + build::id3Frame(3, "COMM", comm) + build::id3Frame(3, "TPE1", build::id3Text("Gone"))
                       + build::id3Frame(3, "TXXX", QByteArray("\x00key\x00value", 10), 0x8000),
                   0, 100)
            << newTitle
            << QList<V23Frame> { text("TIT2", "New"), { "APIC", 0, apicBody }, text("TCON", "(17)Rock", 0),
                   text("TRCK", "3/12", 0), { "COMM", 0, comm },
                   { "TXXX", 0x8000, QByteArray("\x00key\x00value", 10) } };
        QTest::newRow("v2.3: kept fields stay, in the field order")
            << build::id3Tag(3,
                   build::id3Frame(3, "TALB", build::id3Text("Alb", 1))
                       + build::id3Frame(3, "TPE1", build::id3Text("Art"))
                       + build::id3Frame(3, "TIT2", build::id3Text("Old")))
            << TagEdit { FE::set(QStringLiteral("New")), FE::keep(), FE::keep() }
            << QList<V23Frame> { text("TIT2", "New"), text("TPE1", "Art"), text("TALB", "Alb", 1) };
        QTest::newRow("v2.3: tag unsynchronisation undone, extended header dropped")
            << build::id3Tag(3,
                   QByteArray("\x00\x00\x00\x06\x00\x00\x00\x00\x00\x00", 10) + "APIC" + build::be32(16)
                       + QByteArray(2, '\0')
                       + QByteArray("\x00image/png\x00\x03\x00\xFF\x00\xE0\xFF\x00\x00", 18),
                   0xC0)
            << newTitle
            << QList<V23Frame> { text("TIT2", "New"),
                   { "APIC", 0, QByteArray("\x00image/png\x00\x03\x00\xFF\xE0\xFF\x00", 16) } };
        QTest::newRow("v2.2: renamed, PIC becomes APIC, unknown frames dropped")
            << build::id3Tag(2,
                   build::id3Frame(2, "TT2", build::id3Text("Old", 0))
                       + build::id3Frame(2, "TP1", build::id3Text("Art", 0))
                       + build::id3Frame(2, "PIC", QByteArray("\x00JPG\x03\x00", 6) + jpeg)
                       + build::id3Frame(2, "ZZZ", "private")
                       + build::id3Frame(2, "TCO", build::id3Text("Jazz", 0))
                       + build::id3Frame(2, "COM", comm))
            << TagEdit { FE::set(QStringLiteral("New")), FE::keep(), FE::remove() }
            << QList<V23Frame> { text("TIT2", "New"), text("TPE1", "Art", 0),
                   { "APIC", 0, QByteArray("\x00image/jpeg\x00\x03\x00", 14) + jpeg },
                   text("TCON", "Jazz", 0), { "COMM", 0, comm } };
        const QByteArray longText(300, 'L'); // sizes above 127 tell synchsafe from plain
        QTest::newRow("v2.4: synchsafe sizes, multiple values joined, dates mapped")
            << build::id3Tag(4,
                   build::id3Frame(4, "TPE1",
                       QByteArray("\x03"
                                  "A\x00"
                                  "B",
                           4))
                       + build::id3Frame(4, "TCOM", build::id3Text(longText))
                       + build::id3Frame(4, "TDRC", build::id3Text("2001-02-03T04:05", 0))
                       + build::id3Frame(4, "TDOR", build::id3Text("1999", 0))
                       + build::id3Frame(4, "TIPL",
                           QByteArray("\x03"
                                      "producer\x00"
                                      "P\x00"
                                      "mix\x00"
                                      "M",
                               17))
                       + build::id3Frame(4, "SEEK", build::be32(1000))
                       + build::id3Frame(4, "TSOP", build::id3Text("Sort")))
            << TagEdit { FE::remove(), FE::keep(), FE::set(QStringLiteral("B")) }
            << QList<V23Frame> { text("TPE1", "A/B"), text("TALB", "B"),
                   text("TCOM", QString::fromLatin1(longText)), text("TYER", "2001"), text("TDAT", "0302"),
                   text("TIME", "0405"), text("TORY", "1999"),
                   { "IPLS", 0,
                       QByteArray("\x03"
                                  "producer\x00"
                                  "P\x00"
                                  "mix\x00"
                                  "M",
                           17) },
                   text("TSOP", "Sort") };
        QTest::newRow("v2.4: frame flags, unsynchronisation and data length moved to v2.3 places")
            << build::id3Tag(4,
                   build::id3Frame(4, "APIC",
                       QByteArray("\x07") + build::synchsafe(6) + QByteArray("\x00\xFF\x00\xE0pic", 7),
                       0x4043)
                       + build::id3Frame(4, "PRIV", build::synchsafe(100) + "zlib-data", 0x0009))
            << newTitle
            << QList<V23Frame> { text("TIT2", "New"),
                   { "APIC", 0x8020, QByteArray("\x07\x00\xFF\xE0pic", 7) },
                   { "PRIV", 0x0080, build::be32(100) + "zlib-data" } };
        QTest::newRow("v2.4: sizes written as plain integers")
            << build::id3Tag(4,
                   QByteArray("TCOM") + build::be32(300) + QByteArray(2, '\0')
                       + build::id3Text(QString(299, u'c')) + build::id3Frame(4, "TCON", build::id3Text("g")))
            << newTitle
            << QList<V23Frame> { text("TIT2", "New"), text("TCOM", QString(299, u'c')), text("TCON", "g") };
        QTest::newRow("damaged frame ends the list")
            << build::id3Tag(
                   3, build::id3Frame(3, "TCON", build::id3Text("g")) + "TPE2" + build::be32(5000) + "xx")
            << newTitle << QList<V23Frame> { text("TIT2", "New"), text("TCON", "g") };
    }

    void carriedFrames()
    {
        QFETCH(QByteArray, oldTag);
        QFETCH(TagEdit, edit);
        QFETCH(QList<V23Frame>, expected);
        const QByteArray audio = build::mpegAudio();
        QByteArray rest;
        QCOMPARE(framesOf(write(oldTag + audio, edit), &rest), expected);
        QCOMPARE(rest, audio);
    }

    void refused_data()
    {
        QTest::addColumn<QByteArray>("oldTag");
        QTest::newRow("unknown major version") << QByteArray("ID3\x05\x00\x00\x00\x00\x00\x02xx", 12);
        QTest::newRow("compressed ID3v2.2 tag")
            << build::id3Tag(2, build::id3Frame(2, "TT2", build::id3Text("x", 0)), 0x40);
    }

    void refused()
    {
        QFETCH(QByteArray, oldTag);
        const Result r = writeID3Tags(oldTag + build::mpegAudio(), newTitle);
        QVERIFY(!r);
        QCOMPARE(r.error, WriteError::unsupportedFormat);
    }
};

QTEST_GUILESS_MAIN(TestId3Writer)
#include "tst_id3_writer.moc"
