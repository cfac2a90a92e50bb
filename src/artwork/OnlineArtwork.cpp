// SPDX-License-Identifier: GPL-3.0-or-later
#include "OnlineArtwork.h"

#include "Coro.h"
#include "ImageCodec.h"
#include "ServiceResponses.h"
#include "model/Log.h"

#include <QStringList>

namespace online {

namespace {

// A URL from text assembled by us or sent by a server; invalid text is no URL.
std::optional<QUrl> urlFrom(const QString &text)
{
    QUrl url(text, QUrl::StrictMode);
    if (!url.isValid())
        return std::nullopt;
    return url;
}

QUrl strictUrl(const QString &text)
{
    return urlFrom(text).value_or(QUrl());
}

QString encoded(const QString &text)
{
    return QString::fromLatin1(encodeQueryValue(text));
}

QCoro::Task<std::optional<QImage>> decodeOffThread(QByteArray bytes)
{
    auto job = QtConcurrent::run([bytes] { return artwork::decodeImage(bytes); });
    co_return co_await artwork::whenDone(nullptr, job);
}

// A request of the chain; notes on the lookup when no usable answer came.
QCoro::Task<std::optional<ArtworkSession::Response>> fetch(Lookup lookup, QUrl url, ArtworkSession::Kind kind)
{
    std::optional<ArtworkSession::Response> response = co_await lookup.session->get(url, kind, lookup.cancel);
    if (!response || response->status >= 500 || response->status == 429)
        *lookup.unanswered = true;
    co_return response;
}

// Fetches a picture: any answer that arrives is decoded, whatever its status.
QCoro::Task<std::optional<QImage>> download(Lookup lookup, QUrl url)
{
    const auto response = co_await fetch(lookup, url, ArtworkSession::Kind::Picture);
    if (!response)
        co_return std::nullopt;
    co_return co_await decodeOffThread(response->body);
}

} // namespace

QByteArray encodeQueryValue(const QString &text)
{
    // toPercentEncoding keeps letters, digits and - . _ ~ by itself.
    return QUrl::toPercentEncoding(text, QByteArrayLiteral("!$'()*,;:@/?"));
}

QByteArray encodePathSegment(const QString &text)
{
    return QUrl::toPercentEncoding(text);
}

namespace address {

QUrl musicBrainzSearch(const ArtworkServices &s, const QString &query)
{
    return strictUrl(s.musicBrainz + QStringLiteral("/ws/2/release/?query=") + encoded(query)
                     + QStringLiteral("&fmt=json&limit=5"));
}

QUrl coverArtFront(const ArtworkServices &s, const QString &releaseID)
{
    return strictUrl(s.coverArt + QStringLiteral("/release/") + QString::fromLatin1(encodePathSegment(releaseID))
                     + QStringLiteral("/front"));
}

QUrl wikipediaPageImages(const ArtworkServices &s, const QString &title)
{
    return strictUrl(s.wikipedia + QStringLiteral("/w/api.php?action=query&titles=") + encoded(title)
                     + QStringLiteral("&prop=pageimages&pithumbsize=500&piprop=thumbnail&format=json"));
}

QUrl commonsSearch(const ArtworkServices &s, const QString &text, int limit)
{
    return strictUrl(s.commons + QStringLiteral("/w/api.php?action=query&list=search&srsearch=") + encoded(text)
                     + QStringLiteral("&srnamespace=6&format=json&srlimit=") + QString::number(limit));
}

QUrl commonsImageInfo(const ArtworkServices &s, const QString &title)
{
    return strictUrl(s.commons + QStringLiteral("/w/api.php?action=query&titles=") + encoded(title)
                     + QStringLiteral("&prop=imageinfo&iiprop=url&format=json"));
}

} // namespace address

OptionalText musicBrainzQuery(const OptionalText &artist, const OptionalText &album)
{
    QStringList clauses;
    if (artist)
        clauses.append(QStringLiteral("artist:\"") + *artist + u'"');
    if (album)
        clauses.append(QStringLiteral("release:\"") + *album + u'"');
    if (clauses.isEmpty())
        return std::nullopt;
    return clauses.join(QStringLiteral(" AND "));
}

QString commonsAlbumSearchText(const OptionalText &artist, const OptionalText &album)
{
    QStringList words;
    if (artist)
        words.append(*artist);
    if (album)
        words.append(*album);
    words.append(QStringLiteral("album cover"));
    return words.join(u' ');
}

QCoro::Task<OptionalText> musicBrainzReleaseID(Lookup lookup, OptionalText artist, OptionalText album)
{
    const OptionalText query = musicBrainzQuery(artist, album);
    if (!query)
        co_return std::nullopt;
    const QUrl url = address::musicBrainzSearch(lookup.session->services(), *query);
    if (!url.isValid())
        co_return std::nullopt;
    const auto response = co_await fetch(lookup, url, ArtworkSession::Kind::Json);
    if (!response || response->status != 200) {
        if (response)
            qCDebug(lcArtwork) << "MusicBrainz answered" << response->status;
        co_return std::nullopt;
    }
    const std::optional<MBSearch> search = MBSearch::decode(response->body);
    if (!search || search->releases.isEmpty())
        co_return std::nullopt;
    co_return search->releases.first().id;
}

QCoro::Task<std::optional<QImage>> coverArtFront(Lookup lookup, QString releaseID)
{
    const QUrl url = address::coverArtFront(lookup.session->services(), releaseID);
    if (!url.isValid())
        co_return std::nullopt;
    const auto response = co_await fetch(lookup, url, ArtworkSession::Kind::Picture);
    if (!response || response->status != 200)
        co_return std::nullopt;
    co_return co_await decodeOffThread(response->body);
}

QCoro::Task<std::optional<QImage>> wikipediaArtistImage(Lookup lookup, QString name)
{
    const QUrl url = address::wikipediaPageImages(lookup.session->services(), name);
    if (!url.isValid())
        co_return std::nullopt;
    const auto response = co_await fetch(lookup, url, ArtworkSession::Kind::Json);
    if (!response)
        co_return std::nullopt;
    const std::optional<WikiPageImages> pageImages = WikiPageImages::decode(response->body);
    if (!pageImages)
        co_return std::nullopt;
    std::optional<QString> source;
    for (const auto &[id, page] : pageImages->pages) {
        if (page.thumbnail) {
            source = page.thumbnail->source;
            break;
        }
    }
    if (!source)
        co_return std::nullopt;
    const std::optional<QUrl> thumbnail = urlFrom(*source);
    if (!thumbnail)
        co_return std::nullopt;
    co_return co_await download(lookup, *thumbnail);
}

QCoro::Task<OptionalText> commonsFileTitle(Lookup lookup, QString text, int limit)
{
    const QUrl url = address::commonsSearch(lookup.session->services(), text, limit);
    if (!url.isValid())
        co_return std::nullopt;
    const auto response = co_await fetch(lookup, url, ArtworkSession::Kind::Json);
    if (!response)
        co_return std::nullopt;
    const std::optional<WikiSearch> search = WikiSearch::decode(response->body);
    if (!search || search->search.isEmpty())
        co_return std::nullopt;
    co_return search->search.first().title;
}

QCoro::Task<std::optional<QUrl>> commonsFileURL(Lookup lookup, QString title)
{
    const QUrl url = address::commonsImageInfo(lookup.session->services(), title);
    if (!url.isValid())
        co_return std::nullopt;
    const auto response = co_await fetch(lookup, url, ArtworkSession::Kind::Json);
    if (!response)
        co_return std::nullopt;
    const std::optional<WikiImageInfo> info = WikiImageInfo::decode(response->body);
    if (!info || info->pages.isEmpty())
        co_return std::nullopt;
    const WikiImageInfo::Page &page = info->pages.first().second;
    if (!page.imageinfo || page.imageinfo->isEmpty())
        co_return std::nullopt;
    co_return urlFrom(page.imageinfo->first().url);
}

namespace {

QCoro::Task<std::optional<QImage>> commonsImage(Lookup lookup, QString text, int limit)
{
    const OptionalText title = co_await commonsFileTitle(lookup, text, limit);
    if (!title)
        co_return std::nullopt;
    const std::optional<QUrl> file = co_await commonsFileURL(lookup, *title);
    if (!file)
        co_return std::nullopt;
    co_return co_await download(lookup, *file);
}

} // namespace

QCoro::Task<std::optional<QImage>> commonsArtistImage(Lookup lookup, QString name)
{
    co_return co_await commonsImage(lookup, name, 5);
}

QCoro::Task<std::optional<QImage>> commonsAlbumImage(Lookup lookup, OptionalText artist, OptionalText album)
{
    const QString text = commonsAlbumSearchText(artist, album);
    if (text.isEmpty())
        co_return std::nullopt;
    co_return co_await commonsImage(lookup, text, 3);
}

QCoro::Task<std::optional<QImage>> onlineAlbumArt(Lookup lookup, OptionalText artist, OptionalText album)
{
    const OptionalText releaseID = co_await musicBrainzReleaseID(lookup, artist, album);
    if (releaseID) {
        // Cut short by cancellation, the chain still goes on: its requests then
        // fail at once, like every request of a cancelled lookup.
        co_await artwork::sleepFor(coverArtPause, lookup.cancel);
        if (std::optional<QImage> cover = co_await coverArtFront(lookup, *releaseID))
            co_return cover;
    }
    co_return co_await commonsAlbumImage(lookup, artist, album);
}

QCoro::Task<std::optional<QImage>> onlineArtistImage(Lookup lookup, QString name)
{
    if (std::optional<QImage> image = co_await wikipediaArtistImage(lookup, name))
        co_return image;
    co_return co_await commonsArtistImage(lookup, name);
}

} // namespace online
