// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The online lookup chains. Each is a coroutine on the GUI thread that suspends
// at every request and sleep; any failure ends its step with nothing and the
// chain takes its fallback. The caller (ArtworkLoader) books the throttle slot
// once per album or artist lookup before calling onlineAlbumArt or
// onlineArtistImage.
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

// Percent-encodes text as one query value: letters, digits and - . _ ~ ! $ ' ( )
// * , ; : @ / ? stay; everything else, & + = space and quotation mark among them,
// and every byte of a non-ASCII letter's UTF-8 form, becomes %XX (upper case).
QByteArray encodeQueryValue(const QString &text);

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

QCoro::Task<OptionalText> musicBrainzReleaseID(Session session, OptionalText artist, OptionalText album,
                                               CancelToken cancel);
QCoro::Task<std::optional<QImage>> coverArtFront(Session session, QString releaseID, CancelToken cancel);
QCoro::Task<std::optional<QImage>> wikipediaArtistImage(Session session, QString name, CancelToken cancel);
QCoro::Task<OptionalText> commonsFileTitle(Session session, QString text, int limit, CancelToken cancel);
QCoro::Task<std::optional<QUrl>> commonsFileURL(Session session, QString title, CancelToken cancel);
QCoro::Task<std::optional<QImage>> commonsArtistImage(Session session, QString name, CancelToken cancel);
QCoro::Task<std::optional<QImage>> commonsAlbumImage(Session session, OptionalText artist, OptionalText album,
                                                     CancelToken cancel);

// The pause between the MusicBrainz search and the Cover Art Archive request.
inline constexpr std::chrono::milliseconds coverArtPause{1100};

QCoro::Task<std::optional<QImage>> onlineAlbumArt(Session session, OptionalText artist, OptionalText album,
                                                  CancelToken cancel);
QCoro::Task<std::optional<QImage>> onlineArtistImage(Session session, QString name, CancelToken cancel);

} // namespace online
