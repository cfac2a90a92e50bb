// SPDX-License-Identifier: GPL-3.0-or-later
#include "ContainerReader.h"

#include "CafReader.h"
#include "MpegTags.h"
#include "TagLibStream.h"
#include "VorbisComment.h"
#include "model/Log.h"

#include <taglib/aifffile.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/id3v1genres.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2tag.h>
#include <taglib/infotag.h>
#include <taglib/mp4file.h>
#include <taglib/tdebuglistener.h>
#include <taglib/textidentificationframe.h>
#include <taglib/wavfile.h>

namespace container {

namespace {

QString toQString(const TagLib::String &s)
{
    const std::string utf8 = s.to8Bit(true);
    return QString::fromUtf8(utf8.data(), qsizetype(utf8.size()));
}

QByteArray toQByteArray(const TagLib::ByteVector &v)
{
    return QByteArray(v.data(), qsizetype(v.size()));
}

// TagLib speaks through a global listener; its complaints about damaged files
// belong in our log, not on stderr.
class LogListener : public TagLib::DebugListener
{
public:
    void printMessage(const TagLib::String &msg) override
    {
        qCDebug(lcTags).noquote() << "TagLib:" << toQString(msg).trimmed();
    }
};

// RIFF INFO has no declared encoding: UTF-8 where the bytes are UTF-8 (what
// TagLib writes, and most tools today), Latin-1 for older files.
class InfoStrings : public TagLib::RIFF::Info::StringHandler
{
public:
    TagLib::String parse(const TagLib::ByteVector &data) const override
    {
        QByteArrayView bytes(data.data(), qsizetype(data.size()));
        while (!bytes.isEmpty() && bytes.back() == '\0')
            bytes.chop(1);
        const TagLib::ByteVector trimmed(bytes.data(), uint(bytes.size()));
        return TagLib::String(
            trimmed, vorbis::isValidUtf8(bytes) ? TagLib::String::UTF8 : TagLib::String::Latin1);
    }
};

} // namespace

void ensureTagLibSetUp()
{
    static LogListener listener;
    static InfoStrings infoStrings;
    static const bool installed = [] {
        TagLib::setDebugListener(&listener);
        TagLib::RIFF::Info::Tag::setStringHandler(&infoStrings);
        return true;
    }();
    Q_UNUSED(installed);
}

namespace {

QString genreName(int number)
{
    return toQString(TagLib::ID3v1::genre(number));
}

void appendId3v2(QList<Item> &items, const TagLib::ID3v2::Tag *tag, int want)
{
    if (!tag)
        return;
    for (const TagLib::ID3v2::Frame *frame : tag->frameList()) {
        const TagLib::ByteVector id = frame->frameID();
        Item item;
        item.key = QString::fromLatin1(id.data(), qsizetype(id.size()));
        if (id == "APIC") {
            item.commonKey = CommonKey::artwork;
            const auto *pic = dynamic_cast<const TagLib::ID3v2::AttachedPictureFrame *>(frame);
            if (pic && (want & wantPictures) && !pic->picture().isEmpty())
                item.data = toQByteArray(pic->picture());
            else if (pic && !pic->picture().isEmpty())
                item.data = QByteArray(); // has bytes, not copied
        } else {
            if (id == "TIT2")
                item.commonKey = CommonKey::title;
            else if (id == "TPE1")
                item.commonKey = CommonKey::artist;
            else if (id == "TALB")
                item.commonKey = CommonKey::albumName;
            if (const auto *text = dynamic_cast<const TagLib::ID3v2::TextIdentificationFrame *>(frame)) {
                // Several values (ID3v2.4) are joined the way ID3v2.3 writes them.
                QStringList values;
                for (const TagLib::String &field : text->fieldList())
                    values.append(toQString(field));
                const QString s = id == "TCON" ? genreText(values, genreName) : values.join(u'/');
                if (!s.isEmpty())
                    item.text = s;
            }
        }
        items.append(std::move(item));
    }
}

void appendInfo(QList<Item> &items, const TagLib::RIFF::Info::Tag *tag)
{
    if (!tag)
        return;
    const auto fields = tag->fieldListMap();
    for (auto it = fields.begin(); it != fields.end(); ++it) {
        Item item;
        item.key = QString::fromLatin1(it->first.data(), qsizetype(it->first.size()));
        if (it->first == "INAM")
            item.commonKey = CommonKey::title;
        else if (it->first == "IART")
            item.commonKey = CommonKey::artist;
        else if (it->first == "IPRD")
            item.commonKey = CommonKey::albumName;
        else if (it->first == "IGNR")
            item.key = QStringLiteral("genre"); // the genre rule knows "GENRE", not RIFF's "IGNR"
        if (!it->second.isEmpty())
            item.text = toQString(it->second);
        items.append(std::move(item));
    }
}

// Which of the two WAV tags comes first in the file decides the item order.
class WavFile : public TagLib::RIFF::WAV::File
{
public:
    using TagLib::RIFF::WAV::File::File;

    bool id3BeforeInfo() const
    {
        for (unsigned int i = 0; i < chunkCount(); ++i) {
            const TagLib::ByteVector name = chunkName(i);
            if (name == "ID3 " || name == "id3 ")
                return true;
            if (name == "LIST")
                return false;
        }
        return false;
    }
};

std::optional<double> seconds(const TagLib::AudioProperties *p)
{
    if (!p || p->lengthInMilliseconds() <= 0)
        return std::nullopt;
    return p->lengthInMilliseconds() / 1000.0;
}

Contents readWav(const QString &path, int want)
{
    Contents c;
    TagLibStream stream(path);
    WavFile file(&stream, want & wantDuration, TagLib::AudioProperties::Fast);
    if (!file.isValid())
        return c;
    if (want & (wantTags | wantPictures)) {
        const auto *id3 = file.hasID3v2Tag() ? file.ID3v2Tag() : nullptr;
        const auto *info = file.hasInfoTag() ? file.InfoTag() : nullptr;
        if (file.id3BeforeInfo()) {
            appendId3v2(c.items, id3, want);
            appendInfo(c.items, info);
        } else {
            appendInfo(c.items, info);
            appendId3v2(c.items, id3, want);
        }
    }
    if (want & wantDuration)
        c.duration = seconds(file.audioProperties());
    return c;
}

Contents readAiff(const QString &path, int want)
{
    Contents c;
    TagLibStream stream(path);
    TagLib::RIFF::AIFF::File file(&stream, want & wantDuration, TagLib::AudioProperties::Fast);
    if (!file.isValid())
        return c;
    if ((want & (wantTags | wantPictures)) && file.hasID3v2Tag())
        appendId3v2(c.items, file.tag(), want);
    if (want & wantDuration)
        c.duration = seconds(file.audioProperties());
    return c;
}

Contents readMp4(const QString &path, int want)
{
    Contents c;
    TagLibStream stream(path);
    TagLib::MP4::File file(&stream, want & wantDuration, TagLib::AudioProperties::Fast);
    if (!file.isValid())
        return c;
    if ((want & (wantTags | wantPictures)) && file.hasMP4Tag()) {
        // TagLib keeps the atoms in a map sorted by name, not in file order. No
        // name occurs twice in it, so the one-item-per-name rules (last title,
        // first genre) come out the same as in file order.
        const auto &map = file.tag()->itemMap();
        for (auto it = map.begin(); it != map.end(); ++it) {
            const QString key = toQString(it->first);
            if (it->first == "covr") {
                for (const TagLib::MP4::CoverArt &art : it->second.toCoverArtList()) {
                    Item item { CommonKey::artwork, key, std::nullopt, std::nullopt };
                    if (!art.data().isEmpty())
                        item.data = (want & wantPictures) ? toQByteArray(art.data()) : QByteArray();
                    c.items.append(std::move(item));
                }
                continue;
            }
            Item item;
            item.key = key;
            if (it->first == "\xA9nam")
                item.commonKey = CommonKey::title;
            else if (it->first
                == "\xA9"
                   "ART")
                item.commonKey = CommonKey::artist;
            else if (it->first
                == "\xA9"
                   "alb")
                item.commonKey = CommonKey::albumName;
            const TagLib::StringList texts = it->second.toStringList();
            if (!texts.isEmpty()) {
                const QString s = toQString(texts.toString(" / "));
                if (!s.isEmpty())
                    item.text = s;
            }
            c.items.append(std::move(item));
        }
    }
    if (want & wantDuration)
        c.duration = seconds(file.audioProperties());
    return c;
}

} // namespace

Contents read(const QString &path, const QString &lowerSuffix, int want)
{
    ensureTagLibSetUp();
    if (lowerSuffix == u"mp3")
        return mpeg::readFile(path, want);
    if (lowerSuffix == u"wav")
        return readWav(path, want);
    if (lowerSuffix == u"aiff" || lowerSuffix == u"aif")
        return readAiff(path, want);
    if (lowerSuffix == u"m4a")
        return readMp4(path, want);
    if (lowerSuffix == u"caf") {
        const caf::Info info = caf::readFile(path);
        return { info.items, (want & wantDuration) ? info.duration : std::nullopt };
    }
    return {};
}

QString genreText(const QStringList &values, QString (*nameOf)(int number))
{
    QStringList names;
    const auto add = [&names](const QString &name) {
        if (!name.isEmpty() && !names.contains(name))
            names.append(name);
    };
    const auto numbered = [nameOf](const QString &text) {
        bool numeric = false;
        const int n = text.toInt(&numeric);
        const QString name = numeric && n >= 0 && n < 256 ? nameOf(n) : QString();
        return name.isEmpty() ? text : name;
    };
    // ID3v2.3 has one genre text, where "/" is what separates ID3v2.4's values.
    QStringList parts;
    for (const QString &value : values)
        parts += value.split(u'/');
    for (QString value : parts) {
        // ID3v2.3 references: "(17)", "(RX)", "(CR)", any number of them, then
        // an optional refinement; "((" starts text that begins with "(".
        while (value.startsWith(u'(') && !value.startsWith(QStringLiteral("(("))) {
            const qsizetype close = value.indexOf(u')');
            if (close < 0)
                break;
            const QString ref = value.mid(1, close - 1);
            add(ref == u"RX"       ? QStringLiteral("Remix")
                    : ref == u"CR" ? QStringLiteral("Cover")
                                   : numbered(ref));
            value = value.sliced(close + 1);
        }
        if (value.startsWith(QStringLiteral("((")))
            value = value.sliced(1);
        add(numbered(value.trimmed()));
    }
    return names.join(u'/');
}

TrackMetadata metadataFromItems(const QList<Item> &items)
{
    TrackMetadata m;
    for (const Item &item : items) {
        if (!item.commonKey)
            continue;
        switch (*item.commonKey) {
        case CommonKey::title:
            m.title = item.text;
            break;
        case CommonKey::artist:
            m.artist = item.text;
            break;
        case CommonKey::albumName:
            m.album = item.text;
            break;
        case CommonKey::artwork:
            m.hasPicture = true;
            break;
        }
    }
    static const QString genreKeys[]
        = { QStringLiteral("TCON"), QStringLiteral("GENRE"), QString(QChar(0xA9)) + QStringLiteral("GEN") };
    for (const Item &item : items) {
        if (!item.key || !item.text)
            continue;
        const QString upper = item.key->toUpper();
        if (std::find(std::begin(genreKeys), std::end(genreKeys), upper) != std::end(genreKeys)) {
            m.genre = item.text;
            break;
        }
    }
    return m;
}

std::optional<QByteArray> artworkFromItems(const QList<Item> &items)
{
    for (const Item &item : items) {
        if (item.commonKey == CommonKey::artwork && item.data && !item.data->isEmpty())
            return item.data;
    }
    return std::nullopt;
}

} // namespace container
