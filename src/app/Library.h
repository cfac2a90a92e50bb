// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/Track.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <optional>

class FolderMonitor;

// The songs of the library, in import order; new songs join at its end.
//
//   importFolder ─► queue of folders, one import at a time:
//     scanFolder + new Tracks on the pool ─► appended in slices (a few thousand
//     per turn of the event loop) ─► folder watched ─► folderImported
//   FolderMonitor.discoveredURLs ─► addDiscoveredFiles ─► appended ─► filesDiscovered
//   forgetFolder ─► not watched, its songs dropped ─► folderForgotten
//
// What follows an import (pictures, the search index, the banner) is wired by
// AppState to folderImported and filesDiscovered.
class Library : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by the main state")
    Q_PROPERTY(int trackCount READ trackCount NOTIFY tracksChanged)
    Q_PROPERTY(bool importing READ isImporting NOTIFY importingChanged)

public:
    explicit Library(FolderMonitor &monitor, QObject *parent = nullptr);

    const QList<Track> &tracks() const { return m_tracks; }
    int trackCount() const { return int(m_tracks.size()); }
    bool isImporting() const { return m_importRunning; }
    std::optional<Track> find(const QUuid &id) const;

    // Imports a chosen folder: lists its audio files off the GUI thread, then
    // appends the new ones. Imports run one after another in the order asked.
    Q_INVOKABLE void importFolder(const QUrl &folder);
    void importFolders(const QList<QUrl> &folders);
    // The folder is no longer part of the library: it is not watched and its
    // songs leave the library, except those another imported folder holds.
    void forgetFolder(const QUrl &folder);
    // Files found in a watched folder: the new ones become songs.
    void addDiscoveredFiles(const QList<QUrl> &urls);

Q_SIGNALS:
    void tracksChanged();
    // Songs [first, first + count) were appended (an import appends a slice at a time).
    void tracksAppended(int first, int count);
    void importingChanged();
    // One import finished; `added` songs were new.
    void folderImported(const QUrl &folder, int added);
    // Files of a watched folder became songs [first, first + count).
    void filesDiscovered(int first, int count);
    // A folder left the library, taking `removed` songs with it.
    void folderForgotten(const QUrl &folder, int removed);

private:
    struct ScannedFolder
    {
        QList<QUrl> found;
        // The folder and its subfolders, to be watched.
        QStringList folders;
        // The songs of `found` not in the library when the scan began.
        QList<Track> fresh;
        // The library's files with `fresh` added, made on the pool: a
        // hundred thousand new songs would hold up the GUI thread otherwise.
        QSet<QUrl> urls;
    };
    void append(QList<Track> tracks);
    void startNextImport();
    // Appends the scanned songs a slice per turn of the event loop, so the
    // window keeps drawing while a hundred thousand songs join; then the
    // import is done.
    void appendScanned();
    void finishImport();

    FolderMonitor &m_monitor;
    QList<Track> m_tracks;
    QSet<QUrl> m_trackUrls;
    // Counts the appends, so a scan knows whether its view of m_trackUrls is old.
    quint64 m_trackUrlsGeneration = 0;
    QHash<QUuid, qsizetype> m_trackPositions;
    QList<QUrl> m_importQueue;
    bool m_importRunning = false;
    // The folder being imported, and whether it was forgotten meanwhile.
    QUrl m_runningImport;
    bool m_runningForgotten = false;
    // Its songs not appended yet (already in the lookups), and how many files it had.
    QList<Track> m_scanned;
    qsizetype m_scannedNext = 0;
    QStringList m_scannedFolders;
    qsizetype m_scannedFiles = 0;
};

// Finds a song by the id the screens pass around: one of the library, or else
// a copy kept in a playlist. Absent for an unknown or malformed id.
using SongLookup = std::function<std::optional<Track>(const QString &trackId)>;
