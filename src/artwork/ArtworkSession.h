// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ArtworkServices.h"
#include "CancelToken.h"

#include <QByteArray>
#include <QCoro/QCoroTask>
#include <QUrl>

#include <chrono>
#include <optional>

class QNetworkAccessManager;

// The one HTTP session every lookup shares: the User-Agent with the contact
// address, and the limits that keep a hostile or broken server from holding a
// lookup or its memory for long. Every request ends within its deadline (15 s
// for JSON, 30 s for a picture), however steadily the answer trickles in, and
// sooner after 15 s of silence; an answer larger than its kind allows (1 MiB
// of JSON, 16 MiB of picture) is abandoned as soon as its Content-Length or
// its bytes so far say so. Only http and https are fetched, redirects
// included (no file:, data: or ftp:).
// Use it on the thread that created it (the GUI thread); hold it by shared_ptr,
// so a lookup in flight keeps it alive.
class ArtworkSession
{
public:
    enum class Kind { Json, Picture };

    struct Limits
    {
        // Gives up on a request that receives nothing for this long.
        std::chrono::milliseconds idleTimeout{15000};
        // Gives up on a request still unfinished this long after it was sent.
        std::chrono::milliseconds jsonDeadline{15000};
        std::chrono::milliseconds pictureDeadline{30000};
        qint64 maxJsonBytes = 1024 * 1024;
        qint64 maxPictureBytes = 16 * 1024 * 1024;

        std::chrono::milliseconds deadline(Kind kind) const
        {
            return kind == Kind::Json ? jsonDeadline : pictureDeadline;
        }
        qint64 maxBytes(Kind kind) const { return kind == Kind::Json ? maxJsonBytes : maxPictureBytes; }
    };

    struct Response
    {
        int status = 0;
        QByteArray body;
    };

    explicit ArtworkSession(ArtworkServices services, Limits limits);
    explicit ArtworkSession(ArtworkServices services = ArtworkServices::fromEnvironment());
    ~ArtworkSession();
    ArtworkSession(const ArtworkSession &) = delete;
    ArtworkSession &operator=(const ArtworkSession &) = delete;

    const ArtworkServices &services() const { return m_services; }
    const Limits &limits() const { return m_limits; }

    // A plain GET. Absent on any transport failure, time-out, cancellation, body
    // over the cap of its kind or refused redirect; an HTTP error status is
    // still a response.
    QCoro::Task<std::optional<Response>> get(QUrl url, Kind kind, CancelToken cancel);

    static bool isWebUrl(const QUrl &url);

private:
    ArtworkServices m_services;
    Limits m_limits;
    QByteArray m_userAgent;
    QNetworkAccessManager *m_manager;
};
