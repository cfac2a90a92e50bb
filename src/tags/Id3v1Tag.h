// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

// The 128-byte ID3v1 tag at the end of MPEG audio: "TAG", title, artist and
// album of 30 bytes each, a 4-byte year, a 30-byte comment (ID3v1.1: 28 bytes,
// a zero and a track number), a genre number. Text is Latin-1, padded with
// zeros or spaces.
namespace id3v1 {

inline constexpr qsizetype tagSize = 128;
inline constexpr quint8 noGenre = 255;
// The highest genre number that readers agree on a name for.
inline constexpr quint8 lastKnownGenre = 191;

struct Tag
{
    QString title;
    QString artist;
    QString album;
    QString year;
    QString comment;
    quint8 track = 0; // 0: none
    quint8 genre = noGenre;
};

// The tag that ends the bytes, if their last 128 bytes start with "TAG".
std::optional<Tag> parse(QByteArrayView bytes);

// The 128 bytes of a tag. Text that doesn't fit is cut; see fits().
QByteArray serialize(const Tag &tag);

// True when the text survives a round trip through a 30-byte Latin-1 field.
bool fits(const QString &text);

} // namespace id3v1
