// SPDX-License-Identifier: GPL-3.0-or-later
#include "AudioFixtures.h"

#include "support/TestSupport.h"

#include <QByteArray>
#include <QFile>
#include <QList>

#include <bit>
#include <cstring>

namespace fixtures {

namespace {

QStringList codecArgs(Format format)
{
    switch (format) {
    case Format::Wav:
        return { QStringLiteral("-c:a"), QStringLiteral("pcm_s16le") };
    case Format::Flac:
        return { QStringLiteral("-c:a"), QStringLiteral("flac") };
    case Format::Mp3VbrNoXing:
        return { QStringLiteral("-c:a"), QStringLiteral("libmp3lame"), QStringLiteral("-q:a"),
            QStringLiteral("4"), QStringLiteral("-write_xing"), QStringLiteral("0") };
    case Format::M4aAac:
        return { QStringLiteral("-c:a"), QStringLiteral("aac"), QStringLiteral("-b:a"),
            QStringLiteral("128k") };
    case Format::M4aAlac:
    case Format::CafAlac:
        return { QStringLiteral("-c:a"), QStringLiteral("alac") };
    case Format::Aiff:
    case Format::CafLpcm:
        return { QStringLiteral("-c:a"), QStringLiteral("pcm_s16be") };
    case Format::CafAac:
        return { QStringLiteral("-c:a"), QStringLiteral("aac"), QStringLiteral("-b:a"),
            QStringLiteral("128k"), QStringLiteral("-f"), QStringLiteral("adts") };
    }
    return {};
}

bool ffmpeg(const QStringList &codec, const QString &out, double seconds)
{
    QStringList args { QStringLiteral("-nostdin"), QStringLiteral("-v"), QStringLiteral("error"),
        QStringLiteral("-y"), QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
        QStringLiteral("sine=frequency=440:sample_rate=44100:duration=%1").arg(seconds),
        QStringLiteral("-ac"), QStringLiteral("2") };
    args << codec << out;
    return testsupport::run(QStringLiteral("ffmpeg"), args).exitCode == 0;
}

void be(QByteArray &out, quint64 value, int bytes)
{
    for (int i = bytes - 1; i >= 0; --i)
        out.append(char((value >> (8 * i)) & 0xff));
}

void chunk(QByteArray &out, const char type[5], const QByteArray &body)
{
    out.append(type, 4);
    be(out, quint64(body.size()), 8);
    out.append(body);
}

// CAF packet sizes: big-endian groups of 7 bits, the high bit set on all but the last.
void varint(QByteArray &out, quint32 value)
{
    QByteArray bytes;
    bytes.prepend(char(value & 0x7f));
    while (value >>= 7)
        bytes.prepend(char(0x80 | (value & 0x7f)));
    out.append(bytes);
}

// An MPEG-4 descriptor with a one-byte length (all of ours are short).
QByteArray descriptor(quint8 tag, const QByteArray &body)
{
    QByteArray out;
    out.append(char(tag));
    out.append(char(body.size()));
    return out + body;
}

// Rewraps the raw AAC frames of an ADTS stream as CAF: desc, kuki (the esds
// holding the AudioSpecificConfig), pakt (one size per packet) and data.
bool adtsToCaf(const QByteArray &adts, const QString &path)
{
    QList<QByteArray> packets;
    int objectType = 0, rateIndex = 0, channels = 0;
    qsizetype pos = 0;
    while (pos + 7 <= adts.size()) {
        const auto *h = reinterpret_cast<const uchar *>(adts.constData() + pos);
        if (h[0] != 0xff || (h[1] & 0xf0) != 0xf0)
            return false;
        const bool noCrc = h[1] & 1;
        objectType = ((h[2] >> 6) & 3) + 1;
        rateIndex = (h[2] >> 2) & 0xf;
        channels = ((h[2] & 1) << 2) | (h[3] >> 6);
        const int length = ((h[3] & 3) << 11) | (h[4] << 3) | (h[5] >> 5);
        const int header = noCrc ? 7 : 9;
        if (length < header || pos + length > adts.size())
            return false;
        packets.append(adts.mid(pos + header, length - header));
        pos += length;
    }
    static const int rates[]
        = { 96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000 };
    if (packets.isEmpty() || rateIndex >= 12)
        return false;

    QByteArray caf("caff\x00\x01\x00\x00", 8);
    QByteArray desc;
    be(desc, std::bit_cast<quint64>(double(rates[rateIndex])), 8);
    desc.append("aac ", 4);
    be(desc, 2, 4); // MPEG-4 AAC LC
    be(desc, 0, 4); // bytes per packet: variable
    be(desc, 1024, 4);
    be(desc, quint64(channels), 4);
    be(desc, 0, 4);
    chunk(caf, "desc", desc);

    QByteArray config;
    config.append(char((objectType << 3) | (rateIndex >> 1)));
    config.append(char(((rateIndex & 1) << 7) | (channels << 3)));
    QByteArray decoderConfig;
    decoderConfig.append(char(0x40)); // MPEG-4 audio
    decoderConfig.append(char(0x15)); // audio stream
    be(decoderConfig, 0, 3);
    be(decoderConfig, 128000, 4);
    be(decoderConfig, 128000, 4);
    decoderConfig += descriptor(0x05, config);
    QByteArray es;
    be(es, 0, 2);
    es.append(char(0));
    es += descriptor(0x04, decoderConfig) + descriptor(0x06, QByteArray(1, char(0x02)));
    QByteArray kuki;
    be(kuki, 0, 4); // esds version and flags
    kuki += descriptor(0x03, es);
    chunk(caf, "kuki", kuki);

    QByteArray pakt;
    be(pakt, quint64(packets.size()), 8);
    be(pakt, quint64(packets.size()) * 1024, 8);
    be(pakt, 0, 4);
    be(pakt, 0, 4);
    QByteArray data(4, '\0'); // edit count
    for (const QByteArray &p : packets) {
        varint(pakt, quint32(p.size()));
        data += p;
    }
    chunk(caf, "pakt", pakt);
    chunk(caf, "data", data);

    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(caf) == caf.size();
}

} // namespace

QString extension(Format format)
{
    switch (format) {
    case Format::Wav:
        return QStringLiteral("wav");
    case Format::Flac:
        return QStringLiteral("flac");
    case Format::Mp3VbrNoXing:
        return QStringLiteral("mp3");
    case Format::M4aAac:
    case Format::M4aAlac:
        return QStringLiteral("m4a");
    case Format::Aiff:
        return QStringLiteral("aiff");
    case Format::CafLpcm:
    case Format::CafAlac:
    case Format::CafAac:
        return QStringLiteral("caf");
    }
    return {};
}

QString name(Format format)
{
    switch (format) {
    case Format::Wav:
        return QStringLiteral("wav");
    case Format::Flac:
        return QStringLiteral("flac");
    case Format::Mp3VbrNoXing:
        return QStringLiteral("mp3 vbr without xing");
    case Format::M4aAac:
        return QStringLiteral("m4a aac");
    case Format::M4aAlac:
        return QStringLiteral("m4a alac");
    case Format::Aiff:
        return QStringLiteral("aiff");
    case Format::CafLpcm:
        return QStringLiteral("caf lpcm");
    case Format::CafAlac:
        return QStringLiteral("caf alac");
    case Format::CafAac:
        return QStringLiteral("caf aac");
    }
    return {};
}

bool makeAudio(Format format, const QString &path, double seconds)
{
    if (format != Format::CafAac)
        return ffmpeg(codecArgs(format), path, seconds);
    const QString adts = path + QStringLiteral(".adts");
    const bool made = ffmpeg(codecArgs(format), adts, seconds);
    const QByteArray bytes = testsupport::readFile(adts);
    QFile::remove(adts);
    return made && adtsToCaf(bytes, path);
}

} // namespace fixtures
