// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QSet>
#include <QString>
#include <QUrl>

#include <optional>

// The pure steps of turning files into songs of the library; AppState runs them.
//
//   folder ──scanFolder (pool)──► found files ──takeFreshFiles──► new Tracks appended
//          ──► artwork prefetch: tags of every song (pool) ──PrefetchPlan──►
//              one artistImage per artist, one albumArt per (artist, album)

namespace import {

// The files of `found` that are not in `known`, in the order of `found` (each
// file once, even if listed twice); they are added to `known`. One hash lookup
// for a known file, two for a fresh one: a file URL is costly to hash.
QList<QUrl> takeFreshFiles(const QList<QUrl> &found, QSet<QUrl> &known);

// The banner after new files in a watched folder became songs:
// "1 new song added", "3 new songs added".
QString discoveredMessage(qsizetype count);

// The artwork requests of one prefetch, deduplicated before any is made: a
// thousand songs of one album ask for its picture once. Names are compared
// exactly, so two spellings that differ in case are two artists.
class PrefetchPlan
{
public:
    struct Album
    {
        QString artist;
        QString album;
        friend bool operator==(const Album &, const Album &) = default;
    };

    // One song's tags (raw, as read). Values are trimmed of spaces and tabs; an
    // empty value counts as absent. A song without an artist adds nothing, not
    // even its album.
    void add(const std::optional<QString> &artist, const std::optional<QString> &album);

    // Distinct artists and (artist, album) pairs, in the order first seen.
    const QStringList &artists() const { return m_artists; }
    const QList<Album> &albums() const { return m_albums; }

private:
    QStringList m_artists;
    QSet<QString> m_artistSet;
    QList<Album> m_albums;
    QSet<QString> m_albumKeys;
};

} // namespace import
