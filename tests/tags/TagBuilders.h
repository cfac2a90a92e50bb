// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Byte builders for test fixtures, and plain readers of what the writers
// produce, written apart from the product's code so that a writer bug can't
// hide a reader bug.

#include <QByteArray>
#include <QDebug>
#include <QList>
#include <QString>

#include <optional>

namespace build {

// n bytes of v, most significant first unless littleEndian, `bits` bits a byte.
inline QByteArray number(quint64 v, int n, bool littleEndian = false, int bits = 8)
{
    QByteArray b(n, '\0');
    for (int i = 0; i < n; ++i)
        b[littleEndian ? i : n - 1 - i] = char((v >> (bits * i)) & ((1u << bits) - 1));
    return b;
}

inline QByteArray le32(quint32 v)
{
    return number(v, 4, true);
}
inline QByteArray be32(quint32 v)
{
    return number(v, 4);
}
inline QByteArray synchsafe(quint32 v)
{
    return number(v, 4, false, 7);
}

// A VORBIS_COMMENT body; count overrides the number of comments announced.
inline QByteArray vorbisBody(const QList<QByteArray> &comments, const QByteArray &vendor = "test vendor",
    std::optional<quint32> count = std::nullopt)
{
    QByteArray b = le32(quint32(vendor.size())) + vendor + le32(count.value_or(quint32(comments.size())));
    for (const QByteArray &c : comments)
        b += le32(quint32(c.size())) + c;
    return b;
}

struct Block
{
    int type;
    QByteArray body;
    std::optional<quint32> length = std::nullopt; // a lying length
};

// The header of one FLAC frame (4096 samples, 44.1 kHz, stereo, 16 bits) with
// its CRC-8, then filler standing in for the subframes.
inline QByteArray flacFrame()
{
    QByteArray f("\xFF\xF8\xC9\x18\x00", 5);
    quint8 crc = 0;
    for (char c : f) {
        crc ^= quint8(c);
        for (int i = 0; i < 8; ++i)
            crc = quint8((crc & 0x80) ? (crc << 1) ^ 0x07 : crc << 1);
    }
    return f + char(crc) + QByteArray(32, '\x5A');
}

// "fLaC", the blocks (the last one flagged unless lastFlag is false), then audio.
inline QByteArray flacFile(
    const QList<Block> &blocks, const QByteArray &audio = flacFrame(), bool lastFlag = true)
{
    QByteArray f("fLaC");
    for (qsizetype i = 0; i < blocks.size(); ++i) {
        const bool last = lastFlag && i == blocks.size() - 1;
        f += char(blocks[i].type | (last ? 0x80 : 0))
            + number(blocks[i].length.value_or(quint32(blocks[i].body.size())), 3) + blocks[i].body;
    }
    return f + audio;
}

// STREAMINFO: block sizes 4096, stereo 16-bit, the given rate and number of samples.
inline QByteArray streamInfo(quint64 samples = 44100, quint32 rate = 44100)
{
    const quint64 packed = quint64(rate) << 44 | quint64(1) << 41 | quint64(15) << 36 | samples;
    return QByteArray("\x10\x00\x10\x00", 4) + QByteArray(6, '\0') + number(packed, 8) + QByteArray(16, '\0');
}

inline QByteArray pictureBody(const QByteArray &data, const QByteArray &mime = "image/png", quint32 type = 3)
{
    return be32(type) + be32(quint32(mime.size())) + mime + be32(4) + "desc" + be32(1) + be32(1) + be32(24)
        + be32(0) + be32(quint32(data.size())) + data;
}

// One ID3v2 frame of the given major version (2, 3 or 4).
inline QByteArray id3Frame(int version, const QByteArray &id, const QByteArray &body, quint16 flags = 0)
{
    if (version == 2)
        return id + number(quint32(body.size()), 3) + body;
    const quint32 n = quint32(body.size());
    return id + (version == 4 ? synchsafe(n) : be32(n)) + number(flags, 2) + body;
}

// An ID3v2 text frame body in the given encoding (0 Latin-1, 1 UTF-16 with BOM, 3 UTF-8).
inline QByteArray id3Text(const QString &text, int encoding = 3)
{
    if (encoding == 1)
        return QByteArray("\x01\xFF\xFE", 3)
            + QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
    return char(encoding) + (encoding == 0 ? text.toLatin1() : text.toUtf8());
}

inline QByteArray id3Tag(int version, const QByteArray &frames, quint8 flags = 0, int padding = 0)
{
    return QByteArray("ID3") + char(version) + '\0' + char(flags)
        + synchsafe(quint32(frames.size() + padding)) + frames + QByteArray(padding, '\0');
}

// A short run of MPEG audio frame headers standing in for audio.
inline QByteArray mpegAudio()
{
    QByteArray a;
    for (int i = 0; i < 4; ++i)
        a += QByteArray("\xFF\xFB\x90\x64", 4) + QByteArray(413, char(i + 1));
    return a;
}

// A 128-byte ID3v1.1 tag (track 0: ID3v1.0).
inline QByteArray id3v1(const QByteArray &title, const QByteArray &artist, const QByteArray &album,
    const QByteArray &comment = {}, int track = 0, quint8 genre = 255)
{
    const auto field = [](const QByteArray &s, int n) { return s.left(n).leftJustified(n, '\0'); };
    return "TAG" + field(title, 30) + field(artist, 30) + field(album, 30) + "1999"
        + (track ? field(comment, 28) + '\0' + char(track) : field(comment, 30)) + char(genre);
}

} // namespace build

namespace plain {

inline quint32 be(const QByteArray &b, qsizetype at, int n, bool littleEndian = false)
{
    quint32 v = 0;
    for (int i = 0; i < n; ++i)
        v = (v << 8) | quint8(b[at + (littleEndian ? n - 1 - i : i)]);
    return v;
}

struct FlacBlock
{
    int type;
    bool last;
    QByteArray body;
    bool operator==(const FlacBlock &) const = default;
};

// Every block up to the flagged one.
inline QList<FlacBlock> flacBlocks(const QByteArray &file)
{
    QList<FlacBlock> blocks;
    for (qsizetype pos = 4; pos + 4 <= file.size() && (blocks.isEmpty() || !blocks.last().last);) {
        const qsizetype len = be(file, pos + 1, 3);
        blocks.append({ file[pos] & 0x7F, bool(file[pos] & 0x80), file.mid(pos + 4, len) });
        pos += 4 + len;
    }
    return blocks;
}

// The comments of a VORBIS_COMMENT body, and its vendor.
inline QList<QByteArray> comments(const QByteArray &body, QByteArray *vendor = nullptr)
{
    qsizetype pos = 4 + be(body, 0, 4, true);
    if (vendor)
        *vendor = body.mid(4, pos - 4);
    QList<QByteArray> out;
    const quint32 n = be(body, pos, 4, true);
    pos += 4;
    for (quint32 i = 0; i < n; ++i) {
        const qsizetype length = be(body, pos, 4, true);
        out.append(body.mid(pos + 4, length));
        pos += 4 + length;
    }
    return out;
}

struct Id3Frame
{
    QByteArray id;
    quint16 flags;
    QByteArray body;
    bool operator==(const Id3Frame &) const = default;
};

// The frames of an ID3v2.3 tag without flags, sizes plain, filling the tag;
// `rest` gets what follows the tag.
inline QList<Id3Frame> id3Frames(const QByteArray &file, QByteArray *rest)
{
    QList<Id3Frame> frames;
    qsizetype pos = 0;
    if (file.startsWith("ID3\x03")) {
        const qsizetype end = 10
            + ((quint8(file[6]) << 21) | (quint8(file[7]) << 14) | (quint8(file[8]) << 7) | quint8(file[9]));
        for (pos = 10; pos < end; pos += 10 + be(file, pos + 4, 4))
            frames.append({ file.mid(pos, 4), quint16(be(file, pos + 8, 2)),
                file.mid(pos + 10, be(file, pos + 4, 4)) });
        if (pos != end)
            qWarning() << "frames overrun the tag";
    }
    *rest = file.mid(pos);
    return frames;
}

} // namespace plain
