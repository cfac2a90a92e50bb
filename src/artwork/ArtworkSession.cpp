// SPDX-License-Identifier: GPL-3.0-or-later
#include "ArtworkSession.h"

#include "model/Log.h"

#include <QCoro/QCoroNetworkReply>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

namespace {

// Errors Qt reports for an HTTP answer that did arrive whole, with a status of
// 4xx or 5xx. Anything else (refused, reset, timed out, aborted, TLS, protocol)
// is a transport failure.
bool isHttpStatusError(QNetworkReply::NetworkError error)
{
    return error == QNetworkReply::NoError
        || (error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError)
        || error == QNetworkReply::ProtocolInvalidOperationError
        || (error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError);
}

constexpr qint64 readBufferBytes = 64 * 1024;

struct ReplyState
{
    bool abandoned = false;
    QString why;
    QByteArray body;
};

} // namespace

ArtworkSession::ArtworkSession(ArtworkServices services, Limits limits)
    : m_services(std::move(services))
    , m_limits(limits)
    , m_userAgent(m_services.userAgent())
    , m_manager(new QNetworkAccessManager)
{
}

ArtworkSession::ArtworkSession(ArtworkServices services)
    : ArtworkSession(std::move(services), Limits{})
{
}

ArtworkSession::~ArtworkSession()
{
    // The last holder may be a lookup resuming from one of this manager's own
    // replies; deleting it right there would pull the floor from under Qt.
    m_manager->deleteLater();
}

bool ArtworkSession::isWebUrl(const QUrl &url)
{
    const QString scheme = url.scheme();
    return url.isValid() && (scheme == u"http" || scheme == u"https") && !url.host().isEmpty();
}

QCoro::Task<std::optional<ArtworkSession::Response>> ArtworkSession::get(QUrl url, Kind kind, CancelToken cancel)
{
    if (cancel.isCancelled())
        co_return std::nullopt;
    if (!isWebUrl(url)) {
        qCDebug(lcArtwork) << "not fetching" << url << "(only http and https)";
        co_return std::nullopt;
    }

    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader, m_userAgent);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::UserVerifiedRedirectPolicy);
    QNetworkReply *reply = m_manager->get(request);
    const std::unique_ptr<QNetworkReply, void (*)(QNetworkReply *)> owner(
        reply, [](QNetworkReply *r) { r->deleteLater(); });
    // Qt stops reading from the socket while this much waits unread, so the
    // cap below sees the bytes as they come instead of megabytes later.
    reply->setReadBufferSize(readBufferBytes);
    auto state = std::make_shared<ReplyState>();

    const auto abandon = [reply, state](QString why) {
        if (state->abandoned)
            return;
        state->abandoned = true;
        state->why = std::move(why);
        reply->abort();
    };
    QObject::connect(reply, &QNetworkReply::redirected, reply, [reply, state, abandon](const QUrl &to) {
        state->body.clear();
        if (isWebUrl(to))
            Q_EMIT reply->redirectAllowed();
        else
            abandon(QStringLiteral("redirect to %1 refused").arg(to.toString()));
    });
    const qint64 cap = m_limits.maxBytes(kind);
    QObject::connect(reply, &QNetworkReply::metaDataChanged, reply, [reply, abandon, cap] {
        bool known = false;
        const qint64 length = reply->header(QNetworkRequest::ContentLengthHeader).toLongLong(&known);
        if (known && length > cap)
            abandon(QStringLiteral("announced %1 bytes, over %2").arg(length).arg(cap));
    });
    QObject::connect(reply, &QIODevice::readyRead, reply, [reply, state, abandon, cap] {
        state->body += reply->readAll();
        if (state->body.size() > cap)
            abandon(QStringLiteral("body over %1 bytes").arg(cap));
    });

    // Our own clocks rather than the manager's transfer time-out: that one is a
    // coarse timer, which may give up most of a second early. The idle clock
    // restarts with every sign of life; the deadline never does.
    const auto preciseTimer = [reply](std::chrono::milliseconds interval) {
        auto *timer = new QTimer(reply);
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
        timer->setInterval(interval);
        QObject::connect(reply, &QNetworkReply::finished, timer, &QTimer::stop);
        timer->start();
        return timer;
    };
    QTimer *silence = preciseTimer(m_limits.idleTimeout);
    QObject::connect(silence, &QTimer::timeout, reply, [abandon, idle = m_limits.idleTimeout] {
        abandon(QStringLiteral("nothing received for %1 ms").arg(idle.count()));
    });
    const auto restart = [silence] { silence->start(); };
    QObject::connect(reply, &QNetworkReply::metaDataChanged, silence, restart);
    QObject::connect(reply, &QIODevice::readyRead, silence, restart);
    QObject::connect(reply, &QNetworkReply::redirected, silence, restart);
    QTimer *deadline = preciseTimer(m_limits.deadline(kind));
    QObject::connect(deadline, &QTimer::timeout, reply, [abandon, limit = m_limits.deadline(kind)] {
        abandon(QStringLiteral("not done after %1 ms").arg(limit.count()));
    });

    if (CancelState *cancelState = cancel.state()) {
        QObject::connect(cancelState, &CancelState::cancelled, reply,
                         [abandon] { abandon(QStringLiteral("cancelled")); });
    }

    co_await reply;

    if (state->abandoned || cancel.isCancelled()) {
        qCDebug(lcArtwork) << url << "abandoned:" << state->why;
        co_return std::nullopt;
    }
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!status.isValid() || !isHttpStatusError(reply->error())) {
        qCDebug(lcArtwork) << url << "failed:" << reply->errorString();
        co_return std::nullopt;
    }
    state->body += reply->readAll();
    if (state->body.size() > cap) {
        qCDebug(lcArtwork) << url << "body over the cap";
        co_return std::nullopt;
    }
    co_return Response{status.toInt(), std::move(state->body)};
}
