// SPDX-License-Identifier: GPL-3.0-or-later
#include "VorbisComment.h"

#include "ByteCursor.h"

namespace vorbis {

bool isValidUtf8(QByteArrayView bytes)
{
    const auto *p = reinterpret_cast<const unsigned char *>(bytes.data());
    const auto *end = p + bytes.size();
    while (p < end) {
        const unsigned char c = *p;
        if (c < 0x80) {
            ++p;
            continue;
        }
        int extra;
        char32_t cp;
        if (c >= 0xC2 && c <= 0xDF) {
            extra = 1;
            cp = c & 0x1F;
        } else if (c >= 0xE0 && c <= 0xEF) {
            extra = 2;
            cp = c & 0x0F;
        } else if (c >= 0xF0 && c <= 0xF4) {
            extra = 3;
            cp = c & 0x07;
        } else {
            return false;
        }
        if (end - p <= extra)
            return false;
        for (int i = 1; i <= extra; ++i) {
            if ((p[i] & 0xC0) != 0x80)
                return false;
            cp = (cp << 6) | (p[i] & 0x3F);
        }
        if ((extra == 2 && cp < 0x800) || (extra == 3 && cp < 0x10000) || cp > 0x10FFFF
            || (cp >= 0xD800 && cp <= 0xDFFF))
            return false;
        p += extra + 1;
    }
    return true;
}

namespace {

struct Split
{
    QByteArrayView key;
    QByteArrayView value;
    bool hasSeparator = false;
};

// "=" signs at the start are passed over; the key runs to the next "=" and the
// value is everything after it, further "=" signs included.
Split splitBytes(QByteArrayView comment)
{
    qsizetype start = 0;
    while (start < comment.size() && comment[start] == '=')
        ++start;
    const qsizetype eq = comment.indexOf('=', start);
    if (eq < 0)
        return { comment.sliced(start), {}, false };
    return { comment.sliced(start, eq - start), comment.sliced(eq + 1), true };
}

bool isAscii(QByteArrayView bytes)
{
    for (char c : bytes) {
        if (c & 0x80)
            return false;
    }
    return true;
}

QString upperOf(QByteArrayView key)
{
    if (isAscii(key)) {
        QString s(key.size(), Qt::Uninitialized);
        QChar *out = s.data();
        for (qsizetype i = 0; i < key.size(); ++i) {
            const char c = key[i];
            out[i] = QLatin1Char(c >= 'a' && c <= 'z' ? char(c - 32) : c);
        }
        return s;
    }
    return QString::fromUtf8(key).toUpper();
}

} // namespace

QString upperKey(QByteArrayView comment)
{
    const Split s = splitBytes(comment);
    if (!s.hasSeparator || s.key.isEmpty())
        return {};
    return upperOf(s.key);
}

CommentList comments(QByteArrayView body)
{
    CommentList list;
    ByteCursor c(body);
    const auto vendorLength = c.u32le();
    if (!vendorLength || !c.skip(*vendorLength))
        return list;
    const auto count = c.u32le();
    if (!count)
        return list;
    // Each comment takes at least its 4-byte length, so the loop ends with the body.
    for (quint32 i = 0; i < *count; ++i) {
        const auto length = c.u32le();
        const auto comment = length ? c.take(*length) : std::nullopt;
        if (!comment)
            return list;
        list.comments.append(*comment);
    }
    list.whole = c.atEnd();
    return list;
}

std::optional<Comment> splitComment(QByteArrayView comment)
{
    const Split s = splitBytes(comment);
    if (!s.hasSeparator || s.key.isEmpty() || s.value.isEmpty() || !isValidUtf8(comment))
        return std::nullopt;
    return Comment { upperOf(s.key), QString::fromUtf8(s.value) };
}

} // namespace vorbis

TrackMetadata parseVorbisComment(QByteArrayView body)
{
    TrackMetadata m;
    for (QByteArrayView comment : vorbis::comments(body).comments) {
        // Most comments carry keys nobody asked for: look at the key before
        // validating and decoding the whole comment.
        const QString key = vorbis::upperKey(comment);
        std::optional<QString> *field = key == u"TITLE" ? &m.title
            : key == u"ARTIST"                          ? &m.artist
            : key == u"ALBUM"                           ? &m.album
            : key == u"GENRE"                           ? &m.genre
                                                        : nullptr;
        if (!field)
            continue;
        if (auto parsed = vorbis::splitComment(comment))
            *field = std::move(parsed->value);
    }
    return m;
}
