// SPDX-License-Identifier: GPL-3.0-or-later
#include "AudioFormat.h"

#include "Id3Tag.h"

namespace audioformat {

namespace {

// Far enough for the junk some encoders leave between the tag and the audio.
constexpr qsizetype mpegSearchLimit = 64 * 1024;

// The length of the MPEG audio frame whose header starts the bytes; 0 when the
// four bytes are no valid header (reserved version, layer, rate or bit rate;
// free-format frames have no length to check and count as none).
qsizetype mpegFrameLength(QByteArrayView b)
{
    if (b.size() < 4 || quint8(b[0]) != 0xFF || (quint8(b[1]) & 0xE0) != 0xE0)
        return 0;
    const int version = (quint8(b[1]) >> 3) & 3; // 0: 2.5, 2: 2, 3: 1
    const int layer = (quint8(b[1]) >> 1) & 3; // 1: III, 2: II, 3: I
    const int bitrateIndex = quint8(b[2]) >> 4;
    const int rateIndex = (quint8(b[2]) >> 2) & 3;
    const int padding = (quint8(b[2]) >> 1) & 1;
    if (version == 1 || layer == 0 || bitrateIndex == 0 || bitrateIndex == 15 || rateIndex == 3)
        return 0;
    static constexpr int kbps[5][15] = {
        { 0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448 }, // 1, I
        { 0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384 }, // 1, II
        { 0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320 }, // 1, III
        { 0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256 }, // 2 and 2.5, I
        { 0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160 }, // 2 and 2.5, II and III
    };
    static constexpr int rates[3] = { 44100, 48000, 32000 };
    const bool mpeg1 = version == 3;
    const int row = mpeg1 ? 3 - layer : (layer == 3 ? 3 : 4);
    const qint64 bitrate = qint64(kbps[row][bitrateIndex]) * 1000;
    const qint64 rate = rates[rateIndex] >> (mpeg1 ? 0 : version == 2 ? 1 : 2);
    if (layer == 3)
        return qsizetype((12 * bitrate / rate + padding) * 4);
    const qint64 perFrame = (layer == 1 && !mpeg1) ? 72 : 144;
    return qsizetype(perFrame * bitrate / rate + padding);
}

// Tags that may follow the last frame.
bool isTrailer(QByteArrayView b)
{
    return b.startsWith("TAG") || b.startsWith("APETAGEX") || b.startsWith("LYRICSBEGIN");
}

quint8 crc8(QByteArrayView bytes)
{
    quint8 crc = 0;
    for (char c : bytes) {
        crc ^= quint8(c);
        for (int i = 0; i < 8; ++i)
            crc = quint8((crc & 0x80) ? (crc << 1) ^ 0x07 : crc << 1);
    }
    return crc;
}

} // namespace

Kind fromSuffix(const QString &lowerSuffix)
{
    if (lowerSuffix == u"flac")
        return Kind::flac;
    if (lowerSuffix == u"mp3")
        return Kind::mpeg;
    if (lowerSuffix == u"wav")
        return Kind::wave;
    if (lowerSuffix == u"aiff" || lowerSuffix == u"aif")
        return Kind::aiff;
    if (lowerSuffix == u"m4a")
        return Kind::mp4;
    if (lowerSuffix == u"caf")
        return Kind::caf;
    return Kind::unknown;
}

Kind detect(QByteArrayView file)
{
    if (file.isEmpty())
        return Kind::none;
    const qsizetype tag = id3::leadingTagSize(file);
    const QByteArrayView rest = file.sliced(tag);
    if (rest.startsWith("fLaC"))
        return Kind::flac;
    if (rest.size() >= 12 && rest.startsWith("RIFF") && rest.sliced(8, 4) == "WAVE")
        return Kind::wave;
    if (rest.size() >= 12 && rest.startsWith("FORM")
        && (rest.sliced(8, 4) == "AIFF" || rest.sliced(8, 4) == "AIFC"))
        return Kind::aiff;
    if (rest.size() >= 8 && rest.sliced(4, 4) == "ftyp")
        return Kind::mp4;
    if (rest.startsWith("caff"))
        return Kind::caf;
    if (rest.startsWith("OggS"))
        return Kind::ogg;
    // An ID3v2 tag in front of anything else is MPEG's convention; whether
    // audio follows is asked on its own.
    if (tag > 0 || hasMpegAudio(rest))
        return Kind::mpeg;
    return Kind::unknown;
}

QString name(Kind kind)
{
    switch (kind) {
    case Kind::none:
        return QStringLiteral("empty");
    case Kind::flac:
        return QStringLiteral("FLAC");
    case Kind::mpeg:
        return QStringLiteral("MP3");
    case Kind::wave:
        return QStringLiteral("WAV");
    case Kind::aiff:
        return QStringLiteral("AIFF");
    case Kind::mp4:
        return QStringLiteral("MP4");
    case Kind::caf:
        return QStringLiteral("CAF");
    case Kind::ogg:
        return QStringLiteral("Ogg");
    case Kind::unknown:
        break;
    }
    return QStringLiteral("unknown");
}

bool hasMpegAudio(QByteArrayView audio)
{
    const qsizetype limit = std::min(audio.size(), mpegSearchLimit);
    for (qsizetype pos = 0; pos < limit; ++pos) {
        if (quint8(audio[pos]) != 0xFF)
            continue;
        const qsizetype length = mpegFrameLength(audio.sliced(pos));
        if (length == 0 || length > audio.size() - pos)
            continue;
        const QByteArrayView next = audio.sliced(pos + length);
        if (next.isEmpty() || isTrailer(next) || mpegFrameLength(next) > 0)
            return true;
    }
    return false;
}

bool startsWithFlacFrame(QByteArrayView b)
{
    // Sync code, then block size, sample rate, channels and sample size, none
    // of them a reserved value.
    if (b.size() < 6 || quint8(b[0]) != 0xFF || (quint8(b[1]) & 0xFE) != 0xF8)
        return false;
    const int blockSize = quint8(b[2]) >> 4;
    const int rate = quint8(b[2]) & 0x0F;
    const int channels = quint8(b[3]) >> 4;
    const int sampleSize = (quint8(b[3]) >> 1) & 7;
    if (blockSize == 0 || rate == 15 || channels > 10 || sampleSize == 3 || (quint8(b[3]) & 1))
        return false;
    // The frame or sample number, coded like UTF-8 in up to seven bytes.
    const quint8 lead = quint8(b[4]);
    int extra = 0;
    if (lead >= 0x80) {
        if (lead == 0xFF || (lead & 0xC0) == 0x80)
            return false;
        for (quint8 m = 0x40; lead & m; m >>= 1)
            ++extra;
    }
    qsizetype pos = 5 + extra;
    if (b.size() < pos)
        return false;
    for (qsizetype i = 5; i < pos; ++i) {
        if ((quint8(b[i]) & 0xC0) != 0x80)
            return false;
    }
    pos += blockSize == 6 ? 1 : blockSize == 7 ? 2 : 0;
    pos += rate == 12 ? 1 : (rate == 13 || rate == 14) ? 2 : 0;
    return b.size() > pos && crc8(b.first(pos)) == quint8(b[pos]);
}

} // namespace audioformat
