// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The online lookup chains. Each is a coroutine on the GUI thread that suspends
// at every request and sleep; any failure ends its step with nothing and the
// chain takes its fallback. The caller (ArtworkLoader) books the throttle slot
// once per album or artist lookup before calling onlineAlbumArt or
// onlineArtistImage, and learns from the Lookup afterwards whether a miss was
// the services' answer or a request that got none.
//
//   onlineAlbumArt:    musicBrainzReleaseID ─ 1.1 s pause ─ coverArtFront
//                        └─ nothing: commonsAlbumImage (search, limit 3)
//   onlineArtistImage: wikipediaArtistImage (pageimages, then the thumbnail)
//                        └─ nothing: commonsArtistImage (search, limit 5)
//   commons*Image:     commonsFileTitle ─ commonsFileURL ─ download

#include "ArtworkSession.h"

#include <QImage>
#include <QString>
#include <QUrl>

#include <memory>
#include <optional>

namespace online {

using Session = std::shared_ptr<ArtworkSession>;
using OptionalText = std::optional<QString>;

// What one lookup carries through its chain.
struct Lookup
{
    Session session;
    CancelToken cancel;
    // Set when a request of the chain got no usable answer (no connection,
    // time-out, cap, cancellation, a server error or rate limit): its miss
    // says nothing about the services' catalogue and is worth asking again.
    std::shared_ptr<bool> unanswered = std::make_shared<bool>(false);

    bool wasAnswered() const { return !*unanswered; }
};

// Percent-encodes text as one query value: letters, digits and - . _ ~ ! $ ' ( )
// * , ; : @ / ? stay; everything else, & + = space and quotation mark among them,
// and every byte of a non-ASCII letter's UTF-8 form, becomes %XX (upper case).
QByteArray encodeQueryValue(const QString &text);
// The same for one path segment: only letters, digits and - . _ ~ stay, so a
// value can't add segments, a query or a fragment.
QByteArray encodePathSegment(const QString &text);

// The request addresses: base address + fixed path + encoded values.
namespace address {
QUrl musicBrainzSearch(const ArtworkServices &s, const QString &query);
QUrl coverArtFront(const ArtworkServices &s, const QString &releaseID);
QUrl wikipediaPageImages(const ArtworkServices &s, const QString &title);
QUrl commonsSearch(const ArtworkServices &s, const QString &text, int limit);
QUrl commonsImageInfo(const ArtworkServices &s, const QString &title);
} // namespace address

// artist:"A" AND release:"B" (the clauses present); absent when neither is.
OptionalText musicBrainzQuery(const OptionalText &artist, const OptionalText &album);
// The present of artist and album, then "album cover", joined by single spaces.
QString commonsAlbumSearchText(const OptionalText &artist, const OptionalText &album);

QCoro::Task<OptionalText> musicBrainzReleaseID(Lookup lookup, OptionalText artist, OptionalText album);
QCoro::Task<std::optional<QImage>> coverArtFront(Lookup lookup, QString releaseID);
QCoro::Task<std::optional<QImage>> wikipediaArtistImage(Lookup lookup, QString name);
QCoro::Task<OptionalText> commonsFileTitle(Lookup lookup, QString text, int limit);
QCoro::Task<std::optional<QUrl>> commonsFileURL(Lookup lookup, QString title);
QCoro::Task<std::optional<QImage>> commonsArtistImage(Lookup lookup, QString name);
QCoro::Task<std::optional<QImage>> commonsAlbumImage(Lookup lookup, OptionalText artist, OptionalText album);

// The pause between the MusicBrainz search and the Cover Art Archive request.
inline constexpr std::chrono::milliseconds coverArtPause{1100};

QCoro::Task<std::optional<QImage>> onlineAlbumArt(Lookup lookup, OptionalText artist, OptionalText album);
QCoro::Task<std::optional<QImage>> onlineArtistImage(Lookup lookup, QString name);

} // namespace online
