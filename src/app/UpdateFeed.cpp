// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateFeed.h"

#include "model/Log.h"

#include <QRegularExpression>
#include <QXmlStreamReader>

namespace updatefeed {

namespace {

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
            parts.append({ true, m.captured(1).toULongLong(), {} });
        else
            parts.append({ false, 0, m.captured(2).toLower() });
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

std::optional<Release> newestRelease(const QByteArray &feed)
{
    std::optional<Release> newest;
    QXmlStreamReader xml(feed);
    std::optional<Release> item;
    while (!xml.atEnd()) {
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            const QStringView name = xml.name();
            if (name == QLatin1String("item")) {
                item = Release {};
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

int compareVersions(const QString &a, const QString &b)
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

} // namespace updatefeed
