// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Finding songs on disk.
//
//   scanFolder ── every audio file below a folder, sorted by file name (FolderScan.h)
//   FolderMonitor ── watches imported folders (inotify through QFileSystemWatcher);
//        │  folders are listed on the pool and armed in short batches on the
//        │  GUI thread, so ten thousand folders never hold up a frame
//        │  any change below a watched folder arms a 1.5 s timer; when it fires,
//        │  the folders that changed are scanned again on the thread pool
//        │  (a folder whose name is not UTF-8 is watched through a descriptor)
//        └─ discoveredURLs ── the files not yet known, published when there are any
//
// The library (app/) says which files it knows (setKnownFiles), turns
// discovered files into Tracks and clears discoveredURLs.

#include "FolderScan.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QTimer>
#include <QUrl>

#include <functional>

class FolderMonitor : public QObject
{
    Q_OBJECT

public:
    explicit FolderMonitor(QObject *parent = nullptr);
    ~FolderMonitor() override;

    // Whether the library has a file already; asked on this object's thread
    // when a rescan ends. Until it is set, every file is new.
    using KnownFiles = std::function<bool(const QUrl &file)>;
    void setKnownFiles(KnownFiles isKnown) { m_isKnown = std::move(isKnown); }

    // Starts watching the folder unless it is watched already, with the
    // subfolders a listing just made found in it (an import's: the tree isn't
    // walked twice). They are armed from the event loop.
    void watch(const QUrl &folder, const QStringList &subfolders);

    // Stops watching a folder and the folders below it that no other watched
    // folder holds; a rescan running meanwhile reports nothing from them.
    void unwatch(const QUrl &folder);

    const QList<QUrl> &watchedFolders() const { return m_watchedFolders; }
    const QList<QUrl> &discoveredURLs() const { return m_discoveredURLs; }
    // Set by the library once it has handled the discovered files (no signal).
    void clearDiscoveredURLs() { m_discoveredURLs.clear(); }

    // Scans every watched folder again; what is new is published when the scan is done.
    void rescan();

    // How long changes are gathered before a rescan (1.5 s).
    static constexpr int latencyMs = 1500;
    void setLatency(int ms) { m_timer.setInterval(ms); }

    // At most this many folders are watched, so one huge library can't use up
    // the inotify watches every other program of the user needs too. By default
    // half the system's per-user limit.
    void setWatchBudget(int folders) { m_watchBudget = folders; }
    static int defaultWatchBudget();

    // Folders the watcher could not take (inotify limits); 0 when all are watched.
    int unwatchedFolderCount() const { return int(m_unwatchable.size()); }
    int watchedFolderCount() const { return int(m_watcher.directories().size()); }

Q_SIGNALS:
    void discoveredURLsChanged();
    // The watches of a newly added folder are in place.
    void watching();
    // A rescan has finished, whether or not it found anything.
    void rescanned();

private:
    void onChange();
    void finishRescan(const QList<FolderTree> &trees);
    // The audio files of a folder that changed, and everything below its
    // folders that are not watched yet (new ones, or ones over the budget).
    static FolderTree scanChanged(const QString &folder, const QSet<QString> &armed);
    void armWatcher(const QStringList &folders);
    void armNextBatch();
    void addWatches(const QStringList &folders);
    bool isWatched(const QString &path) const;
    // What the watcher is given for a folder: the folder itself, or for a name
    // that is not UTF-8 /proc/self/fd/N of a descriptor opened on it; empty
    // when the folder is gone.
    QString watchPathOf(const QString &folder);
    void dropWatch(const QString &folder);

    QList<QUrl> m_watchedFolders;
    QList<QUrl> m_discoveredURLs;
    KnownFiles m_isKnown;
    QFileSystemWatcher m_watcher;
    QTimer m_timer;
    // Folders listed but not watched yet, and how many watching() signals wait for them.
    QStringList m_toArm;
    QSet<QString> m_armed;
    // What changed since the last rescan: these folders, or anything (a watched file).
    QSet<QString> m_changedFolders;
    bool m_rescanAll = false;
    int m_watchingPending = 0;
    bool m_armScheduled = false;
    bool m_scanning = false;
    bool m_rescanAgain = false;
    QSet<QString> m_unwatchable;
    // QFileSystemWatcher re-encodes names, which misses folders whose names
    // are not UTF-8; those are watched as /proc/self/fd/N of a descriptor kept
    // open for each (inotify follows the link to the folder itself).
    QHash<QString, int> m_folderDescriptors;
    // Watch path ─► folder, where they differ; armed folders are named by folder.
    QHash<QString, QString> m_folderOfWatch;
    int m_watchBudget = defaultWatchBudget();
    bool m_warnedLimit = false;
};
