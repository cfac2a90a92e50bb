// SPDX-License-Identifier: GPL-3.0-or-later
#include "Id3v1Tag.h"

namespace id3v1 {

namespace {

constexpr qsizetype textField = 30;

QString field(QByteArrayView bytes)
{
    const qsizetype nul = bytes.indexOf('\0');
    return QString::fromLatin1(nul >= 0 ? bytes.first(nul) : bytes).trimmed();
}

QByteArray padded(const QString &text, qsizetype size)
{
    QByteArray b = text.toLatin1().left(size);
    b.append(QByteArray(size - b.size(), '\0'));
    return b;
}

} // namespace

std::optional<Tag> parse(QByteArrayView bytes)
{
    if (bytes.size() < tagSize)
        return std::nullopt;
    const QByteArrayView t = bytes.last(tagSize);
    if (!t.startsWith("TAG"))
        return std::nullopt;
    Tag tag;
    tag.title = field(t.sliced(3, textField));
    tag.artist = field(t.sliced(33, textField));
    tag.album = field(t.sliced(63, textField));
    tag.year = field(t.sliced(93, 4));
    const bool hasTrack = t[125] == 0 && t[126] != 0;
    tag.comment = field(t.sliced(97, hasTrack ? 28 : textField));
    tag.track = hasTrack ? quint8(t[126]) : 0;
    tag.genre = quint8(t[127]);
    return tag;
}

QByteArray serialize(const Tag &tag)
{
    QByteArray out("TAG");
    out.reserve(tagSize);
    out.append(padded(tag.title, textField)).append(padded(tag.artist, textField));
    out.append(padded(tag.album, textField)).append(padded(tag.year, 4));
    if (tag.track != 0)
        out.append(padded(tag.comment, 28)).append('\0').append(char(tag.track));
    else
        out.append(padded(tag.comment, textField));
    out.append(char(tag.genre));
    return out;
}

bool fits(const QString &text)
{
    const QByteArray latin1 = text.toLatin1();
    return latin1.size() <= textField && QString::fromLatin1(latin1) == text && !latin1.contains('\0')
        && text.trimmed() == text;
}

} // namespace id3v1
