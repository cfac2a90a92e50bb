// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryImport.h"

#include "model/TextUtil.h"

namespace import {

QList<QUrl> takeFreshFiles(const QList<QUrl> &found, QSet<QUrl> &known)
{
    QList<QUrl> fresh;
    for (const QUrl &url : found) {
        // Asked first: inserting would copy a set shared with a running import.
        if (known.contains(url))
            continue;
        known.insert(url);
        fresh.append(url);
    }
    return fresh;
}

QString discoveredMessage(qsizetype count)
{
    if (count == 1)
        return QStringLiteral("1 new song added");
    return QString::number(count) + QStringLiteral(" new songs added");
}

void PrefetchPlan::add(const std::optional<QString> &rawArtist, const std::optional<QString> &rawAlbum)
{
    const std::optional<QString> artist = text::nonEmptyTrimmed(rawArtist);
    if (!artist)
        return;
    if (!m_artistSet.contains(*artist)) {
        m_artistSet.insert(*artist);
        m_artists.append(*artist);
    }
    const std::optional<QString> album = text::nonEmptyTrimmed(rawAlbum);
    if (!album)
        return;
    const QString key = *artist + QStringLiteral("::") + *album;
    if (m_albumKeys.contains(key))
        return;
    m_albumKeys.insert(key);
    m_albums.append({*artist, *album});
}

} // namespace import
