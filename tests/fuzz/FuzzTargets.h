// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The bodies of the fuzz targets. libFuzzer runs them under ASan and UBSan;
// the ordinary test suite runs the kept regression inputs through them too.
// Besides not crashing, each checks a property and traps when it fails.

#include "tags/CafReader.h"
#include "tags/FlacMetadata.h"
#include "tags/Id3Tag.h"
#include "tags/MetadataWriter.h"
#include "tags/VorbisComment.h"

#include <QByteArrayView>

#include <cstddef>
#include <cstdint>

namespace fuzz {

inline void require(bool ok)
{
    if (!ok)
        __builtin_trap();
}

inline QByteArrayView view(const uint8_t *data, size_t size)
{
    return QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size));
}

// The head walk over the whole file and the seeking file walk must agree.
inline void flacWalk(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes = view(data, size);
    const TrackMetadata walked = parseFLACMetadata(bytes);
    const flac::FileInfo seeked = flac::parseFile(bytes);
    require(walked.title == seeked.metadata.title && walked.artist == seeked.metadata.artist
        && walked.album == seeked.metadata.album && walked.genre == seeked.metadata.genre);
    (void)flac::pictureData(bytes);
    (void)flac::streamInfoDuration(bytes);
}

inline void vorbisComment(const uint8_t *data, size_t size)
{
    (void)parseVorbisComment(view(data, size));
    (void)vorbis::splitComment(view(data, size));
}

// The first byte chooses what happens to each field, the rest is the file.
inline TagEdit editFrom(uint8_t choice)
{
    const auto field = [](int bits, const char *value) {
        switch (bits & 3) {
        case 0:
            return FieldEdit::keep();
        case 1:
            return FieldEdit::remove();
        default:
            return FieldEdit::set(QString::fromUtf8(value));
        }
    };
    return { field(choice, "Tïtle"), field(choice >> 2, "Ärtist"), field(choice >> 4, "Album=x") };
}

inline void flacWriter(const uint8_t *data, size_t size)
{
    if (size < 1)
        return;
    const TagEdit edit = editFrom(data[0]);
    const QByteArrayView file = view(data + 1, size - 1);
    const MetadataWriter::Result r = MetadataWriter::writeFLACTags(file, edit);
    if (!r)
        return;
    // The new comment block is the only one and ends the metadata: the reader
    // finds it and the fields set come back as written.
    const TrackMetadata back = parseFLACMetadata(*r.data);
    if (edit.title.action == FieldEdit::Action::set)
        require(back.title == edit.title.value);
    if (edit.album.action == FieldEdit::Action::set)
        require(back.album == edit.album.value);
    if (edit.artist.action == FieldEdit::Action::remove)
        require(!back.artist);
    // Writing the output again with the same edit changes nothing more.
    const MetadataWriter::Result again = MetadataWriter::writeFLACTags(*r.data, edit);
    require(again && *again.data == *r.data);
}

inline void id3Writer(const uint8_t *data, size_t size)
{
    if (size < 1)
        return;
    const TagEdit edit = editFrom(data[0]);
    const QByteArrayView file = view(data + 1, size - 1);
    const MetadataWriter::Result r = MetadataWriter::writeID3Tags(file, edit);
    if (!r || *r.data == file)
        return;
    // The audio after the tag is untouched and the new tag reads back.
    require(MetadataWriter::stripID3v2(*r.data) == MetadataWriter::stripID3v2(file));
    const id3::ParseResult parsed = id3::parseLeadingTag(*r.data);
    require(parsed.tag.has_value() && parsed.tag->majorVersion == 3);
    if (edit.title.action == FieldEdit::Action::set) {
        std::optional<QString> title;
        for (const id3::Frame &f : parsed.tag->frames) {
            if (f.id == "TIT2" && !title)
                title = id3::decodeText(f.body);
        }
        require(title == edit.title.value);
    }
}

inline void caf(const uint8_t *data, size_t size)
{
    (void)caf::parse(view(data, size));
}

} // namespace fuzz
