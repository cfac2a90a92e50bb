// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateChecker.h"

#include "model/Log.h"

#include <QCoreApplication>
#include <QNetworkReply>

#ifndef TARNWELL_UPDATE_FEED
#define TARNWELL_UPDATE_FEED ""
#endif

namespace {

constexpr qint64 feedSizeLimit = 4 * 1024 * 1024;

} // namespace

UpdateChecker::UpdateChecker(QObject *parent, const QString &currentVersion, const QUrl &feedUrl)
    : QObject(parent)
    , m_currentVersion(currentVersion.isEmpty() ? QCoreApplication::applicationVersion() : currentVersion)
    , m_feedUrl(feedUrl.isEmpty() ? defaultFeedUrl() : feedUrl)
{
    m_network.setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
}

QUrl UpdateChecker::defaultFeedUrl()
{
    const QByteArray fromEnv = qgetenv("TARNWELL_UPDATE_FEED_URL");
    if (!fromEnv.isEmpty())
        return QUrl(QString::fromUtf8(fromEnv));
    return QUrl(QStringLiteral(TARNWELL_UPDATE_FEED));
}

bool UpdateChecker::hasFeed() const
{
    const QString scheme = m_feedUrl.scheme();
    return m_feedUrl.isValid()
        && (scheme == QLatin1String("https") || scheme == QLatin1String("http") || scheme == QLatin1String("file"));
}

void UpdateChecker::check()
{
    if (m_status == Status::Checking)
        return;
    m_latest = {};
    if (!hasFeed()) {
        finish(Status::Failed, tr("Updates can't be checked: this build of Tarnwell has no update feed."));
        return;
    }
    m_status = Status::Checking;
    m_message = tr("Checking for updates...");
    Q_EMIT statusChanged();

    QNetworkRequest request(m_feedUrl);
    request.setTransferTimeout(m_timeoutMs);
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      QStringLiteral("Tarnwell/%1").arg(m_currentVersion));
    m_reply = m_network.get(request);
    connect(m_reply, &QNetworkReply::finished, this, [this, reply = m_reply.data()] { onReply(reply); });
    // A feed is small; a server that sends without end is cut off.
    connect(m_reply, &QNetworkReply::downloadProgress, this, [reply = m_reply.data()](qint64 received, qint64) {
        if (received > feedSizeLimit)
            reply->abort();
    });
}

void UpdateChecker::onReply(QNetworkReply *reply)
{
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError) {
        qCInfo(lcApp) << "update check failed:" << reply->errorString();
        const QString reason = reply->error() == QNetworkReply::OperationCanceledError
            ? tr("the update server did not answer in time")
            : reply->errorString();
        finish(Status::Failed, tr("Couldn't check for updates (%1). Check your network connection and try again.")
                                   .arg(reason));
        return;
    }
    const std::optional<Release> newest = newestRelease(reply->read(feedSizeLimit));
    if (!newest) {
        finish(Status::Failed, tr("Couldn't check for updates: the update feed has no readable release."));
        return;
    }
    if (compareVersions(newest->version, m_currentVersion) > 0) {
        m_latest = *newest;
        finish(Status::UpdateAvailable, tr("Tarnwell %1 is available. You have version %2.")
                                            .arg(newest->displayVersion, m_currentVersion));
    } else {
        finish(Status::UpToDate, tr("You're up to date. Tarnwell %1 is the newest version.").arg(m_currentVersion));
    }
}

void UpdateChecker::finish(Status status, const QString &message)
{
    m_status = status;
    m_message = message;
    Q_EMIT statusChanged();
    Q_EMIT finished();
}
