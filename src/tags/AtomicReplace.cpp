// SPDX-License-Identifier: GPL-3.0-or-later
#include "AtomicReplace.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMutex>
#include <QRandomGenerator>

#include <atomic>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
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

namespace tagio::faults {

namespace {
std::atomic<int> countdown[stepCount];
std::atomic<int> errors[stepCount];
std::atomic<qint64> partialBytes { 0 };
} // namespace

void inject(Step step, int nthCall, int err)
{
    countdown[step] = nthCall;
    errors[step] = err;
}

void clear()
{
    for (int i = 0; i < stepCount; ++i)
        countdown[i] = 0;
    partialBytes = 0;
}

bool shouldFail(Step step)
{
    int n = countdown[step].load();
    while (n > 0) {
        if (countdown[step].compare_exchange_weak(n, n - 1)) {
            if (n == 1) {
                errno = errors[step].load();
                return true;
            }
            return false;
        }
    }
    return false;
}

void setPartialWriteBytes(qint64 bytes)
{
    partialBytes = bytes;
}

qint64 partialWriteBytes()
{
    return partialBytes;
}

} // namespace tagio::faults

namespace {

QString systemError(int err)
{
    return QString::fromLocal8Bit(std::strerror(err));
}

bool writeAll(int fd, const char *data, qint64 size)
{
    qint64 done = 0;
    while (done < size) {
        if (tagio::faults::shouldFail(tagio::faults::writeData)) {
            const int err = errno;
            const qint64 partial = std::min(tagio::faults::partialWriteBytes(), size - done);
            if (partial > 0 && ::write(fd, data + done, size_t(partial)) < 0)
                return false;
            errno = err;
            return false;
        }
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

} // namespace

std::optional<QByteArray> readWholeFile(const QString &path, QString *why)
{
    const auto failed = [&](int err) -> std::optional<QByteArray> {
        if (why)
            *why = QStringLiteral("cannot read %1: %2").arg(path, systemError(err));
        return std::nullopt;
    };
    if (tagio::faults::shouldFail(tagio::faults::readWhole))
        return failed(errno);
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return failed(errno);
    struct stat st;
    if (::fstat(fd, &st) != 0) {
        const int err = errno;
        ::close(fd);
        return failed(err);
    }
    if (!S_ISREG(st.st_mode)) {
        ::close(fd);
        return failed(S_ISDIR(st.st_mode) ? EISDIR : EINVAL);
    }
    QByteArray data;
    data.resize(st.st_size);
    qint64 got = 0;
    while (got < data.size()) {
        const ssize_t n = ::read(fd, data.data() + got, size_t(data.size() - got));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            const int err = errno;
            ::close(fd);
            return failed(err);
        }
        if (n == 0)
            break; // the file shrank while we read it; take what is there
        got += n;
    }
    ::close(fd);
    data.resize(got);
    return data;
}

AtomicReplace::AtomicReplace(const QString &target)
{
    // Through a symbolic link the file it points at is replaced, not the link.
    const QFileInfo info(target);
    const QString canonical = info.canonicalFilePath();
    m_target = canonical.isEmpty() ? info.absoluteFilePath() : canonical;
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
    if (m_fd >= 0) {
        ::close(m_fd);
        m_fd = -1;
    }
    if (!m_tempPath.isEmpty()) {
        ::unlink(QFile::encodeName(m_tempPath).constData());
        m_tempPath.clear();
    }
}

bool AtomicReplace::create()
{
    const QFileInfo info(m_target);
    struct stat st;
    if (::stat(QFile::encodeName(m_target).constData(), &st) != 0)
        return fail(QStringLiteral("cannot look at %1").arg(m_target), errno);
    const QString suffix = info.suffix().isEmpty() ? QString() : QStringLiteral(".") + info.suffix();
    m_pattern = info.absolutePath() + QStringLiteral("/.") + info.completeBaseName()
        + QStringLiteral(".tarnwell-XXXXXX") + suffix;
    m_suffixLength = int(QFile::encodeName(suffix).size());
    if (tagio::faults::shouldFail(tagio::faults::createTemporary))
        return fail(QStringLiteral("cannot create a temporary file in %1").arg(info.absolutePath()), errno);
    // A file without a name where the file system allows it: should the
    // program be killed before the rename, nothing is left behind.
    if (!m_named)
        m_fd = ::open(QFile::encodeName(info.absolutePath()).constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
    m_anonymous = m_fd >= 0;
    if (!m_anonymous) {
        QByteArray pattern = QFile::encodeName(m_pattern);
        m_fd = ::mkostemps(pattern.data(), m_suffixLength, O_CLOEXEC);
        if (m_fd < 0)
            return fail(QStringLiteral("cannot create a temporary file in %1").arg(info.absolutePath()), errno);
        m_tempPath = QFile::decodeName(pattern);
    }
    // The new file must look like the old one: same permission bits, and the
    // same owner when we are allowed to give it (running as root).
    if (::fchmod(m_fd, st.st_mode & 07777) != 0)
        return fail(QStringLiteral("cannot set permissions on %1").arg(m_target), errno);
    if (::geteuid() == 0 && (st.st_uid != ::geteuid() || st.st_gid != ::getegid()))
        (void)::fchown(m_fd, st.st_uid, st.st_gid);
    return true;
}

bool AtomicReplace::linkAnonymous()
{
    const QByteArray fdPath = "/proc/self/fd/" + QByteArray::number(m_fd);
    for (int attempt = 0; attempt < 100; ++attempt) {
        QByteArray name = QFile::encodeName(m_pattern);
        const qsizetype x = name.size() - m_suffixLength - 6;
        static constexpr char letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
        for (qsizetype i = 0; i < 6; ++i)
            name[x + i] = letters[QRandomGenerator::global()->bounded(int(sizeof letters - 1))];
        if (::linkat(AT_FDCWD, fdPath.constData(), AT_FDCWD, name.constData(), AT_SYMLINK_FOLLOW) == 0) {
            m_tempPath = QFile::decodeName(name);
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
        return fail(QStringLiteral("cannot write the new %1").arg(m_target), errno);
    FlushClock &clock = flushClock();
    QMutexLocker lock(&clock.mutex);
    m_writtenAt = clock.ticks;
    return true;
}

bool AtomicReplace::commit()
{
    if (m_fd < 0)
        return fail(QStringLiteral("no temporary file"), EBADF);
    if (m_flushData && (tagio::faults::shouldFail(tagio::faults::syncFile) || ::fsync(m_fd) != 0))
        return fail(QStringLiteral("cannot flush the new %1 to disk").arg(m_target), errno);
    if (m_anonymous && !linkAnonymous())
        return fail(QStringLiteral("cannot name the new %1").arg(m_target), errno);
    if (::close(m_fd) != 0) {
        m_fd = -1;
        return fail(QStringLiteral("cannot close the new %1").arg(m_target), errno);
    }
    m_fd = -1;
    if (tagio::faults::shouldFail(tagio::faults::renameFile)
        || ::rename(QFile::encodeName(m_tempPath).constData(), QFile::encodeName(m_target).constData()) != 0)
        return fail(QStringLiteral("cannot replace %1").arg(m_target), errno);
    m_tempPath.clear();
    m_committed = true;
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
        return fail(QStringLiteral("cannot look at the new %1").arg(m_target), errno);
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
    if (tagio::faults::shouldFail(tagio::faults::syncFile) || ::syncfs(m_fd) != 0)
        return fail(QStringLiteral("cannot flush the new %1 to disk").arg(m_target), errno);
    QMutexLocker lock(&clock.mutex);
    quint64 &done = clock.completed[st.st_dev];
    done = std::max(done, startedAt);
    return true;
}

void syncFolder(const QString &folder)
{
    const int dir = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
}
