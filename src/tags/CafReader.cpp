// SPDX-License-Identifier: GPL-3.0-or-later
#include "CafReader.h"

#include "ByteCursor.h"
#include "FileWindow.h"
#include "VorbisComment.h"

#include <bit>
#include <cmath>

namespace caf {

namespace {

// Chunks that are read whole; anything larger is treated as damage.
constexpr qint64 maxSmallChunk = 16 << 20;

void parseInfo(QByteArrayView body, QList<container::Item> &items)
{
    ByteCursor c(body);
    const auto count = c.u32be();
    if (!count)
        return;
    const auto nextString = [&]() -> std::optional<QByteArrayView> {
        const QByteArrayView rest = body.sliced(c.position());
        const qsizetype nul = rest.indexOf('\0');
        if (nul < 0)
            return std::nullopt;
        c.skip(quint64(nul) + 1);
        return rest.first(nul);
    };
    for (quint32 i = 0; i < *count; ++i) {
        const auto key = nextString();
        const auto value = key ? nextString() : std::nullopt;
        if (!value)
            return;
        if (!vorbis::isValidUtf8(*key))
            continue;
        container::Item item;
        item.key = QString::fromUtf8(*key);
        if (*item.key == u"title")
            item.commonKey = container::CommonKey::title;
        else if (*item.key == u"artist")
            item.commonKey = container::CommonKey::artist;
        else if (*item.key == u"album")
            item.commonKey = container::CommonKey::albumName;
        if (!value->isEmpty() && vorbis::isValidUtf8(*value))
            item.text = QString::fromUtf8(*value);
        items.append(std::move(item));
    }
}

struct Description
{
    double sampleRate = 0;
    quint32 bytesPerPacket = 0;
    quint32 framesPerPacket = 0;
};

std::optional<Description> parseDescription(QByteArrayView body)
{
    ByteCursor c(body);
    const auto rate = c.u64be();
    if (!rate || !c.skip(8))
        return std::nullopt;
    const auto bytesPerPacket = c.u32be();
    const auto framesPerPacket = c.u32be();
    if (!framesPerPacket)
        return std::nullopt;
    return Description { std::bit_cast<double>(*rate), *bytesPerPacket, *framesPerPacket };
}

template<typename Window> Info walk(Window &file)
{
    Info info;
    if (!file.isOpen())
        return info;
    const auto header = file.read(0, 8);
    if (!header || header->first(4) != QByteArrayView("caff"))
        return info;
    std::optional<Description> desc;
    std::optional<qint64> validFrames;
    std::optional<qint64> audioBytes;
    qint64 pos = 8;
    while (pos < file.size()) {
        const auto chunkHeader = file.read(pos, 12);
        if (!chunkHeader)
            break;
        ByteCursor c(*chunkHeader);
        const QByteArray type = c.take(4)->toByteArray();
        const qint64 size = qint64(*c.u64be());
        const qint64 bodyOffset = pos + 12;
        const qint64 available = file.size() - bodyOffset;
        if (type == QByteArrayView("data")) {
            // Size -1: the audio runs to the end of the file.
            const qint64 bytes = size == -1 ? available : size;
            if (bytes < 4 || bytes > available)
                break;
            audioBytes = bytes - 4; // after the edit count
            if (size == -1)
                break;
        } else if (size < 0 || size > available) {
            break;
        } else if (size <= maxSmallChunk
            && (type == QByteArrayView("info") || type == QByteArrayView("desc")
                || type == QByteArrayView("pakt"))) {
            const auto body = file.read(bodyOffset, size);
            if (!body)
                break;
            if (type == QByteArrayView("info")) {
                parseInfo(*body, info.items);
            } else if (type == QByteArrayView("desc")) {
                desc = parseDescription(*body);
            } else {
                ByteCursor p(*body);
                if (p.skip(8))
                    if (const auto frames = p.u64be(); frames && qint64(*frames) >= 0)
                        validFrames = qint64(*frames);
            }
        }
        pos = bodyOffset + size;
    }
    if (desc && std::isfinite(desc->sampleRate) && desc->sampleRate > 0) {
        double frames = -1;
        if (validFrames)
            frames = double(*validFrames);
        else if (audioBytes && desc->bytesPerPacket > 0)
            frames = double(*audioBytes / desc->bytesPerPacket) * desc->framesPerPacket;
        if (frames > 0)
            info.duration = frames / desc->sampleRate;
    }
    return info;
}

} // namespace

Info parse(QByteArrayView fileBytes)
{
    MemoryWindow window(fileBytes);
    return walk(window);
}

Info readFile(const QString &path)
{
    FileWindow window(path);
    return walk(window);
}

} // namespace caf
