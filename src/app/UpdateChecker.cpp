// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateChecker.h"

#include "model/Log.h"

#include <QCoreApplication>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QXmlStreamReader>

#ifndef TARNWELL_UPDATE_FEED
#define TARNWELL_UPDATE_FEED ""
#endif

namespace {

constexpr qint64 feedSizeLimit = 4 * 1024 * 1024;

// A version as parts: runs of digits become numbers, everything else words.
struct VersionPart
{
    bool numeric;
    qulonglong number;
    QString word;
};

QList<VersionPart> versionParts(const QString &version)
{
    QString v = version.trimmed();
    if (v.startsWith(QLatin1Char('v'), Qt::CaseInsensitive))
        v.remove(0, 1);
    QList<VersionPart> parts;
    static const QRegularExpression token(QStringLiteral("(\\d+)|([A-Za-z]+)"));
    auto it = token.globalMatch(v);
    while (it.hasNext()) {
        const auto m = it.next();
        if (m.capturedLength(1) > 0)
            parts.append({true, m.captured(1).toULongLong(), {}});
        else
            parts.append({false, 0, m.captured(2).toLower()});
    }
    return parts;
}

QString attribute(const QXmlStreamAttributes &attributes, QStringView localName)
{
    for (const QXmlStreamAttribute &a : attributes) {
        if (a.name() == localName)
            return a.value().toString();
    }
    return {};
}

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

std::optional<UpdateChecker::Release> UpdateChecker::newestRelease(const QByteArray &feed)
{
    std::optional<Release> newest;
    QXmlStreamReader xml(feed);
    std::optional<Release> item;
    while (!xml.atEnd()) {
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            const QStringView name = xml.name();
            if (name == QLatin1String("item")) {
                item = Release{};
            } else if (!item) {
                continue;
            } else if (name == QLatin1String("enclosure")) {
                const QXmlStreamAttributes attrs = xml.attributes();
                item->downloadUrl = QUrl(attribute(attrs, u"url"));
                if (item->version.isEmpty())
                    item->version = attribute(attrs, u"version");
                if (item->displayVersion.isEmpty())
                    item->displayVersion = attribute(attrs, u"shortVersionString");
            } else if (name == QLatin1String("version")) {
                item->version = xml.readElementText().trimmed();
            } else if (name == QLatin1String("shortVersionString")) {
                item->displayVersion = xml.readElementText().trimmed();
            } else if (name == QLatin1String("link") && xml.namespaceUri().isEmpty()) {
                const QUrl link(xml.readElementText().trimmed());
                if (item->downloadUrl.isEmpty())
                    item->downloadUrl = link;
            }
        } else if (token == QXmlStreamReader::EndElement && xml.name() == QLatin1String("item") && item) {
            if (item->displayVersion.isEmpty())
                item->displayVersion = item->version;
            const bool usable = !item->version.isEmpty() && !versionParts(item->version).isEmpty()
                && (item->downloadUrl.scheme() == QLatin1String("https")
                    || item->downloadUrl.scheme() == QLatin1String("http"));
            if (usable && (!newest || compareVersions(item->version, newest->version) > 0))
                newest = item;
            item.reset();
        }
    }
    if (xml.hasError()) {
        qCInfo(lcApp) << "update feed:" << xml.errorString() << "at line" << xml.lineNumber();
        return std::nullopt;
    }
    return newest;
}

int UpdateChecker::compareVersions(const QString &a, const QString &b)
{
    const QList<VersionPart> pa = versionParts(a);
    const QList<VersionPart> pb = versionParts(b);
    const qsizetype n = std::max(pa.size(), pb.size());
    for (qsizetype i = 0; i < n; ++i) {
        // A missing part is 0 next to a number ("1.0" == "1.0.0") and a release
        // next to a word ("1.0" is newer than "1.0-beta").
        if (i >= pa.size()) {
            if (!pb[i].numeric)
                return 1;
            if (pb[i].number != 0)
                return -1;
            continue;
        }
        if (i >= pb.size()) {
            if (!pa[i].numeric)
                return -1;
            if (pa[i].number != 0)
                return 1;
            continue;
        }
        const VersionPart &x = pa[i];
        const VersionPart &y = pb[i];
        if (x.numeric != y.numeric)
            return x.numeric ? 1 : -1; // 1.0.1 is newer than 1.0-beta
        if (x.numeric && x.number != y.number)
            return x.number < y.number ? -1 : 1;
        if (!x.numeric && x.word != y.word)
            return x.word < y.word ? -1 : 1;
    }
    return 0;
}
