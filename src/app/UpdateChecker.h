// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "UpdateFeed.h"

#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <optional>

class QNetworkReply;

// "Check for Updates...": fetches the appcast feed (an RSS document whose items
// carry a version and a download link), picks the newest release and compares
// it with the running version. Runs only when the user asks; the answer is
// one sentence for the user, plus the download address when there is a newer
// release. A missing feed or network gives a message, never a hang (15 s limit).
class UpdateChecker : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("UpdateChecker belongs to AppState")

    Q_PROPERTY(Status status READ status NOTIFY statusChanged)
    Q_PROPERTY(QString message READ message NOTIFY statusChanged)
    Q_PROPERTY(QString latestVersion READ latestVersion NOTIFY statusChanged)
    Q_PROPERTY(QUrl downloadUrl READ downloadUrl NOTIFY statusChanged)
    Q_PROPERTY(QString currentVersion READ currentVersion CONSTANT)
    // This build knows where to look for updates.
    Q_PROPERTY(bool hasFeed READ hasFeed CONSTANT)

public:
    enum class Status { Idle, Checking, UpToDate, UpdateAvailable, Failed };
    Q_ENUM(Status)

    using Release = updatefeed::Release;

    // feedUrl empty: the feed from TARNWELL_UPDATE_FEED_URL, else the built-in one.
    explicit UpdateChecker(QObject *parent = nullptr, const QString &currentVersion = {},
                           const QUrl &feedUrl = {});

    static QUrl defaultFeedUrl();

    Status status() const { return m_status; }
    QString message() const { return m_message; }
    QString latestVersion() const { return m_latest.displayVersion; }
    QUrl downloadUrl() const { return m_latest.downloadUrl; }
    QString currentVersion() const { return m_currentVersion; }
    QUrl feedUrl() const { return m_feedUrl; }
    bool hasFeed() const;

    // How long the feed may take (15 s).
    void setRequestTimeout(int ms) { m_timeoutMs = ms; }

    // Starts a check; a check already running is left to finish.
    Q_INVOKABLE void check();

    // See UpdateFeed.h.
    static std::optional<Release> newestRelease(const QByteArray &feed) { return updatefeed::newestRelease(feed); }
    static int compareVersions(const QString &a, const QString &b) { return updatefeed::compareVersions(a, b); }

Q_SIGNALS:
    void statusChanged();
    void finished();

private:
    void onReply(QNetworkReply *reply);
    void finish(Status status, const QString &message);

    QNetworkAccessManager m_network;
    QPointer<QNetworkReply> m_reply;
    QString m_currentVersion;
    QUrl m_feedUrl;
    int m_timeoutMs = 15000;
    Status m_status = Status::Idle;
    QString m_message;
    Release m_latest;
};
