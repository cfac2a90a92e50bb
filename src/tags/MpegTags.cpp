// SPDX-License-Identifier: GPL-3.0-or-later
#include "MpegTags.h"

#include "ByteCursor.h"
#include "FileWindow.h"
#include "Id3Tag.h"
#include "Id3v1Tag.h"
#include "TagLibStream.h"

#include <taglib/id3v1genres.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/mpegfile.h>

namespace mpeg {

namespace {

using container::CommonKey;
using container::Item;

std::optional<CommonKey> commonKeyOf(const QByteArray &id)
{
    if (id == "TIT2")
        return CommonKey::title;
    if (id == "TPE1")
        return CommonKey::artist;
    if (id == "TALB")
        return CommonKey::albumName;
    if (id == "APIC")
        return CommonKey::artwork;
    return std::nullopt;
}

QString genreName(int number)
{
    const TagLib::String name = TagLib::ID3v1::genre(number);
    const std::string utf8 = name.to8Bit(true);
    return QString::fromUtf8(utf8.data(), qsizetype(utf8.size()));
}

// The ID3v1 value of a field the ID3v2 frames leave without text.
void appendFallbacks(QList<Item> &items, const id3v1::Tag &v1)
{
    const TrackMetadata known = container::metadataFromItems(items);
    const auto add
        = [&](const std::optional<QString> &have, CommonKey key, const char *name, const QString &value) {
              if (!have && !value.isEmpty())
                  items.append({ key, QString::fromLatin1(name), value, std::nullopt });
          };
    add(known.title, CommonKey::title, "title", v1.title);
    add(known.artist, CommonKey::artist, "artist", v1.artist);
    add(known.album, CommonKey::albumName, "album", v1.album);
    if (!known.genre && v1.genre <= id3v1::lastKnownGenre)
        items.append({ std::nullopt, QStringLiteral("genre"), genreName(v1.genre), std::nullopt });
}

} // namespace

QList<Item> tagItems(QByteArrayView head, QByteArrayView tail, bool withPictures)
{
    QList<Item> items;
    const id3::ParseResult parsed = id3::parseLeadingTag(head);
    if (parsed.tag) {
        for (const id3::Frame &frame : parsed.tag->frames) {
            Item item { commonKeyOf(frame.id), QString::fromLatin1(frame.id), std::nullopt, std::nullopt };
            if (frame.id == "APIC") {
                if (withPictures)
                    item.data = id3::pictureData(frame.body);
            } else if (frame.id.startsWith('T') && frame.id != "TXXX") {
                const QString text = frame.id == "TCON"
                    ? container::genreText(id3::decodeTextValues(frame.body), genreName)
                    : id3::decodeText(frame.body).value_or(QString());
                if (!text.isEmpty())
                    item.text = text;
            }
            items.append(std::move(item));
        }
    }
    if (const auto v1 = id3v1::parse(tail))
        appendFallbacks(items, *v1);
    return items;
}

container::Contents readFile(const QString &path, int want)
{
    container::Contents c;
    if (want & (container::wantTags | container::wantPictures)) {
        FileWindow file(path);
        if (!file.isOpen())
            return c;
        QByteArray head;
        if (const auto header = file.read(0, 10); header && header->startsWith("ID3")) {
            ByteCursor size(header->sliced(6));
            if (const auto tag = file.read(0, 10 + qint64(*size.synchsafe32())))
                head = tag->toByteArray();
        }
        const qint64 afterTag = file.size() - head.size();
        const qint64 tailSize = std::min<qint64>(afterTag, id3v1::tagSize);
        QByteArray tail;
        if (const auto bytes = file.read(file.size() - tailSize, tailSize))
            tail = bytes->toByteArray();
        c.items = tagItems(head, tail, want & container::wantPictures);
    }
    if (want & container::wantDuration) {
        TagLibStream stream(path);
        TagLib::MPEG::File file(
            &stream, TagLib::ID3v2::FrameFactory::instance(), true, TagLib::AudioProperties::Fast);
        if (file.isValid() && file.audioProperties() && file.audioProperties()->lengthInMilliseconds() > 0)
            c.duration = file.audioProperties()->lengthInMilliseconds() / 1000.0;
    }
    return c;
}

} // namespace mpeg
