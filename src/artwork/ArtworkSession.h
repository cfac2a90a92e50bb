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
// address, a 15 s time-out without data, and the limits that keep a hostile or
// broken server from doing harm: bodies over 32 MiB are abandoned, and only
// http and https are fetched, redirects included (no file:, data: or ftp:).
// Use it on the thread that created it (the GUI thread); hold it by shared_ptr,
// so a lookup in flight keeps it alive.
class ArtworkSession
{
public:
    struct Limits
    {
        // Aborts a request that receives nothing for this long; a slow answer
        // that keeps coming is fine.
        std::chrono::milliseconds timeout{15000};
        qint64 maxBodyBytes = 32 * 1024 * 1024;
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
    // over the cap or refused redirect; an HTTP error status is still a response.
    QCoro::Task<std::optional<Response>> get(QUrl url, CancelToken cancel);

    static bool isWebUrl(const QUrl &url);

private:
    ArtworkServices m_services;
    Limits m_limits;
    QByteArray m_userAgent;
    QNetworkAccessManager *m_manager;
};
