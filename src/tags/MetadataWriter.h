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
};

QString describe(WriteError error);

struct Result
{
    std::optional<QByteArray> data; // the new file; absent on error
    WriteError error = WriteError::writeFailed;

    explicit operator bool() const { return data.has_value(); }
    static Result failure(WriteError e) { return { std::nullopt, e }; }
};

// FLAC: every metadata block but the VORBIS_COMMENT blocks is kept with its body
// unchanged and in order; one new comment block (vendor "Tarnwell") ends the
// metadata with TITLE, ARTIST and ALBUM first, then every other old comment.
// Bytes after a damaged block are carried along as audio.
Result writeFLACTags(QByteArrayView data, const TagEdit &edit);
Result writeFLACTags(QByteArrayView data, const std::optional<QString> &title,
    const std::optional<QString> &artist, const std::optional<QString> &album);

// The body of a new VORBIS_COMMENT block holding the given comments.
QByteArray buildVorbisComment(const QList<QByteArray> &comments);
QByteArray buildVorbisComment(const std::optional<QString> &title, const std::optional<QString> &artist,
    const std::optional<QString> &album);

// MPEG audio: the leading ID3v2 tag (if any) is replaced by an ID3v2.3 tag with
// TIT2, TPE1 and TALB first, then the old tag's other frames in ID3v2.3 form.
// When no field ends up with a value the input comes back unchanged.
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
