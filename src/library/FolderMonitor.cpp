// SPDX-License-Identifier: GPL-3.0-or-later
#include "FolderMonitor.h"

#include "model/Log.h"
#include "model/TextUtil.h"

#include <QCollator>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QPointer>
#include <QtConcurrent>

FolderMonitor::FolderMonitor(QObject *parent)
    : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(latencyMs);
    connect(&m_timer, &QTimer::timeout, this, &FolderMonitor::rescan);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, [this](const QString &folder) {
        // The watcher lets go of a folder that is gone; a new one there is armed again.
        if (!QFileInfo::exists(folder))
            m_armed.remove(folder);
        m_changedFolders.insert(folder);
        onChange();
    });
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, [this] {
        m_rescanAll = true;
        onChange();
    });
}

void FolderMonitor::watch(const QUrl &folder, const QSet<QUrl> &knownURLs)
{
    m_knownURLs = knownURLs;
    if (m_watchedFolders.contains(folder))
        return;
    m_watchedFolders.append(folder);
    // The folder and its subfolders are listed on the pool, then watched.
    auto *watcher = new QFutureWatcher<FolderTree>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher] {
        watcher->deleteLater();
        ++m_watchingPending;
        armWatcher(watcher->result().folders);
    });
    watcher->setFuture(QtConcurrent::run(scanTree, folder.toLocalFile()));
}

void FolderMonitor::onChange()
{
    // Changes are gathered, not postponed: a steady stream of changes still
    // leads to a rescan every 1.5 s.
    if (!m_timer.isActive())
        m_timer.start();
}

void FolderMonitor::rescan()
{
    if (m_scanning) {
        m_rescanAgain = true;
        return;
    }
    m_scanning = true;
    QStringList roots;
    for (const QUrl &f : std::as_const(m_watchedFolders))
        roots.append(f.toLocalFile());
    // A change in a watched folder rescans that folder alone (and any new
    // folder in it): one song copied into a library of a hundred thousand
    // does not walk the whole library. A rescan asked for walks it all.
    const bool all = m_rescanAll || m_changedFolders.isEmpty();
    const QStringList changed = all ? QStringList() : QStringList(m_changedFolders.cbegin(), m_changedFolders.cend());
    m_changedFolders.clear();
    m_rescanAll = false;

    auto *watcher = new QFutureWatcher<QList<FolderTree>>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher] {
        watcher->deleteLater();
        finishRescan(watcher->result());
    });
    watcher->setFuture(QtConcurrent::run([roots, changed, all, armed = m_armed] {
        QList<FolderTree> trees;
        if (all) {
            for (const QString &root : roots)
                trees.append(scanTree(root));
            return trees;
        }
        FolderTree tree;
        for (const QString &folder : changed) {
            const FolderTree part = scanChanged(folder, armed);
            tree.audioFiles += part.audioFiles;
            tree.folders += part.folders;
        }
        // In file-name order, as a whole scan lists them.
        const QCollator collator = text::localeCollator();
        std::stable_sort(tree.audioFiles.begin(), tree.audioFiles.end(), [&](const QString &a, const QString &b) {
            return collator.compare(QStringView(a).mid(a.lastIndexOf(u'/') + 1),
                                    QStringView(b).mid(b.lastIndexOf(u'/') + 1)) < 0;
        });
        trees.append(tree);
        return trees;
    }));
}

FolderTree FolderMonitor::scanChanged(const QString &folder, const QSet<QString> &armed)
{
    // Hidden entries and symbolic links are passed over, as scanTree does.
    FolderTree tree;
    const QFileInfoList entries
        = QDir(folder).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks, QDir::Name);
    for (const QFileInfo &entry : entries) {
        const QString path = entry.absoluteFilePath();
        if (entry.isDir() && !armed.contains(path)) {
            const FolderTree below = scanTree(path);
            tree.audioFiles += below.audioFiles;
            tree.folders += below.folders;
        } else if (entry.isFile() && hasAudioExtension(entry.fileName())) {
            tree.audioFiles.append(path);
        }
    }
    return tree;
}

void FolderMonitor::finishRescan(const QList<FolderTree> &trees)
{
    m_scanning = false;
    QList<QUrl> found;
    QStringList folders;
    for (const FolderTree &tree : trees) {
        folders += tree.folders;
        for (const QString &path : tree.audioFiles) {
            QUrl url = QUrl::fromLocalFile(path);
            if (!m_knownURLs.contains(url))
                found.append(std::move(url));
        }
    }
    armWatcher(folders);
    if (!found.isEmpty()) {
        m_discoveredURLs = std::move(found);
        Q_EMIT discoveredURLsChanged();
    }
    Q_EMIT rescanned();
    if (m_rescanAgain) {
        m_rescanAgain = false;
        rescan();
    }
}

int FolderMonitor::defaultWatchBudget()
{
    QFile limit(QStringLiteral("/proc/sys/fs/inotify/max_user_watches"));
    int max = 0;
    if (limit.open(QIODevice::ReadOnly))
        max = limit.readAll().trimmed().toInt();
    return max > 0 ? max / 2 : 4096;
}

void FolderMonitor::armWatcher(const QStringList &folders)
{
    m_toArm += folders;
    if (!m_armScheduled)
        armNextBatch();
}

void FolderMonitor::armNextBatch()
{
    // Each watch is a system call and bookkeeping in the watcher: a batch
    // stops after a few milliseconds and the rest follows in the next turn of
    // the event loop.
    constexpr qint64 batchMs = 4;
    constexpr qsizetype batchFolders = 64;
    m_armScheduled = false;
    QElapsedTimer clock;
    clock.start();
    qsizetype next = 0;
    while (next < m_toArm.size() && clock.elapsed() < batchMs) {
        QStringList toAdd;
        for (; next < m_toArm.size() && toAdd.size() < batchFolders; ++next) {
            const QString &f = m_toArm.at(next);
            if (!m_armed.contains(f) && !m_unwatchable.contains(f))
                toAdd.append(f);
        }
        addWatches(toAdd);
    }
    m_toArm.remove(0, next);
    if (!m_toArm.isEmpty()) {
        m_armScheduled = true;
        QTimer::singleShot(0, this, &FolderMonitor::armNextBatch);
        return;
    }
    for (; m_watchingPending > 0; --m_watchingPending)
        Q_EMIT watching();
}

void FolderMonitor::addWatches(const QStringList &toAdd)
{
    if (toAdd.isEmpty())
        return;
    const qsizetype room = qMax<qsizetype>(0, m_watchBudget - m_armed.size());
    const QStringList tried = toAdd.mid(0, room);
    QStringList failed = m_watcher.addPaths(tried);
    const QSet<QString> refused(failed.cbegin(), failed.cend());
    for (const QString &f : tried) {
        if (!refused.contains(f))
            m_armed.insert(f);
    }
    failed += toAdd.mid(room);
    // Not retried: each failure costs a system call and a line on stderr.
    for (const QString &f : failed)
        m_unwatchable.insert(f);
    if (!failed.isEmpty() && !m_warnedLimit) {
        m_warnedLimit = true;
        qCWarning(lcLibrary).nospace()
            << failed.size() << " folders cannot be watched (the limit of inotify watches is reached; "
            << "raise fs.inotify.max_user_watches). Songs added there appear at the "
            << "next import or when a change elsewhere triggers a rescan.";
    }
}
