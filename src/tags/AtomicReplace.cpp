// SPDX-License-Identifier: GPL-3.0-or-later
#include "AtomicReplace.h"

#include "model/LocalPath.h"

#include <QFileInfo>
#include <QHash>
#include <QMutex>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

// Flushes done so far, per file system: a file written before a flush of its
// file system began is durable once that flush returns.
struct FlushClock
{
    QMutex mutex;
    QHash<dev_t, quint64> completed;
    quint64 ticks = 0;
};

FlushClock &flushClock()
{
    static FlushClock clock;
    return clock;
}

} // namespace

namespace {

QString systemError(int err)
{
    return QString::fromLocal8Bit(std::strerror(err));
}

bool writeAll(int fd, const char *data, qint64 size)
{
    qint64 done = 0;
    while (done < size) {
        const ssize_t n = ::write(fd, data + done, size_t(std::min<qint64>(size - done, 1 << 30)));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            if (n == 0)
                errno = EIO;
            return false;
        }
        done += n;
    }
    return true;
}

FileIdentity identityOf(const struct stat &st)
{
    return { st.st_dev, st.st_ino, st.st_size, st.st_mtim, st.st_ctim };
}

} // namespace

bool FileIdentity::operator==(const FileIdentity &o) const
{
    const auto same
        = [](const timespec &a, const timespec &b) { return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec; };
    return device == o.device && inode == o.inode && size == o.size && same(modified, o.modified)
        && same(changed, o.changed);
}

std::optional<WholeFile> readWholeFile(const QString &path, QString *why, int *errOut)
{
    const auto failed = [&](int err, const QString &what = {}) -> std::optional<WholeFile> {
        if (why)
            *why = what.isEmpty() ? QStringLiteral("cannot read %1: %2").arg(localpath::readable(path), systemError(err)) : what;
        if (errOut)
            *errOut = err;
        return std::nullopt;
    };
    // Non-blocking: opening a FIFO must not wait for a writer; it is refused below.
    const int fd = ::open(localpath::toBytes(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return failed(errno);
    const auto closeAndFail = [&](int err, const QString &what = {}) {
        ::close(fd);
        return failed(err, what);
    };
    struct stat st;
    if (::fstat(fd, &st) != 0)
        return closeAndFail(errno);
    if (S_ISDIR(st.st_mode))
        return closeAndFail(EISDIR);
    if (!S_ISREG(st.st_mode))
        return closeAndFail(EINVAL, QStringLiteral("%1 is not a regular file").arg(localpath::readable(path)));
    WholeFile file { QByteArray(st.st_size, Qt::Uninitialized), identityOf(st) };
    qint64 got = 0;
    while (got < file.data.size()) {
        const ssize_t n = ::read(fd, file.data.data() + got, size_t(file.data.size() - got));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return closeAndFail(errno);
        if (n == 0)
            break;
        got += n;
    }
    // A file that moved while it was read (still being copied, edited by
    // another program) is not the one the bytes describe.
    if (::fstat(fd, &st) != 0)
        return closeAndFail(errno);
    ::close(fd);
    if (got != file.data.size() || !(identityOf(st) == file.identity))
        return failed(ESTALE, QStringLiteral("%1 changed while it was read").arg(localpath::readable(path)));
    return file;
}

AtomicReplace::AtomicReplace(const QString &target)
{
    // Through a symbolic link the file it points at is replaced, not the link.
    const QString canonical = localpath::canonical(target);
    m_target = canonical.isEmpty() ? localpath::absolute(target) : canonical;
}

AtomicReplace::~AtomicReplace()
{
    if (!m_committed)
        discard();
}

bool AtomicReplace::fail(const QString &what, int err)
{
    m_error = QStringLiteral("%1: %2").arg(what, systemError(err));
    discard();
    return false;
}

void AtomicReplace::discard()
{
    if (!m_tempPath.isEmpty()) {
        ::unlink(localpath::toBytes(m_tempPath).constData());
        m_tempPath.clear();
    }
    // Closed after the unlink: the lock keeps removeLeftovers() off meanwhile.
    if (m_fd >= 0) {
        ::close(m_fd);
        m_fd = -1;
    }
}

bool AtomicReplace::create()
{
    const QFileInfo info(m_target);
    struct stat st;
    if (::stat(localpath::toBytes(m_target).constData(), &st) != 0)
        return fail(QStringLiteral("cannot look at %1").arg(localpath::readable(m_target)), errno);
    const QString suffix = info.suffix().isEmpty() ? QString() : QStringLiteral(".") + info.suffix();
    m_pattern = info.absolutePath() + QStringLiteral("/.") + info.completeBaseName()
        + QStringLiteral(".tarnwell-XXXXXX") + suffix;
    m_suffixLength = int(localpath::toBytes(suffix).size());
    const QString cannotCreate
        = QStringLiteral("cannot create a temporary file in %1").arg(localpath::readable(info.absolutePath()));
    // A file without a name where the file system allows it: should the
    // program be killed before the rename, nothing is left behind.
    if (!m_named) {
        m_fd = ::open(
            localpath::toBytes(info.absolutePath()).constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
        // Only a file system without O_TMPFILE gets a second way; a folder
        // that can't be written refuses both.
        if (m_fd < 0 && errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL)
            return fail(cannotCreate, errno);
    }
    m_anonymous = m_fd >= 0;
    if (!m_anonymous) {
        QByteArray pattern = localpath::toBytes(m_pattern);
        m_fd = ::mkostemps(pattern.data(), m_suffixLength, O_CLOEXEC);
        if (m_fd < 0)
            return fail(cannotCreate, errno);
        m_tempPath = localpath::fromBytes(pattern);
    }
    ::flock(m_fd, LOCK_EX | LOCK_NB);
    return copyAttributes(st);
}

bool AtomicReplace::copyAttributes(const struct stat &st)
{
    // Owner and group first: a change of owner clears the set-id bits.
    if (st.st_uid != ::geteuid() || st.st_gid != ::getegid()) {
        if (::fchown(m_fd, st.st_uid, st.st_gid) != 0)
            (void)::fchown(m_fd, uid_t(-1), st.st_gid); // a group the user belongs to
    }
    if (::fchmod(m_fd, st.st_mode & 07777) != 0)
        return fail(QStringLiteral("cannot set permissions on %1").arg(localpath::readable(m_target)), errno);

    // Extended attributes, the ACL among them (it sets the group bits anew, to
    // the same mask). Security labels are the system's to give.
    const QByteArray target = localpath::toBytes(m_target);
    QByteArray names(1024, Qt::Uninitialized);
    for (;;) {
        const ssize_t got = ::llistxattr(target.constData(), names.data(), size_t(names.size()));
        if (got >= 0) {
            names.resize(got);
            break;
        }
        if (errno == ENOTSUP)
            return true;
        const ssize_t size = errno == ERANGE ? ::llistxattr(target.constData(), nullptr, 0) : -1;
        if (size < 0)
            return fail(QStringLiteral("cannot list the attributes of %1").arg(localpath::readable(m_target)), errno);
        names.resize(size);
    }
    for (const QByteArray &name : names.split('\0')) {
        if (name.isEmpty() || name.startsWith("security."))
            continue;
        QByteArray value;
        ssize_t size = ::lgetxattr(target.constData(), name.constData(), nullptr, 0);
        if (size >= 0) {
            value.resize(size);
            size = ::lgetxattr(target.constData(), name.constData(), value.data(), size_t(value.size()));
        }
        if (size < 0 || ::fsetxattr(m_fd, name.constData(), value.constData(), size_t(size), 0) != 0)
            return fail(
                QStringLiteral("cannot keep the attribute %1 of %2").arg(QString::fromLatin1(name), localpath::readable(m_target)),
                errno);
    }
    return true;
}

bool AtomicReplace::linkAnonymous()
{
    const QByteArray fdPath = "/proc/self/fd/" + QByteArray::number(m_fd);
    for (int attempt = 0; attempt < 100; ++attempt) {
        QByteArray name = localpath::toBytes(m_pattern);
        const qsizetype x = name.size() - m_suffixLength - 6;
        static constexpr char letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
        for (qsizetype i = 0; i < 6; ++i)
            name[x + i] = letters[QRandomGenerator::global()->bounded(int(sizeof letters - 1))];
        if (::linkat(AT_FDCWD, fdPath.constData(), AT_FDCWD, name.constData(), AT_SYMLINK_FOLLOW) == 0) {
            m_tempPath = localpath::fromBytes(name);
            return true;
        }
        if (errno != EEXIST)
            return false;
    }
    return false;
}

bool AtomicReplace::write(QByteArrayView data)
{
    if (m_fd < 0)
        return fail(QStringLiteral("no temporary file"), EBADF);
    if (!writeAll(m_fd, data.data(), data.size()))
        return fail(QStringLiteral("cannot write the new %1").arg(localpath::readable(m_target)), errno);
    FlushClock &clock = flushClock();
    QMutexLocker lock(&clock.mutex);
    m_writtenAt = clock.ticks;
    return true;
}

bool AtomicReplace::commit()
{
    if (m_fd < 0)
        return fail(QStringLiteral("no temporary file"), EBADF);
    if (m_flushData && ::fsync(m_fd) != 0)
        return fail(QStringLiteral("cannot flush the new %1 to disk").arg(localpath::readable(m_target)), errno);
    if (m_anonymous && !linkAnonymous())
        return fail(QStringLiteral("cannot name the new %1").arg(localpath::readable(m_target)), errno);
    // The last look before the rename: the file must still be the one read.
    if (m_expected) {
        struct stat st;
        if (::stat(localpath::toBytes(m_target).constData(), &st) != 0 || !(identityOf(st) == *m_expected)) {
            m_targetChanged = true;
            m_error = QStringLiteral("%1 changed while saving; nothing was written").arg(localpath::readable(m_target));
            discard();
            return false;
        }
    }
    if (::rename(localpath::toBytes(m_tempPath).constData(), localpath::toBytes(m_target).constData()) != 0)
        return fail(QStringLiteral("cannot replace %1").arg(localpath::readable(m_target)), errno);
    m_tempPath.clear();
    m_committed = true;
    ::close(m_fd);
    m_fd = -1;
    // The rename itself is durable only once the folder is on disk.
    if (m_syncFolder)
        syncFolder(QFileInfo(m_target).absolutePath());
    return true;
}

bool AtomicReplace::flushFileSystem()
{
    if (m_fd < 0)
        return fail(QStringLiteral("no temporary file"), EBADF);
    struct stat st;
    if (::fstat(m_fd, &st) != 0)
        return fail(QStringLiteral("cannot look at the new %1").arg(localpath::readable(m_target)), errno);
    FlushClock &clock = flushClock();
    {
        QMutexLocker lock(&clock.mutex);
        if (clock.completed.value(st.st_dev) > m_writtenAt)
            return true;
    }
    quint64 startedAt;
    {
        QMutexLocker lock(&clock.mutex);
        startedAt = ++clock.ticks;
    }
    if (::syncfs(m_fd) != 0)
        return fail(QStringLiteral("cannot flush the new %1 to disk").arg(localpath::readable(m_target)), errno);
    QMutexLocker lock(&clock.mutex);
    quint64 &done = clock.completed[st.st_dev];
    done = std::max(done, startedAt);
    return true;
}

void AtomicReplace::removeLeftovers(const QString &folder)
{
    static const QRegularExpression ours(QStringLiteral("^\\..+\\.tarnwell-[A-Za-z0-9]{6}(\\.[^.]*)?$"));
    const QByteArray path = localpath::toBytes(folder);
    DIR *dir = ::opendir(path.constData());
    if (!dir)
        return;
    const int dirFd = ::dirfd(dir);
    while (const dirent *entry = ::readdir(dir)) {
        // Matched on the readable name: the pattern needs valid text, and our
        // part of the name is plain ASCII.
        if (entry->d_name[0] != '.' || !ours.match(localpath::readable(localpath::fromBytes(entry->d_name))).hasMatch())
            continue;
        const int fd = ::openat(dirFd, entry->d_name, O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
        if (fd < 0)
            continue;
        struct stat opened, named;
        // Unlocked: its writer is gone. The name must still lead to the file locked.
        if (::flock(fd, LOCK_EX | LOCK_NB) == 0 && ::fstat(fd, &opened) == 0 && S_ISREG(opened.st_mode)
            && ::fstatat(dirFd, entry->d_name, &named, AT_SYMLINK_NOFOLLOW) == 0
            && opened.st_ino == named.st_ino && opened.st_dev == named.st_dev)
            ::unlinkat(dirFd, entry->d_name, 0);
        ::close(fd);
    }
    ::closedir(dir);
}

void syncFolder(const QString &folder)
{
    const int dir = ::open(localpath::toBytes(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
}
