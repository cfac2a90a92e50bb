// SPDX-License-Identifier: GPL-3.0-or-later
#include "FolderScan.h"

#include "model/LocalPath.h"
#include "model/NameOrder.h"
#include "model/ParallelFor.h"
#include "model/TextUtil.h"


#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <numeric>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

bool hasAudioExtension(QStringView fileName)
{
    const qsizetype dot = fileName.lastIndexOf(u'.');
    if (dot < 0)
        return false;
    const QStringView ext = fileName.sliced(dot + 1);
    return std::any_of(audioExtensions.begin(), audioExtensions.end(), [&](const char *e) {
        return ext.compare(QLatin1StringView(e), Qt::CaseInsensitive) == 0;
    });
}

namespace {

bool hasAudioExtension(const char *name, size_t len)
{
    const char *dot = static_cast<const char *>(memrchr(name, '.', len));
    if (!dot)
        return false;
    const size_t extLen = len - size_t(dot + 1 - name);
    for (const char *e : audioExtensions) {
        if (std::strlen(e) == extLen && strncasecmp(dot + 1, e, extLen) == 0)
            return true;
    }
    return false;
}

// A file found by the walk: its path as the file system spells it, and where
// its name starts.
struct FoundFile
{
    std::string path;
    size_t nameStart;
};

struct Walker
{
    std::vector<FoundFile> files;
    std::vector<std::string> folders;
    std::vector<UnreadableFolder> unreadable;
    std::set<std::pair<dev_t, ino_t>> visited; // stops loops through bind mounts
    std::string path;                          // the folder being walked

    // Walks the folder open at dirFd (path names it). With recurse false only
    // its own files are taken and its subfolders are returned instead.
    std::vector<std::string> walk(int dirFd, bool recurse = true)
    {
        struct stat st;
        if (fstat(dirFd, &st) != 0 || !visited.emplace(st.st_dev, st.st_ino).second) {
            close(dirFd);
            return {};
        }
        DIR *dir = fdopendir(dirFd);
        if (!dir) {
            unreadable.push_back({path, errno});
            close(dirFd);
            return {};
        }
        folders.push_back(path);
        if (path.back() != '/')
            path.push_back('/');
        const size_t base = path.size();

        std::vector<std::string> subfolders;
        while (dirent *e = readdir(dir)) {
            const char *name = e->d_name;
            if (name[0] == '.') // hidden, "." and ".."
                continue;
            unsigned char type = e->d_type;
            if (type == DT_UNKNOWN) {
                struct stat est;
                if (fstatat(dirfd(dir), name, &est, AT_SYMLINK_NOFOLLOW) != 0)
                    continue;
                type = S_ISDIR(est.st_mode) ? DT_DIR : S_ISREG(est.st_mode) ? DT_REG : DT_LNK;
            }
            const size_t len = std::strlen(name);
            if (type == DT_DIR) {
                subfolders.emplace_back(name, len);
            } else if (type == DT_REG && hasAudioExtension(name, len)) {
                std::string file;
                file.reserve(base + len);
                file.append(path).append(name, len);
                files.push_back({std::move(file), base});
            }
        }
        // Subfolders in name order, so every run walks the same way.
        std::sort(subfolders.begin(), subfolders.end());
        if (!recurse) {
            for (std::string &sub : subfolders)
                sub.insert(0, path);
            path.resize(base);
            closedir(dir);
            return subfolders;
        }
        for (const std::string &sub : subfolders) {
            const int childFd = openat(dirfd(dir), sub.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            path.resize(base);
            path.append(sub);
            if (childFd < 0)
                unreadable.push_back({path, errno});
            else
                walk(childFd);
        }
        path.resize(base);
        closedir(dir);
        return {};
    }
};

int openFolder(const std::string &path, bool followLink)
{
    return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | (followLink ? 0 : O_NOFOLLOW));
}

// The files of one part of the tree, sorted by name, with their sort keys.
struct SortedRun
{
    std::vector<FoundFile> files;
    std::vector<NameOrder::Key> keys;
    std::vector<std::string> folders;
    std::vector<UnreadableFolder> unreadable;
};

void sortRun(SortedRun &run, const NameOrder &names)
{
    std::vector<NameOrder::Key> keys;
    keys.reserve(run.files.size());
    for (const FoundFile &f : run.files)
        keys.push_back(names.key(std::string_view(f.path).substr(f.nameStart)));
    std::vector<size_t> order(run.files.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return names.compare(keys[a], keys[b]) < 0; });
    SortedRun sorted;
    sorted.files.reserve(order.size());
    sorted.keys.reserve(order.size());
    for (size_t i : order) {
        sorted.files.push_back(std::move(run.files[i]));
        sorted.keys.push_back(std::move(keys[i]));
    }
    run.files = std::move(sorted.files);
    run.keys = std::move(sorted.keys);
}

// Merges sorted runs into one in a single pass. On ties the earlier run goes
// first, which keeps the walk order.
SortedRun merged(std::vector<SortedRun> &runs, const NameOrder &names)
{
    struct Head
    {
        size_t run;
        size_t pos;
    };
    const auto after = [&](const Head &a, const Head &b) {
        const int c = names.compare(runs[a.run].keys[a.pos], runs[b.run].keys[b.pos]);
        return c > 0 || (c == 0 && a.run > b.run);
    };
    std::vector<Head> heap;
    size_t total = 0;
    SortedRun out;
    for (size_t r = 0; r < runs.size(); ++r) {
        total += runs[r].files.size();
        if (!runs[r].files.empty())
            heap.push_back({r, 0});
        out.folders.insert(out.folders.end(), std::make_move_iterator(runs[r].folders.begin()),
                           std::make_move_iterator(runs[r].folders.end()));
        out.unreadable.insert(out.unreadable.end(), runs[r].unreadable.begin(), runs[r].unreadable.end());
    }
    std::make_heap(heap.begin(), heap.end(), after);
    out.files.reserve(total);
    while (!heap.empty()) {
        std::pop_heap(heap.begin(), heap.end(), after);
        Head &h = heap.back();
        out.files.push_back(std::move(runs[h.run].files[h.pos]));
        if (++h.pos < runs[h.run].files.size())
            std::push_heap(heap.begin(), heap.end(), after);
        else
            heap.pop_back();
    }
    return out;
}

// Scans run on a pool of their own: a scan is often started from a task of the
// global pool, and waiting there for more work on the same pool could starve it.
QThreadPool *scanPool()
{
    static QThreadPool pool;
    return &pool;
}

// Walks the tree and sorts its audio files by name with the locale collation;
// names the collation holds equal keep the walk order. Walking is mostly system
// calls and collation the costly part of sorting, so both are spread over the
// cores: the first levels of the tree are split into parts that are walked and
// sorted on the pool, and the sorted parts are merged in one pass.
SortedRun walkAndSort(const QString &folder)
{
    QByteArray root = localpath::toBytes(folder);
    while (root.size() > 1 && root.endsWith('/'))
        root.chop(1);

    // Split: take the files of the first folders here, and their subfolders as
    // parts, until there are enough parts to keep every core busy.
    const int wanted = 4 * std::max(1, QThread::idealThreadCount());
    SortedRun top;
    Walker topWalker;
    std::vector<std::string> parts{root.toStdString()};
    std::vector<std::string> split;
    for (int depth = 0; depth < 3 && !parts.empty() && int(parts.size()) < wanted; ++depth) {
        std::vector<std::string> next;
        for (const std::string &part : parts) {
            const int fd = openFolder(part, depth == 0);
            if (fd < 0) {
                topWalker.unreadable.push_back({part, errno});
                continue;
            }
            topWalker.path = part;
            auto subfolders = topWalker.walk(fd, false);
            next.insert(next.end(), std::make_move_iterator(subfolders.begin()),
                        std::make_move_iterator(subfolders.end()));
        }
        parts = std::move(next);
    }
    const NameOrder collator(text::localeCollator());
    top.files = std::move(topWalker.files);
    top.folders = std::move(topWalker.folders);
    top.unreadable = std::move(topWalker.unreadable);
    sortRun(top, collator);

    // Results are moved into place by index, never copied.
    std::vector<SortedRun> runs(parts.size() + 1);
    runs[0] = std::move(top);
    parallelFor(*scanPool(), qsizetype(parts.size()), [&](qsizetype i) {
        SortedRun &run = runs[i + 1];
        const int fd = openFolder(parts[i], false);
        if (fd < 0) {
            run.unreadable.push_back({parts[i], errno});
            return;
        }
        Walker walker;
        walker.visited = topWalker.visited;
        walker.path = parts[i];
        walker.walk(fd);
        run.files = std::move(walker.files);
        run.folders = std::move(walker.folders);
        run.unreadable = std::move(walker.unreadable);
        sortRun(run, collator);
    });

    return merged(runs, collator);
}

QStringList decoded(const std::vector<std::string> &paths)
{
    QStringList out;
    out.reserve(qsizetype(paths.size()));
    for (const std::string &p : paths)
        out.append(localpath::fromBytes(p));
    return out;
}

} // namespace

FolderTree scanTree(const QString &folder)
{
    const SortedRun run = walkAndSort(folder);
    FolderTree tree;
    tree.audioFiles.reserve(qsizetype(run.files.size()));
    for (const FoundFile &f : run.files)
        tree.audioFiles.append(localpath::fromBytes(f.path));
    tree.folders = decoded(run.folders);
    return tree;
}

std::vector<std::string> scanFolderNative(const QString &folder, std::vector<UnreadableFolder> *unreadable)
{
    SortedRun run = walkAndSort(folder);
    if (unreadable)
        *unreadable = std::move(run.unreadable);
    std::vector<std::string> paths;
    paths.reserve(run.files.size());
    for (FoundFile &f : run.files)
        paths.push_back(std::move(f.path));
    return paths;
}

QStringList scanFolder(const QString &folder)
{
    return scanTree(folder).audioFiles;
}

QList<QUrl> scanFolder(const QUrl &folder, QStringList *folders)
{
    FolderTree tree = scanTree(localpath::pathOf(folder));
    if (folders)
        *folders = std::move(tree.folders);
    const QStringList &paths = tree.audioFiles;
    // Making a URL costs more than finding its file: spread over the cores.
    QList<QUrl> urls(paths.size());
    QUrl *out = urls.data();
    constexpr qsizetype block = 4096;
    parallelFor(*scanPool(), (paths.size() + block - 1) / block, [&](qsizetype b) {
        const qsizetype from = b * block;
        const qsizetype to = std::min(from + block, paths.size());
        for (qsizetype i = from; i < to; ++i)
            out[i] = localpath::fileUrl(paths.at(i));
    });
    return urls;
}

bool isInside(const QString &path, const QString &folder)
{
    if (!path.startsWith(folder))
        return false;
    return path.size() == folder.size() || folder.endsWith(u'/') || path.at(folder.size()) == u'/';
}
