// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ContainerReader.h"

#include <QByteArrayView>

// The tags of MPEG audio, read by our own ID3v2 parser (which carries on past
// the empty frames some taggers leave, where TagLib stops) with the trailing
// ID3v1 tag as the fallback that other readers use too. The duration still
// comes from TagLib's audio properties.
namespace mpeg {

// The frames of the leading ID3v2 tag as items, in tag order, then items for
// the ID3v1 values of fields the ID3v2 tag leaves without text. `head` holds
// the leading tag whole (or the whole file); `tail` the bytes after it up to
// the end of the file, of which only the last 128 are looked at.
QList<container::Item> tagItems(QByteArrayView head, QByteArrayView tail, bool withPictures);

container::Contents readFile(const QString &path, int want);

} // namespace mpeg
