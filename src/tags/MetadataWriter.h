// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "TagEdit.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include <optional>

// The two writers of our own: FLAC (a new VORBIS_COMMENT block, always the last
// metadata block) and MPEG audio (a new ID3v2.3 tag in front of the audio). They
// take a whole file in memory and return the whole new file; they never touch
// the disk. Every comment or frame the edit doesn't concern is carried over.
namespace MetadataWriter {

enum class WriteError {
    readFailed,
    writeFailed,
    unsupportedFormat, // not a FLAC stream, or a tag whose frames can't be carried over
    tooLarge, // a comment block over 16,777,215 bytes or a tag over 28 bits of size
    damagedMetadata, // a metadata block or tag frame that doesn't hold together
};

QString describe(WriteError error);

struct Result
{
    std::optional<QByteArray> data; // the new file; absent on error
    WriteError error = WriteError::writeFailed;
    QString detail; // what exactly is wrong, for messages

    explicit operator bool() const { return data.has_value(); }
    static Result failure(WriteError e, const QString &detail = {}) { return { std::nullopt, e, detail }; }
};

// FLAC: every metadata block but the VORBIS_COMMENT blocks is kept with its body
// unchanged and in order; one new comment block (vendor "Tarnwell") ends the
// metadata with TITLE, ARTIST and ALBUM first, then every other old comment.
// Damaged metadata (see flac::parseLayout) is refused, never carried along.
Result writeFLACTags(QByteArrayView data, const TagEdit &edit);
Result writeFLACTags(QByteArrayView data, const std::optional<QString> &title,
    const std::optional<QString> &artist, const std::optional<QString> &album);

// The body of a new VORBIS_COMMENT block holding the given comments.
QByteArray buildVorbisComment(const QList<QByteArray> &comments);
QByteArray buildVorbisComment(const std::optional<QString> &title, const std::optional<QString> &artist,
    const std::optional<QString> &album);

// MPEG audio: the leading ID3v2 tag (if any) is replaced by an ID3v2.3 tag with
// TIT2, TPE1 and TALB first, then the old tag's other frames in ID3v2.3 form,
// then what only a trailing ID3v1 tag held (a kept field, year, comment, track,
// genre). The ID3v1 tag is brought in line with the new values, or removed when
// one of them doesn't fit it, so no reader sees an old value. Removed fields
// go even when no frame is left; a tag without frames is left out altogether.
// A damaged tag, or one of an unknown version, is refused.
Result writeID3Tags(QByteArrayView data, const TagEdit &edit);
Result writeID3Tags(QByteArrayView data, const std::optional<QString> &title,
    const std::optional<QString> &artist, const std::optional<QString> &album);

// The data after a leading ID3v2 tag ("ID3", then 10 + the synchsafe size of
// bytes 6-9); the data itself when it holds no complete leading tag.
QByteArrayView stripID3v2(QByteArrayView data);

// A text frame in UTF-8: id, 32-bit big-endian body size, flags 0, 0x03, text.
QByteArray id3TextFrame(const char *id, const QString &text);

// "ID3", version 3.0, no flags, then the frames' size as a synchsafe integer.
QByteArray id3Header(quint32 framesSize);

} // namespace MetadataWriter
