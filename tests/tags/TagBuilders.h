// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Byte builders for test fixtures, written apart from the writers so that a
// writer bug can't hide a reader bug.

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace build {

inline QByteArray le32(quint32 v)
{
    QByteArray b(4, '\0');
    for (int i = 0; i < 4; ++i)
        b[i] = char(v >> (8 * i));
    return b;
}

inline QByteArray be32(quint32 v)
{
    QByteArray b(4, '\0');
    for (int i = 0; i < 4; ++i)
        b[i] = char(v >> (8 * (3 - i)));
    return b;
}

inline QByteArray be64(quint64 v)
{
    return be32(quint32(v >> 32)) + be32(quint32(v));
}

inline QByteArray synchsafe(quint32 v)
{
    QByteArray b(4, '\0');
    for (int i = 0; i < 4; ++i)
        b[i] = char((v >> (7 * (3 - i))) & 0x7F);
    return b;
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

// "fLaC", the blocks (the last one flagged unless lastFlag is false), then audio.
inline QByteArray flacFile(const QList<Block> &blocks,
    const QByteArray &audio = QByteArray("\xFF\xF8\x69\x08audio", 9), bool lastFlag = true)
{
    QByteArray f("fLaC");
    for (qsizetype i = 0; i < blocks.size(); ++i) {
        const Block &b = blocks[i];
        const quint32 len = b.length.value_or(quint32(b.body.size()));
        const bool last = lastFlag && i == blocks.size() - 1;
        f += char(b.type | (last ? 0x80 : 0));
        f += char(len >> 16);
        f += char(len >> 8);
        f += char(len);
        f += b.body;
    }
    return f + audio;
}

// STREAMINFO for 44.1 kHz stereo 16-bit with the given number of samples.
inline QByteArray streamInfo(quint64 samples = 44100, quint32 rate = 44100)
{
    QByteArray b(34, '\0');
    b[0] = 0x10;
    b[2] = 0x10; // block sizes 4096
    b[10] = char(rate >> 12);
    b[11] = char(rate >> 4);
    b[12] = char(((rate & 0x0F) << 4) | (1 << 1) | 0); // 2 channels, 16 bits (upper bit)
    b[13] = char((15 << 4) | ((samples >> 32) & 0x0F));
    b[14] = char(samples >> 24);
    b[15] = char(samples >> 16);
    b[16] = char(samples >> 8);
    b[17] = char(samples);
    return b;
}

inline QByteArray pictureBody(const QByteArray &data, const QByteArray &mime = "image/png", quint32 type = 3)
{
    return be32(type) + be32(quint32(mime.size())) + mime + be32(4) + "desc" + be32(1) + be32(1) + be32(24)
        + be32(0) + be32(quint32(data.size())) + data;
}

// One ID3v2 frame of the given major version (2, 3 or 4).
inline QByteArray id3Frame(int version, const QByteArray &id, const QByteArray &body, quint16 flags = 0)
{
    if (version == 2) {
        const quint32 n = quint32(body.size());
        return id + char(n >> 16) + char(n >> 8) + char(n) + body;
    }
    const QByteArray size = version == 4 ? synchsafe(quint32(body.size())) : be32(quint32(body.size()));
    return id + size + char(flags >> 8) + char(flags) + body;
}

// An ID3v2 text frame body in the given encoding (0 Latin-1, 1 UTF-16 with BOM, 3 UTF-8).
inline QByteArray id3Text(const QString &text, int encoding = 3)
{
    QByteArray b(1, char(encoding));
    if (encoding == 0)
        b += text.toLatin1();
    else if (encoding == 1) {
        b += "\xFF\xFE";
        for (QChar c : text)
            b += char(c.unicode() & 0xFF), b += char(c.unicode() >> 8);
    } else
        b += text.toUtf8();
    return b;
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

inline QByteArray cafChunk(
    const QByteArray &type, const QByteArray &body, std::optional<qint64> size = std::nullopt)
{
    return type + be64(quint64(size.value_or(body.size()))) + body;
}

inline QByteArray cafInfo(const QList<std::pair<QByteArray, QByteArray>> &entries)
{
    QByteArray b = be32(quint32(entries.size()));
    for (const auto &[k, v] : entries)
        b += k + '\0' + v + '\0';
    return b;
}

// desc for 16-bit stereo PCM at 44.1 kHz (4 bytes a packet, 1 frame a packet).
inline QByteArray cafDesc()
{
    return QByteArray("\x40\xE5\x88\x80\x00\x00\x00\x00", 8) + "lpcm" + be32(0) + be32(4) + be32(1) + be32(2)
        + be32(16);
}

inline QByteArray cafFile(const QByteArray &chunks)
{
    return QByteArray("caff\x00\x01\x00\x00", 8) + chunks;
}

} // namespace build
