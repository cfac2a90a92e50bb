// SPDX-License-Identifier: GPL-3.0-or-later
#include "FolderScan.h"

#include "model/TextUtil.h"

#include <QCollatorSortKey>
#include <QFile>

#include <algorithm>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

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

struct Walker
{
    FolderTree tree;
    std::set<std::pair<dev_t, ino_t>> visited; // stops loops through bind mounts

    void walk(int dirFd, const QByteArray &path)
    {
        struct stat st;
        if (fstat(dirFd, &st) != 0 || !visited.emplace(st.st_dev, st.st_ino).second) {
            close(dirFd);
            return;
        }
        DIR *dir = fdopendir(dirFd);
        if (!dir) {
            close(dirFd);
            return;
        }
        tree.folders.append(QFile::decodeName(path));

        struct Entry
        {
            QByteArray name;
            bool isDir;
        };
        std::vector<Entry> entries;
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
            if (type == DT_DIR)
                entries.push_back({QByteArray(name, qsizetype(len)), true});
            else if (type == DT_REG && hasAudioExtension(name, len))
                entries.push_back({QByteArray(name, qsizetype(len)), false});
        }
        std::sort(entries.begin(), entries.end(),
                  [](const Entry &a, const Entry &b) { return a.name < b.name; });

        for (const Entry &e : entries) {
            QByteArray child = path;
            if (!child.endsWith('/'))
                child.append('/');
            child.append(e.name);
            if (!e.isDir) {
                tree.audioFiles.append(QFile::decodeName(child));
                continue;
            }
            const int childFd = openat(dirfd(dir), e.name.constData(),
                                       O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (childFd >= 0)
                walk(childFd, child);
        }
        closedir(dir);
    }
};

} // namespace

void sortByFileName(QStringList &paths)
{
    const QCollator collator = text::localeCollator();
    std::vector<std::pair<QCollatorSortKey, qsizetype>> keys;
    keys.reserve(paths.size());
    for (qsizetype i = 0; i < paths.size(); ++i) {
        const QString &p = paths.at(i);
        const QStringView name = QStringView(p).sliced(p.lastIndexOf(u'/') + 1);
        keys.emplace_back(collator.sortKey(name.toString()), i);
    }
    std::stable_sort(keys.begin(), keys.end(), [](const auto &a, const auto &b) {
        return a.first.compare(b.first) < 0;
    });
    QStringList sorted;
    sorted.reserve(paths.size());
    for (const auto &k : keys)
        sorted.append(std::move(paths[k.second]));
    paths = std::move(sorted);
}

FolderTree scanTree(const QString &folder)
{
    Walker walker;
    QByteArray root = QFile::encodeName(folder);
    while (root.size() > 1 && root.endsWith('/'))
        root.chop(1);
    const int fd = open(root.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return {};
    walker.walk(fd, root);
    sortByFileName(walker.tree.audioFiles);
    return std::move(walker.tree);
}

QStringList scanFolder(const QString &folder)
{
    return scanTree(folder).audioFiles;
}

QList<QUrl> scanFolder(const QUrl &folder)
{
    const QStringList paths = scanFolder(folder.toLocalFile());
    QList<QUrl> urls;
    urls.reserve(paths.size());
    for (const QString &p : paths)
        urls.append(QUrl::fromLocalFile(p));
    return urls;
}
