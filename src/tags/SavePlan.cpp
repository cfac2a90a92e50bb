// SPDX-License-Identifier: GPL-3.0-or-later
#include "SavePlan.h"

#include "ContainerWriter.h"
#include "FlacMetadata.h"
#include "Id3Tag.h"
#include "Id3v1Tag.h"
#include "MetadataWriter.h"
#include "MpegTags.h"
#include "model/LocalPath.h"

#include <taglib/id3v1tag.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/tbytevectorstream.h>
#include <taglib/textidentificationframe.h>

using audioformat::Kind;

QString SaveResult::reason() const
{
    switch (error) {
    case SaveError::none:
        break;
    case SaveError::missing:
        return QStringLiteral("there is no such file");
    case SaveError::folder:
        return QStringLiteral("it is a folder, not a file");
    case SaveError::notRegularFile:
        return QStringLiteral("it is not a regular file");
    case SaveError::readOnly:
        return QStringLiteral("the file is read-only");
    case SaveError::hardLinked:
        return QStringLiteral("the file has several hard links, which a save would split apart");
    case SaveError::unreadable:
        return QStringLiteral("the file cannot be read");
    case SaveError::unsupportedFormat:
        return QStringLiteral("tags can't be written into this kind of file");
    case SaveError::wrongContent:
        return QStringLiteral("its contents are not what its name says");
    case SaveError::noAudio:
        return QStringLiteral("the file holds no audio");
    case SaveError::damagedMetadata:
        return QStringLiteral("the file's metadata is damaged");
    case SaveError::changedWhileSaving:
        return QStringLiteral("the file changed while saving; nothing was written");
    case SaveError::tooLarge:
        return QStringLiteral("the new tags would be too large");
    case SaveError::writeFailed:
        return QStringLiteral("the new file could not be written");
    case SaveError::notVerified:
        return QStringLiteral("the new tags did not read back as written");
    }
    return {};
}

QString SaveResult::message(const QString &path) const
{
    const QString shown = localpath::readable(path);
    return detail.isEmpty() ? QStringLiteral("%1: %2").arg(shown, reason())
                            : QStringLiteral("%1: %2 (%3)").arg(shown, reason(), detail);
}

namespace {

// A kept field must read as before, unless it read as nothing before (a
// comment hidden in a second comment block may surface).
bool fieldsAsEdited(const TagEdit &edit, const TrackMetadata &before, const TrackMetadata &after)
{
    const auto check
        = [](const FieldEdit &f, const std::optional<QString> &old, const std::optional<QString> &now) {
              return (f.action == FieldEdit::Action::keep && !old) || now == f.applied(old);
          };
    return check(edit.title, before.title, after.title) && check(edit.artist, before.artist, after.artist)
        && check(edit.album, before.album, after.album) && (!before.genre || after.genre == before.genre);
}

QString verifyFlac(QByteArrayView before, QByteArrayView after, const TagEdit &edit)
{
    const flac::Layout oldLayout = flac::parseLayout(before);
    const flac::Layout newLayout = flac::parseLayout(after);
    if (!newLayout.damage.isEmpty() || newLayout.blocks.isEmpty()
        || newLayout.blocks.last().type != flac::vorbisCommentType)
        return QStringLiteral("the new metadata blocks are damaged");
    QList<flac::Block> kept = oldLayout.blocks;
    kept.removeIf([](const flac::Block &b) { return b.type == flac::vorbisCommentType; });
    if (newLayout.blocks.first(newLayout.blocks.size() - 1) != kept)
        return QStringLiteral("the other metadata blocks would have changed");
    if (after.sliced(newLayout.audioStart) != before.sliced(oldLayout.audioStart))
        return QStringLiteral("the audio would have changed");
    if (!fieldsAsEdited(edit, parseFLACMetadata(before), parseFLACMetadata(after)))
        return QStringLiteral("the tags did not read back as written");
    return {};
}

// The audio between the leading ID3v2 tag and a trailing ID3v1 tag.
QByteArrayView mpegAudio(QByteArrayView file)
{
    const QByteArrayView rest = MetadataWriter::stripID3v2(file);
    return id3v1::parse(rest) ? rest.chopped(id3v1::tagSize) : rest;
}

TrackMetadata ourMpegReading(QByteArrayView file)
{
    return container::metadataFromItems(mpeg::tagItems(file, MetadataWriter::stripID3v2(file), false));
}

// The tags as TagLib (not our own parser) reads them from memory: ID3v2
// frames, ID3v1 where they have no text.
struct TagLibReading
{
    TrackMetadata metadata; // genre left out: genre lists read differently once in ID3v2.3
    int pictures = 0;
};

TagLibReading readWithTagLib(QByteArrayView data)
{
    TagLibReading r;
    TagLib::ByteVectorStream stream(TagLib::ByteVector(data.data(), uint(data.size())));
    TagLib::MPEG::File file(&stream, TagLib::ID3v2::FrameFactory::instance(), false);
    if (!file.isValid())
        return r;
    const auto string = [](const TagLib::String &s) -> std::optional<QString> {
        const std::string utf8 = s.to8Bit(true);
        return utf8.empty() ? std::nullopt : std::optional<QString>(QString::fromStdString(utf8));
    };
    const auto text
        = [&](const char *id, TagLib::String (TagLib::Tag::*v1)() const) -> std::optional<QString> {
        std::optional<QString> value;
        if (file.hasID3v2Tag()) {
            const auto &list = file.ID3v2Tag()->frameListMap()[id];
            if (!list.isEmpty()) {
                const auto *frame = dynamic_cast<const TagLib::ID3v2::TextIdentificationFrame *>(list.back());
                value = string(frame ? frame->fieldList().toString("/") : list.back()->toString());
            }
        }
        if (!value && file.hasID3v1Tag())
            value = string((file.ID3v1Tag()->*v1)());
        return value;
    };
    r.metadata = { text("TIT2", &TagLib::Tag::title), text("TPE1", &TagLib::Tag::artist),
        text("TALB", &TagLib::Tag::album), std::nullopt };
    if (file.hasID3v2Tag())
        r.pictures = int(file.ID3v2Tag()->frameListMap()["APIC"].size());
    return r;
}

int ourPictureCount(QByteArrayView file)
{
    const id3::ParseResult parsed = id3::parseLeadingTag(file);
    if (!parsed.tag)
        return 0;
    return int(std::count_if(parsed.tag->frames.begin(), parsed.tag->frames.end(),
        [](const id3::Frame &f) { return f.id == "APIC"; }));
}

QString verifyId3(QByteArrayView before, QByteArrayView after, const TagEdit &edit)
{
    if (mpegAudio(after) != mpegAudio(before))
        return QStringLiteral("the audio would have changed");
    if (!fieldsAsEdited(edit, ourMpegReading(before), ourMpegReading(after)))
        return QStringLiteral("the tags did not read back as written");
    // A second opinion: TagLib must see the same change, and every picture.
    const TagLibReading theirs = readWithTagLib(after);
    if (!fieldsAsEdited(edit, readWithTagLib(before).metadata, theirs.metadata))
        return QStringLiteral("another reader would not see the tags as written");
    if (theirs.pictures != ourPictureCount(before))
        return QStringLiteral("the pictures would not have been carried over");
    return {};
}

SavePlan refuse(SaveError error, const QString &detail = {})
{
    return { SavePlan::Action::refuse, { error, detail }, {} };
}

SavePlan refuse(const MetadataWriter::Result &result)
{
    switch (result.error) {
    case MetadataWriter::WriteError::unsupportedFormat:
        return refuse(SaveError::unsupportedFormat, result.detail);
    case MetadataWriter::WriteError::tooLarge:
        return refuse(SaveError::tooLarge, result.detail);
    case MetadataWriter::WriteError::damagedMetadata:
        return refuse(SaveError::damagedMetadata, result.detail);
    case MetadataWriter::WriteError::readFailed:
    case MetadataWriter::WriteError::writeFailed:
        break;
    }
    return refuse(SaveError::writeFailed, result.detail);
}

// Checks the writer's output; unchanged output needs no writing.
SavePlan written(QByteArrayView file, const MetadataWriter::Result &result, const TagEdit &edit,
    QString (*verify)(QByteArrayView, QByteArrayView, const TagEdit &))
{
    if (!result)
        return refuse(result);
    if (*result.data == file)
        return { SavePlan::Action::nothing, {}, {} };
    if (const QString failure = verify(file, *result.data, edit); !failure.isEmpty())
        return refuse(SaveError::notVerified, failure);
    return { SavePlan::Action::write, {}, *result.data };
}

SavePlan planFlac(QByteArrayView file, const TagEdit &edit)
{
    if (!file.startsWith("fLaC"))
        return refuse(SaveError::unsupportedFormat, QStringLiteral("FLAC behind an ID3v2 tag"));
    const flac::Layout layout = flac::parseLayout(file);
    if (!layout.damage.isEmpty())
        return refuse(SaveError::damagedMetadata, layout.damage);
    if (!audioformat::startsWithFlacFrame(file.sliced(layout.audioStart)))
        return refuse(SaveError::noAudio, QStringLiteral("no FLAC frame follows the metadata"));
    return written(file, MetadataWriter::writeFLACTags(file, edit), edit, verifyFlac);
}

SavePlan planMpeg(QByteArrayView file, const TagEdit &edit)
{
    if (!audioformat::hasMpegAudio(mpegAudio(file)))
        return refuse(SaveError::noAudio, QStringLiteral("no MPEG audio frame follows the tags"));
    return written(file, MetadataWriter::writeID3Tags(file, edit), edit, verifyId3);
}

} // namespace

SavePlan planSave(QByteArrayView file, const QString &lowerSuffix, const TagEdit &edit)
{
    const Kind named = audioformat::fromSuffix(lowerSuffix);
    if (named == Kind::unknown || named == Kind::caf)
        return refuse(SaveError::unsupportedFormat,
            lowerSuffix.isEmpty() ? QStringLiteral("a file without an extension")
                                  : QStringLiteral(".%1 files").arg(lowerSuffix));
    const Kind found = audioformat::detect(file);
    if (found == Kind::none)
        return refuse(SaveError::noAudio, QStringLiteral("the file is empty"));
    if (found != named)
        return refuse(SaveError::wrongContent,
            found == Kind::unknown
                ? QStringLiteral("not %1 audio").arg(audioformat::name(named))
                : QStringLiteral("%1 audio in a .%2 file").arg(audioformat::name(found), lowerSuffix));
    if (edit.keepsEverything())
        return { SavePlan::Action::nothing, {}, {} };
    switch (named) {
    case Kind::flac:
        return planFlac(file, edit);
    case Kind::mpeg:
        return planMpeg(file, edit);
    case Kind::wave:
    case Kind::aiff:
    case Kind::mp4:
        if (!container::audioPayload(named, file))
            return refuse(SaveError::noAudio, QStringLiteral("no audio chunk"));
        return { SavePlan::Action::container, {}, {} };
    default:
        break;
    }
    return refuse(SaveError::unsupportedFormat);
}
