// SPDX-License-Identifier: GPL-3.0-or-later
#include "FolderMonitor.h"

#include "model/LocalPath.h"
#include "model/Log.h"

#include <QFile>
#include <QFutureWatcher>
#include <QPointer>
#include <QtConcurrent>

#include <fcntl.h>
#include <unistd.h>

FolderMonitor::FolderMonitor(QObject *parent)
    : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(latencyMs);
    connect(&m_timer, &QTimer::timeout, this, &FolderMonitor::rescan);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &FolderMonitor::onChange);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &FolderMonitor::onChange);
}

FolderMonitor::~FolderMonitor()
{
    for (const int fd : std::as_const(m_folderDescriptors))
        ::close(fd);
}

void FolderMonitor::watch(const QUrl &folder, const QSet<QUrl> &knownURLs)
{
    m_knownURLs = knownURLs;
    if (m_watchedFolders.contains(folder))
        return;
    m_watchedFolders.append(folder);
    // The folder and its subfolders are listed on the pool, then watched.
    auto *watcher = new QFutureWatcher<FolderTree>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher, folder] {
        watcher->deleteLater();
        if (m_watchedFolders.contains(folder))
            armWatcher(watcher->result().folders);
        Q_EMIT watching();
    });
    watcher->setFuture(QtConcurrent::run(scanTree, localpath::pathOf(folder)));
}

void FolderMonitor::unwatch(const QUrl &folder)
{
    if (m_watchedFolders.removeAll(folder) == 0)
        return;
    QStringList drop;
    for (const QString &dir : m_watcher.directories()) {
        if (!isWatched(dir))
            drop.append(dir);
    }
    if (!drop.isEmpty())
        m_watcher.removePaths(drop);
    m_unwatchable.removeIf([this](const QString &dir) { return !isWatched(dir); });
}

bool FolderMonitor::isWatched(const QString &path) const
{
    return std::any_of(m_watchedFolders.cbegin(), m_watchedFolders.cend(),
                       [&path](const QUrl &folder) { return isInside(path, localpath::pathOf(folder)); });
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
        roots.append(localpath::pathOf(f));

    auto *watcher = new QFutureWatcher<QList<FolderTree>>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher] {
        watcher->deleteLater();
        finishRescan(watcher->result());
    });
    watcher->setFuture(QtConcurrent::run([roots] {
        QList<FolderTree> trees;
        for (const QString &root : roots)
            trees.append(scanTree(root));
        return trees;
    }));
}

void FolderMonitor::finishRescan(const QList<FolderTree> &trees)
{
    m_scanning = false;
    QList<QUrl> found;
    QStringList folders;
    for (const FolderTree &tree : trees) {
        folders += tree.folders;
        for (const QString &path : tree.audioFiles) {
            QUrl url = localpath::fileUrl(path);
            if (!m_knownURLs.contains(url) && isWatched(path))
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
    const QStringList current = m_watcher.directories();
    const QSet<QString> watching(current.begin(), current.end());
    QStringList toAdd;
    QHash<QString, QString> folderOf; // watch path → folder
    for (const QString &f : folders) {
        if (m_unwatchable.contains(f))
            continue;
        // Empty when the folder is gone already.
        const QString path = watchPathOf(f, watching);
        if (!path.isEmpty() && !watching.contains(path)) {
            toAdd.append(path);
            folderOf.insert(path, f);
        }
    }
    if (toAdd.isEmpty())
        return;
    const qsizetype room = qMax<qsizetype>(0, m_watchBudget - current.size());
    QStringList failed = m_watcher.addPaths(toAdd.mid(0, room));
    failed += toAdd.mid(room);
    // Not retried: each failure costs a system call and a line on stderr.
    for (const QString &path : failed) {
        const QString folder = folderOf.value(path);
        m_unwatchable.insert(folder);
        if (const auto fd = m_folderDescriptors.constFind(folder); fd != m_folderDescriptors.cend()) {
            ::close(*fd);
            m_folderDescriptors.erase(fd);
        }
    }
    if (!failed.isEmpty() && !m_warnedLimit) {
        m_warnedLimit = true;
        qCWarning(lcLibrary).nospace()
            << failed.size() << " folders cannot be watched (the limit of inotify watches is reached; "
            << "raise fs.inotify.max_user_watches). Songs added there appear at the "
            << "next import or when a change elsewhere triggers a rescan.";
    }
}

QString FolderMonitor::watchPathOf(const QString &folder, const QSet<QString> &watching)
{
    if (!localpath::hasRawBytes(folder))
        return folder;
    const auto known = m_folderDescriptors.constFind(folder);
    if (known != m_folderDescriptors.cend()) {
        const QString path = QStringLiteral("/proc/self/fd/%1").arg(*known);
        if (watching.contains(path))
            return path;
        // The watch ended with the folder it was on; the name may be a new one.
        ::close(*known);
        m_folderDescriptors.erase(known);
    }
    const int fd = ::open(localpath::toBytes(folder).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return {};
    m_folderDescriptors.insert(folder, fd);
    return QStringLiteral("/proc/self/fd/%1").arg(fd);
}
