// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include <optional>

// The frames of an ID3v2 tag in front of MPEG audio, turned into ID3v2.3 form so
// that a rewritten tag can carry them over: tag-level unsynchronisation undone,
// extended headers dropped, ID3v2.2 frames renamed (PIC becomes APIC), ID3v2.4
// frame sizes, flags and the frames that ID3v2.3 doesn't know mapped.
namespace id3 {

struct Frame
{
    QByteArray id; // four characters
    quint16 flags = 0; // ID3v2.3 status and format flags
    QByteArray body; // ID3v2.3 body, extra header bytes (decompressed size, ...) included
};

struct Tag
{
    int majorVersion = 0;
    QList<Frame> frames; // in tag order, up to padding or the first damaged frame
    QStringList dropped; // frames that have no ID3v2.3 form or no body, for the log
    // Why the frames stop before the padding (a frame running past the tag,
    // bytes that are neither frames nor padding); empty for a whole tag.
    QString damage;
};

// The size of the leading tag as the writer strips it: 10 + the synchsafe size,
// or 0 when the data doesn't start with a complete "ID3" tag.
qsizetype leadingTagSize(QByteArrayView data);

enum class ParseError { noTag, unsupportedVersion, compressedTag };

// The leading tag's frames; an error when there is no tag or one whose frames
// can't be read (unknown major version, a compressed ID3v2.2 tag).
struct ParseResult
{
    std::optional<Tag> tag;
    ParseError error = ParseError::noTag;
};
ParseResult parseLeadingTag(QByteArrayView data);

// What stops a tag from being carried over, for messages: "unsupported ID3v2
// version 2.7", "a compressed ID3v2.2 tag".
QString describe(ParseError error, QByteArrayView data);

// The picture bytes of an APIC body (encoding, MIME type, picture type,
// description, data); nothing when the body is damaged or holds no bytes.
std::optional<QByteArray> pictureData(QByteArrayView apicBody);

// One frame in ID3v2.3 layout: id, plain 32-bit size, flags, body.
QByteArray serialize(const Frame &frame);

// The text of a text frame body (encoding byte first); values separated by NUL
// are joined with "/".
std::optional<QString> decodeText(QByteArrayView body);
// The same values one by one.
QStringList decodeTextValues(QByteArrayView body);

} // namespace id3
