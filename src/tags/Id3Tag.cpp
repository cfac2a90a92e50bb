// SPDX-License-Identifier: GPL-3.0-or-later
#include "Id3Tag.h"

#include "ByteCursor.h"

#include <QHash>

#include <QStringDecoder>
#include <algorithm>

namespace id3 {

namespace {

QByteArray removeUnsynchronisation(QByteArrayView in)
{
    QByteArray out;
    out.reserve(in.size());
    for (qsizetype i = 0; i < in.size(); ++i) {
        out.append(in[i]);
        if (quint8(in[i]) == 0xFF && i + 1 < in.size() && in[i + 1] == 0)
            ++i;
    }
    return out;
}

bool isFrameIdChar(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool isFrameId(QByteArrayView id)
{
    for (char c : id) {
        if (!isFrameIdChar(c))
            return false;
    }
    return !id.isEmpty();
}

const QHash<QByteArray, QByteArray> &v22Names()
{
    static const QHash<QByteArray, QByteArray> names = {
        { "BUF", "RBUF" },
        { "CNT", "PCNT" },
        { "COM", "COMM" },
        { "CRA", "AENC" },
        { "ETC", "ETCO" },
        { "EQU", "EQUA" },
        { "GEO", "GEOB" },
        { "IPL", "IPLS" },
        { "MCI", "MCDI" },
        { "MLL", "MLLT" },
        { "PIC", "APIC" },
        { "POP", "POPM" },
        { "REV", "RVRB" },
        { "RVA", "RVAD" },
        { "SLT", "SYLT" },
        { "STC", "SYTC" },
        { "TAL", "TALB" },
        { "TBP", "TBPM" },
        { "TCM", "TCOM" },
        { "TCO", "TCON" },
        { "TCR", "TCOP" },
        { "TDA", "TDAT" },
        { "TDY", "TDLY" },
        { "TEN", "TENC" },
        { "TFT", "TFLT" },
        { "TIM", "TIME" },
        { "TKE", "TKEY" },
        { "TLA", "TLAN" },
        { "TLE", "TLEN" },
        { "TMT", "TMED" },
        { "TOA", "TOPE" },
        { "TOF", "TOFN" },
        { "TOL", "TOLY" },
        { "TOR", "TORY" },
        { "TOT", "TOAL" },
        { "TP1", "TPE1" },
        { "TP2", "TPE2" },
        { "TP3", "TPE3" },
        { "TP4", "TPE4" },
        { "TPA", "TPOS" },
        { "TPB", "TPUB" },
        { "TRC", "TSRC" },
        { "TRD", "TRDA" },
        { "TRK", "TRCK" },
        { "TSI", "TSIZ" },
        { "TSS", "TSSE" },
        { "TT1", "TIT1" },
        { "TT2", "TIT2" },
        { "TT3", "TIT3" },
        { "TXT", "TEXT" },
        { "TXX", "TXXX" },
        { "TYE", "TYER" },
        { "UFI", "UFID" },
        { "ULT", "USLT" },
        { "WAF", "WOAF" },
        { "WAR", "WOAR" },
        { "WAS", "WOAS" },
        { "WCM", "WCOM" },
        { "WCP", "WCOP" },
        { "WPB", "WPUB" },
        { "WXX", "WXXX" },
        // Names iTunes gave to frames it added to ID3v2.2.
        { "TCP", "TCMP" },
        { "TST", "TSOT" },
        { "TS2", "TSO2" },
        { "TSA", "TSOA" },
        { "TSP", "TSOP" },
        { "TSC", "TSOC" },
    };
    return names;
}

QByteArray encodeUtf8Text(const QString &text)
{
    return QByteArray(1, '\x03') + text.toUtf8();
}

QString decodeWithEncoding(quint8 encoding, QByteArrayView bytes)
{
    switch (encoding) {
    case 0:
        return QString::fromLatin1(bytes);
    case 3:
        return QString::fromUtf8(bytes);
    case 1:
    case 2: {
        bool bigEndian = encoding == 2;
        if (encoding == 1 && bytes.size() >= 2) {
            if (quint8(bytes[0]) == 0xFE && quint8(bytes[1]) == 0xFF) {
                bigEndian = true;
                bytes = bytes.sliced(2);
            } else if (quint8(bytes[0]) == 0xFF && quint8(bytes[1]) == 0xFE) {
                bytes = bytes.sliced(2);
            }
        }
        QStringDecoder d(bigEndian ? QStringDecoder::Utf16BE : QStringDecoder::Utf16LE);
        return d(bytes);
    }
    default:
        return {};
    }
}

// Splits a text body into its NUL-separated values (two NUL bytes in UTF-16).
QStringList textValues(QByteArrayView body)
{
    if (body.isEmpty())
        return {};
    const quint8 encoding = quint8(body[0]);
    QByteArrayView rest = body.sliced(1);
    const bool wide = encoding == 1 || encoding == 2;
    QStringList values;
    qsizetype start = 0;
    for (qsizetype i = 0; i < rest.size();) {
        const bool nul = wide ? (i + 1 < rest.size() && rest[i] == 0 && rest[i + 1] == 0) : rest[i] == 0;
        if (nul) {
            values.append(decodeWithEncoding(encoding, rest.sliced(start, i - start)));
            i += wide ? 2 : 1;
            start = i;
        } else {
            i += wide ? 2 : 1;
        }
    }
    if (start < rest.size())
        values.append(decodeWithEncoding(encoding, rest.sliced(start)));
    while (!values.isEmpty() && values.last().isEmpty())
        values.removeLast();
    return values;
}

// ID3v2.4 frames that ID3v2.3 names differently or not at all.
void mapV24Frame(Frame f, QList<Frame> &out, QStringList &dropped)
{
    if (f.id == "SEEK" || f.id == "ASPI") {
        // Both point at byte positions that a rewritten tag moves.
        dropped.append(QString::fromLatin1(f.id));
        return;
    }
    if (f.id == "TDRC" || f.id == "TDOR") {
        const QStringList values = textValues(f.body);
        const QString time = values.value(0);
        const bool original = f.id == "TDOR";
        if (time.size() >= 4) {
            out.append({ original ? "TORY" : "TYER", f.flags, encodeUtf8Text(time.first(4)) });
            if (!original && time.size() >= 10)
                out.append({ "TDAT", f.flags, encodeUtf8Text(time.mid(8, 2) + time.mid(5, 2)) });
            if (!original && time.size() >= 16)
                out.append({ "TIME", f.flags, encodeUtf8Text(time.mid(11, 2) + time.mid(14, 2)) });
        }
        return;
    }
    if (f.id == "TIPL" || f.id == "TMCL") {
        // Both become the one involved-people list of ID3v2.3.
        QStringList pairs = textValues(f.body);
        for (Frame &existing : out) {
            if (existing.id == "IPLS") {
                existing.body = encodeUtf8Text(
                    textValues(existing.body).join(QChar(0)) + QChar(0) + pairs.join(QChar(0)));
                return;
            }
        }
        out.append({ "IPLS", f.flags, encodeUtf8Text(pairs.join(QChar(0))) });
        return;
    }
    if (f.id.startsWith('T') && f.id != "TXXX" && !f.body.isEmpty()) {
        // ID3v2.4 separates several values with NUL; ID3v2.3 has one string.
        const QStringList values = textValues(f.body);
        if (values.size() > 1)
            f.body = encodeUtf8Text(values.join(u'/'));
    }
    out.append(std::move(f));
}

// Status and format flags of ID3v2.4 moved to their ID3v2.3 places, with the
// extra header bytes reordered. Nothing when the frame can't be expressed.
std::optional<Frame> convertV24(QByteArray id, quint8 status, quint8 format, QByteArray body)
{
    if (format & 0x02)
        body = removeUnsynchronisation(body);
    ByteCursor c(body);
    std::optional<quint8> group, method;
    std::optional<quint32> dataLength;
    if (format & 0x40)
        group = c.u8();
    if (format & 0x04)
        method = c.u8();
    if (format & 0x01)
        dataLength = c.synchsafe32();
    if (((format & 0x40) && !group) || ((format & 0x04) && !method) || ((format & 0x01) && !dataLength))
        return std::nullopt;
    const bool compressed = format & 0x08;
    if (compressed && !dataLength)
        return std::nullopt;
    quint16 flags = quint16((status & 0x70) << 9);
    QByteArray extra;
    if (compressed) {
        flags |= 0x80;
        extra.append(char(*dataLength >> 24))
            .append(char(*dataLength >> 16))
            .append(char(*dataLength >> 8))
            .append(char(*dataLength));
    }
    if (method) {
        flags |= 0x40;
        extra.append(char(*method));
    }
    if (group) {
        flags |= 0x20;
        extra.append(char(*group));
    }
    return Frame { std::move(id), flags, extra + body.sliced(c.position()) };
}

// iTunes wrote ID3v2.4 frame sizes as plain integers: take the reading that
// lands on the next frame, padding or the end of the tag.
quint32 v24FrameSize(QByteArrayView frames, qsizetype pos)
{
    ByteCursor c(frames.sliced(pos + 4));
    const quint32 plain = *c.u32be();
    if (plain & 0x80808080)
        return plain; // not synchsafe at all
    const quint32 safe
        = (plain & 0x7F) | ((plain >> 1) & 0x3F80) | ((plain >> 2) & 0x1FC000) | ((plain >> 3) & 0x0FE00000);
    if (safe == plain)
        return safe;
    const auto landsWell = [&](quint64 size) {
        const quint64 next = quint64(pos) + 10 + size;
        if (next == quint64(frames.size()))
            return true;
        if (next > quint64(frames.size()))
            return false;
        if (frames[qsizetype(next)] == 0)
            return true;
        return next + 4 <= quint64(frames.size()) && isFrameId(frames.sliced(qsizetype(next), 4));
    };
    if (!landsWell(safe) && landsWell(plain))
        return plain;
    return safe;
}

} // namespace

qsizetype leadingTagSize(QByteArrayView data)
{
    if (data.size() < 10 || !data.startsWith("ID3"))
        return 0;
    ByteCursor c(data.sliced(6, 4));
    const qsizetype size = 10 + qsizetype(*c.synchsafe32());
    return data.size() >= size ? size : 0;
}

ParseResult parseLeadingTag(QByteArrayView data)
{
    const qsizetype size = leadingTagSize(data);
    if (size == 0)
        return { std::nullopt, ParseError::noTag };
    const int version = quint8(data[3]);
    const quint8 tagFlags = quint8(data[5]);
    if (version < 2 || version > 4)
        return { std::nullopt, ParseError::unsupportedVersion };
    if (version == 2 && (tagFlags & 0x40))
        return { std::nullopt, ParseError::compressedTag };

    QByteArray frames = data.sliced(10, size - 10).toByteArray();
    if (version < 4 && (tagFlags & 0x80))
        frames = removeUnsynchronisation(frames);
    Tag tag { version, {}, {}, {} };
    qsizetype pos = 0;
    if (version >= 3 && (tagFlags & 0x40)) {
        ByteCursor c(frames);
        const auto extSize = version == 3 ? c.u32be() : c.synchsafe32();
        // ID3v2.3 counts the size field out, ID3v2.4 counts it in.
        const quint64 end = extSize ? (version == 3 ? quint64(*extSize) + 4 : quint64(*extSize)) : 0;
        if (!extSize || end > quint64(frames.size())) {
            tag.damage = QStringLiteral("the extended header runs past the end of the tag");
            return { std::move(tag), ParseError::noTag };
        }
        pos = qsizetype(end);
    }

    const qsizetype headerSize = version == 2 ? 6 : 10;
    const qsizetype idSize = version == 2 ? 3 : 4;
    while (frames.size() - pos >= headerSize) {
        const QByteArrayView id = QByteArrayView(frames).sliced(pos, idSize);
        if (!isFrameId(id))
            break; // padding or damage
        quint32 bodySize;
        quint8 status = 0, format = 0;
        ByteCursor c(QByteArrayView(frames).sliced(pos + idSize));
        if (version == 2) {
            bodySize = *c.u24be();
        } else if (version == 3) {
            bodySize = *c.u32be();
        } else {
            bodySize = v24FrameSize(frames, pos);
            c.skip(4);
        }
        if (version >= 3) {
            status = *c.u8();
            format = *c.u8();
        }
        if (bodySize > quint64(frames.size() - pos - headerSize)) {
            tag.damage
                = QStringLiteral("the frame %1 runs past the end of the tag").arg(QLatin1StringView(id));
            return { std::move(tag), ParseError::noTag };
        }
        QByteArray body = frames.sliced(pos + headerSize, bodySize);
        pos += headerSize + bodySize;
        if (body.isEmpty()) {
            // A frame holds at least one byte; some readers stop at an empty one.
            tag.dropped.append(QString::fromLatin1(id) + QStringLiteral(" (empty)"));
            continue;
        }

        if (version == 3) {
            tag.frames.append({ id.toByteArray(), quint16((status << 8) | format), std::move(body) });
        } else if (version == 4) {
            if (auto f = convertV24(id.toByteArray(), status, format, std::move(body)))
                mapV24Frame(std::move(*f), tag.frames, tag.dropped);
            else
                tag.dropped.append(QString::fromLatin1(id));
        } else {
            const QByteArray name = v22Names().value(id.toByteArray());
            if (name.isEmpty()) {
                tag.dropped.append(QString::fromLatin1(id));
            } else if (name == "APIC") {
                // PIC: encoding, 3-letter image format, type, description, data.
                if (body.size() < 5) {
                    tag.dropped.append(QString::fromLatin1(id));
                    continue;
                }
                const QByteArray format3 = body.sliced(1, 3).toUpper();
                const QByteArray mime = format3 == "JPG" ? QByteArray("image/jpeg")
                    : format3 == "-->"                   ? QByteArray("-->")
                                                         : "image/" + format3.toLower();
                tag.frames.append({ "APIC", 0, body.first(1) + mime + '\0' + body.sliced(4) });
            } else {
                tag.frames.append({ name, 0, std::move(body) });
            }
        }
    }
    const QByteArrayView rest = QByteArrayView(frames).sliced(pos);
    if (std::any_of(rest.begin(), rest.end(), [](char c) { return c != 0; }))
        tag.damage = QStringLiteral("the tag holds bytes that are neither frames nor padding");
    return { std::move(tag), ParseError::noTag };
}

QString describe(ParseError error, QByteArrayView data)
{
    switch (error) {
    case ParseError::unsupportedVersion:
        return QStringLiteral("unsupported ID3v2 version 2.%1")
            .arg(data.size() > 3 ? int(quint8(data[3])) : 0);
    case ParseError::compressedTag:
        return QStringLiteral("a compressed ID3v2.2 tag");
    case ParseError::noTag:
        break;
    }
    return QStringLiteral("no ID3v2 tag");
}

std::optional<QByteArray> pictureData(QByteArrayView body)
{
    ByteCursor c(body);
    const auto encoding = c.u8();
    if (!encoding || *encoding > 3)
        return std::nullopt;
    const qsizetype mimeEnd = body.indexOf('\0', c.position());
    if (mimeEnd < 0 || !c.skip(quint64(mimeEnd - c.position()) + 1) || !c.skip(1))
        return std::nullopt;
    // The description ends with one NUL, or two at an even offset in UTF-16.
    const bool wide = *encoding == 1 || *encoding == 2;
    qsizetype end = c.position();
    for (;; end += wide ? 2 : 1) {
        if (end + (wide ? 1 : 0) >= body.size())
            return std::nullopt;
        if (body[end] == 0 && (!wide || body[end + 1] == 0))
            break;
    }
    const QByteArrayView data = body.sliced(end + (wide ? 2 : 1));
    if (data.isEmpty())
        return std::nullopt;
    return data.toByteArray();
}

QByteArray serialize(const Frame &frame)
{
    QByteArray out;
    out.reserve(10 + frame.body.size());
    const quint32 size = quint32(frame.body.size());
    out.append(frame.id.left(4));
    out.append(char(size >> 24)).append(char(size >> 16)).append(char(size >> 8)).append(char(size));
    out.append(char(frame.flags >> 8)).append(char(frame.flags));
    out.append(frame.body);
    return out;
}

std::optional<QString> decodeText(QByteArrayView body)
{
    if (body.isEmpty() || quint8(body[0]) > 3)
        return std::nullopt;
    return textValues(body).join(u'/');
}

QStringList decodeTextValues(QByteArrayView body)
{
    if (body.isEmpty() || quint8(body[0]) > 3)
        return {};
    return textValues(body);
}

} // namespace id3
