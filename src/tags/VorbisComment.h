// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/TrackMetadata.h"

#include <QByteArrayView>
#include <QList>
#include <QString>

#include <optional>

// Vorbis comments ("KEY=value" in UTF-8), as FLAC stores them in its
// VORBIS_COMMENT block. The reader and the FLAC writer share these rules so that
// the writer replaces exactly the comments the reader would take a field from.

// The body of one VORBIS_COMMENT block: title, artist, album and genre, the last
// comment of a key winning. A truncated list keeps what came before the damage.
TrackMetadata parseVorbisComment(QByteArrayView body);

namespace vorbis {

// The raw comments of a VORBIS_COMMENT body, up to any damage; `whole` when
// the vendor string, the count and every comment fill the body exactly.
struct CommentList
{
    QList<QByteArrayView> comments;
    bool whole = false;
};
CommentList comments(QByteArrayView body);

// True when the bytes are well-formed UTF-8 (no overlong forms, no surrogates,
// nothing above U+10FFFF).
bool isValidUtf8(QByteArrayView bytes);

// The key of one comment as the reader compares it: leading "=" signs passed
// over, the text up to the next "=", fully upper-cased. Empty when the comment
// has no "=" after a non-empty key. Doesn't look at the value.
QString upperKey(QByteArrayView comment);

struct Comment
{
    QString upperKey;
    QString value;
};

// One comment split the way the reader takes it apart; nothing when the reader
// skips it (not UTF-8, no key, no "=", empty value).
std::optional<Comment> splitComment(QByteArrayView comment);

} // namespace vorbis
