// SPDX-License-Identifier: GPL-3.0-or-later
#include "FolderMonitor.h"

#include "model/LocalPath.h"
#include "model/Log.h"
#include "model/TextUtil.h"

#include <QCollator>
#include <QElapsedTimer>
#include <QFile>
#include <QFutureWatcher>
#include <QPointer>
#include <QtConcurrent>

#include <algorithm>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

FolderMonitor::FolderMonitor(QObject *parent)
    : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(latencyMs);
    connect(&m_timer, &QTimer::timeout, this, &FolderMonitor::rescan);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, [this](const QString &watchPath) {
        const QString folder = m_folderOfWatch.value(watchPath, watchPath);
        // The watcher lets go of a folder that is gone; a new one there is armed again.
        if (::access(localpath::toBytes(folder).constData(), F_OK) != 0)
            dropWatch(folder);
        m_changedFolders.insert(folder);
        onChange();
    });
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, [this] {
        m_rescanAll = true;
        onChange();
    });
}

FolderMonitor::~FolderMonitor()
{
    for (const int fd : std::as_const(m_folderDescriptors))
        ::close(fd);
}

void FolderMonitor::watch(const QUrl &folder, const QStringList &subfolders)
{
    if (m_watchedFolders.contains(folder))
        return;
    m_watchedFolders.append(folder);
    // From the event loop: watch() never reports back before it returns.
    QMetaObject::invokeMethod(this, [this, folder, subfolders] {
        ++m_watchingPending;
        // Forgotten meanwhile: nothing to arm, but the watch is settled all the same.
        armWatcher(m_watchedFolders.contains(folder) ? subfolders : QStringList());
    }, Qt::QueuedConnection);
}

void FolderMonitor::unwatch(const QUrl &folder)
{
    if (m_watchedFolders.removeAll(folder) == 0)
        return;
    QStringList drop;
    for (const QString &dir : std::as_const(m_armed)) {
        if (!isWatched(dir))
            drop.append(dir);
    }
    for (const QString &dir : std::as_const(drop)) {
        const QString path = watchPathOf(dir);
        if (!path.isEmpty())
            m_watcher.removePath(path);
        dropWatch(dir);
    }
    m_toArm.removeIf([this](const QString &dir) { return !isWatched(dir); });
    m_unwatchable.removeIf([this](const QString &dir) { return !isWatched(dir); });
    m_changedFolders.removeIf([this](const QString &dir) { return !isWatched(dir); });
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
    // Names are read as bytes, so a folder whose name is not UTF-8 is listed too.
    FolderTree tree;
    QByteArray base = localpath::toBytes(folder);
    DIR *dir = ::opendir(base.constData());
    if (!dir)
        return tree;
    if (!base.endsWith('/'))
        base.append('/');
    std::vector<std::pair<QByteArray, bool>> entries; // name, is a folder
    while (const dirent *e = ::readdir(dir)) {
        if (e->d_name[0] == '.')
            continue;
        unsigned char type = e->d_type;
        if (type == DT_UNKNOWN) {
            struct stat st;
            if (::fstatat(::dirfd(dir), e->d_name, &st, AT_SYMLINK_NOFOLLOW) != 0)
                continue;
            type = S_ISDIR(st.st_mode) ? DT_DIR : S_ISREG(st.st_mode) ? DT_REG : DT_LNK;
        }
        if (type == DT_DIR || type == DT_REG)
            entries.emplace_back(QByteArray(e->d_name), type == DT_DIR);
    }
    ::closedir(dir);
    std::sort(entries.begin(), entries.end());
    for (const auto &[name, isFolder] : entries) {
        const QString path = localpath::fromBytes(base + name);
        if (isFolder && !armed.contains(path)) {
            const FolderTree below = scanTree(path);
            tree.audioFiles += below.audioFiles;
            tree.folders += below.folders;
        } else if (!isFolder && hasAudioExtension(QStringView(path).mid(path.lastIndexOf(u'/') + 1))) {
            tree.audioFiles.append(path);
        }
    }
    return tree;
}

void FolderMonitor::finishRescan(const QList<FolderTree> &trees)
{
    m_scanning = false;
    QList<QUrl> found;
    // A folder watched inside another watched one is walked twice.
    QSet<QUrl> seen;
    QStringList folders;
    for (const FolderTree &tree : trees) {
        folders += tree.folders;
        for (const QString &path : tree.audioFiles) {
            QUrl url = localpath::fileUrl(path);
            // A folder forgotten while the scan ran reports nothing.
            if (!(m_isKnown && m_isKnown(url)) && isWatched(path) && !seen.contains(url)) {
                seen.insert(url);
                found.append(std::move(url));
            }
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
            if (!m_armed.contains(f) && !m_unwatchable.contains(f) && isWatched(f))
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

void FolderMonitor::addWatches(const QStringList &folders)
{
    QStringList toAdd;
    QHash<QString, QString> folderOf; // watch path ─► folder
    for (const QString &f : folders) {
        // Empty when the folder is gone already.
        const QString path = watchPathOf(f);
        if (!path.isEmpty()) {
            toAdd.append(path);
            folderOf.insert(path, f);
        }
    }
    if (toAdd.isEmpty())
        return;
    const qsizetype room = qMax<qsizetype>(0, m_watchBudget - m_armed.size());
    const QStringList tried = toAdd.mid(0, room);
    QStringList failed = m_watcher.addPaths(tried);
    const QSet<QString> refused(failed.cbegin(), failed.cend());
    for (const QString &path : tried) {
        if (refused.contains(path))
            continue;
        const QString folder = folderOf.value(path);
        m_armed.insert(folder);
        if (path != folder)
            m_folderOfWatch.insert(path, folder);
    }
    failed += toAdd.mid(room);
    // Not retried: each failure costs a system call and a line on stderr.
    for (const QString &path : std::as_const(failed)) {
        const QString folder = folderOf.value(path);
        m_unwatchable.insert(folder);
        dropWatch(folder);
    }
    if (!failed.isEmpty() && !m_warnedLimit) {
        m_warnedLimit = true;
        qCWarning(lcLibrary).nospace()
            << failed.size() << " folders cannot be watched (the limit of inotify watches is reached; "
            << "raise fs.inotify.max_user_watches). Songs added there appear at the "
            << "next import or when a change elsewhere triggers a rescan.";
    }
}

QString FolderMonitor::watchPathOf(const QString &folder)
{
    if (!localpath::hasRawBytes(folder))
        return folder;
    if (const auto known = m_folderDescriptors.constFind(folder); known != m_folderDescriptors.cend())
        return QStringLiteral("/proc/self/fd/%1").arg(*known);
    const int fd = ::open(localpath::toBytes(folder).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return {};
    m_folderDescriptors.insert(folder, fd);
    return QStringLiteral("/proc/self/fd/%1").arg(fd);
}

void FolderMonitor::dropWatch(const QString &folder)
{
    m_armed.remove(folder);
    if (const auto fd = m_folderDescriptors.constFind(folder); fd != m_folderDescriptors.cend()) {
        m_folderOfWatch.remove(QStringLiteral("/proc/self/fd/%1").arg(*fd));
        ::close(*fd);
        m_folderDescriptors.erase(fd);
    }
}
