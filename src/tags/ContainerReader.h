// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/TrackMetadata.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

// The metadata of the containers other than FLAC (mp3, aiff, aif, wav, m4a and
// caf) as one list of items in container order. TagLib opens all of them but
// caf, whose own "info" chunk is read by CafReader. The rules that turn the
// list into tags live here too, so every container follows them alike.
namespace container {

enum class CommonKey { title, artist, albumName, artwork };

struct Item
{
    std::optional<CommonKey> commonKey;
    // The format's own key: ID3v2 frame id, MP4 atom name, RIFF INFO id or CAF key.
    std::optional<QString> key;
    std::optional<QString> text;
    // Picture bytes of an artwork item.
    std::optional<QByteArray> data;
};

enum Want {
    wantTags = 0x1,
    wantPictures = 0x2, // artwork items carry their bytes
    wantDuration = 0x4,
};

struct Contents
{
    QList<Item> items;
    std::optional<double> duration;
};

// Never fails: a file that can't be opened or parsed yields no items.
// lowerSuffix is the file's extension, lower-cased.
Contents read(const QString &path, const QString &lowerSuffix, int want);

// TagLib's process-wide settings: its messages go to our log, RIFF INFO text is
// UTF-8 when valid, else Latin-1. read() does this itself; writers call it first.
void ensureTagLibSetUp();

// Title, artist and album from the last item of each common key (even one
// without text); genre from the first "TCON", "GENRE" or "\u00A9gen" item (any
// case) that has text.
TrackMetadata metadataFromItems(const QList<Item> &items);

// A genre frame's values as one text: ID3v1 genre numbers, alone ("17") or as
// references ("(17)", "(17)Rock"), become their names; "(RX)" and "(CR)" are
// Remix and Cover; repeated names are dropped; the rest is joined with "/".
QString genreText(const QStringList &values, QString (*nameOf)(int number));

// The bytes of the first artwork item that has any.
std::optional<QByteArray> artworkFromItems(const QList<Item> &items);

} // namespace container
