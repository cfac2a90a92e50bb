// SPDX-License-Identifier: GPL-3.0-or-later
#include "FlacMetadata.h"

#include "ByteCursor.h"
#include "FileWindow.h"
#include "VorbisComment.h"

TrackMetadata parseFLACMetadata(QByteArrayView bytes)
{
    ByteCursor c(bytes);
    const auto marker = c.take(4);
    if (!marker || *marker != QByteArrayView("fLaC"))
        return {};
    for (;;) {
        const auto header = c.u8();
        const auto length = c.u24be();
        if (!header || !length)
            return {};
        const auto body = c.take(*length);
        if (!body)
            return {};
        if ((*header & 0x7F) == flac::vorbisCommentType)
            return parseVorbisComment(*body);
        if (*header & 0x80)
            return {};
    }
}

namespace flac {

std::optional<QByteArray> pictureData(QByteArrayView body)
{
    ByteCursor c(body);
    if (!c.skip(4))
        return std::nullopt;
    const auto mimeLength = c.u32be();
    if (!mimeLength || !c.skip(*mimeLength))
        return std::nullopt;
    const auto descriptionLength = c.u32be();
    if (!descriptionLength || !c.skip(*descriptionLength) || !c.skip(16))
        return std::nullopt;
    const auto dataLength = c.u32be();
    if (!dataLength || *dataLength == 0)
        return std::nullopt;
    const auto data = c.take(*dataLength);
    if (!data)
        return std::nullopt;
    return data->toByteArray();
}

std::optional<double> streamInfoDuration(QByteArrayView body)
{
    // 16+16 bits block sizes, 24+24 bits frame sizes, then 20 bits sample rate,
    // 3 bits channels, 5 bits sample depth and 36 bits total samples.
    if (body.size() < 18)
        return std::nullopt;
    const auto b = [&](int i) { return quint64(quint8(body[i])); };
    const quint64 rate = (b(10) << 12) | (b(11) << 4) | (b(12) >> 4);
    const quint64 samples = ((b(13) & 0x0F) << 32) | (b(14) << 24) | (b(15) << 16) | (b(16) << 8) | b(17);
    if (rate == 0 || samples == 0)
        return std::nullopt;
    return double(samples) / double(rate);
}

namespace {

struct BlockHeader
{
    quint8 header = 0;
    qint64 bodyOffset = 0;
    qint64 length = 0;

    quint8 type() const { return header & 0x7F; }
    bool isLast() const { return header & 0x80; }
};

// Walks the block headers of a FLAC file, calling visit(block) until it returns
// false. Answers false when the file isn't FLAC or a block runs past its end.
template<typename Window, typename Visit> bool walkBlocks(Window &file, Visit visit)
{
    if (!file.isOpen())
        return false;
    const auto marker = file.read(0, 4);
    if (!marker || *marker != QByteArrayView("fLaC"))
        return false;
    qint64 pos = 4;
    for (;;) {
        const auto header = file.read(pos, 4);
        if (!header)
            return false;
        BlockHeader b;
        b.header = quint8((*header)[0]);
        b.length = (qint64(quint8((*header)[1])) << 16) | (qint64(quint8((*header)[2])) << 8)
            | qint64(quint8((*header)[3]));
        b.bodyOffset = pos + 4;
        if (b.length > file.size() - b.bodyOffset)
            return false;
        if (!visit(b))
            return true;
        if (b.isLast())
            return true;
        pos = b.bodyOffset + b.length;
    }
}

template<typename Window> FileInfo readInfo(Window &file, bool wantDuration)
{
    FileInfo info;
    bool first = true;
    bool comment = false;
    bool picture = false;
    // Every block header is walked to see whether a picture follows the comment.
    walkBlocks(file, [&](const BlockHeader &b) {
        if (first && wantDuration && b.type() == streamInfoType) {
            if (const auto body = file.read(b.bodyOffset, b.length))
                info.duration = streamInfoDuration(*body);
        }
        first = false;
        picture = picture || b.type() == pictureType;
        if (b.type() == vorbisCommentType && !comment) {
            comment = true;
            if (const auto body = file.read(b.bodyOffset, b.length))
                info.metadata = parseVorbisComment(*body);
        }
        return !(comment && picture);
    });
    info.metadata.hasPicture = picture;
    return info;
}

} // namespace

FileInfo readFile(const QString &path, bool wantDuration)
{
    FileWindow file(path);
    return readInfo(file, wantDuration);
}

FileInfo parseFile(QByteArrayView wholeFile, bool wantDuration)
{
    MemoryWindow file(wholeFile);
    return readInfo(file, wantDuration);
}

std::optional<QByteArray> readPicture(const QString &path)
{
    FileWindow file(path);
    std::optional<QByteArray> picture;
    walkBlocks(file, [&](const BlockHeader &b) {
        if (b.type() != pictureType)
            return true;
        if (const auto body = file.read(b.bodyOffset, b.length))
            picture = pictureData(*body);
        return !picture;
    });
    return picture;
}

namespace {

bool isWholePicture(QByteArrayView body)
{
    ByteCursor c(body);
    const auto skipCounted = [&c] {
        const auto length = c.u32be();
        return length && c.skip(*length);
    };
    return c.skip(4) && skipCounted() && skipCounted() && c.skip(16) && skipCounted() && c.atEnd();
}

QString blockDamage(const Block &b, qsizetype index)
{
    if ((index == 0) != (b.type == streamInfoType) || (index == 0 && b.body.size() != 34))
        return QStringLiteral("the STREAMINFO block is missing, damaged or out of place");
    switch (b.type) {
    case vorbisCommentType:
        return vorbis::comments(b.body).whole ? QString()
                                              : QStringLiteral("a VORBIS_COMMENT block is damaged");
    case pictureType:
        return isWholePicture(b.body) ? QString() : QStringLiteral("a PICTURE block is damaged");
    case 2: // APPLICATION: a 4-byte id, then its data
        return b.body.size() >= 4 ? QString() : QStringLiteral("an APPLICATION block is damaged");
    case 3: // SEEKTABLE
        return b.body.size() % 18 == 0 ? QString() : QStringLiteral("a SEEKTABLE block is damaged");
    case 127:
        return QStringLiteral("a block has the invalid type 127");
    default:
        return {};
    }
}

} // namespace

Layout parseLayout(QByteArrayView file)
{
    Layout layout;
    ByteCursor c(file);
    const auto marker = c.take(4);
    if (!marker || *marker != QByteArrayView("fLaC")) {
        layout.damage = QStringLiteral("the file is not a FLAC stream");
        return layout;
    }
    for (;;) {
        const auto header = c.u8();
        const std::optional<quint32> length = header ? c.u24be() : std::nullopt;
        const std::optional<QByteArrayView> body = length ? c.take(*length) : std::nullopt;
        if (!body) {
            layout.damage = header && length
                ? QStringLiteral("a metadata block runs past the end of the file")
                : QStringLiteral("the metadata ends without its last block");
            return layout;
        }
        const Block block { quint8(*header & 0x7F), *body };
        layout.damage = blockDamage(block, layout.blocks.size());
        layout.blocks.append(block);
        layout.audioStart = c.position();
        if (!layout.damage.isEmpty() || (*header & 0x80))
            return layout;
    }
}

} // namespace flac
