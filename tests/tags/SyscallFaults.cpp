// SPDX-License-Identifier: GPL-3.0-or-later
#include "SyscallFaults.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tagio::faults {

namespace {
std::atomic<int> countdown[stepCount];
std::atomic<int> errors[stepCount];
std::atomic<qint64> partialBytes { 0 };
std::mutex actionsMutex;
std::function<void()> actions[stepCount];

bool shouldFail(Step step)
{
    std::function<void()> action;
    {
        std::lock_guard lock(actionsMutex);
        action = std::exchange(actions[step], nullptr);
    }
    if (action)
        action();
    // Counts down to 1, the call that fails; 0 stays 0.
    int n = countdown[step].load();
    while (n > 0 && !countdown[step].compare_exchange_weak(n, n - 1)) { }
    if (n != 1)
        return false;
    errno = errors[step].load();
    return true;
}
} // namespace

void inject(Step step, int nthCall, int err)
{
    errors[step] = err;
    countdown[step] = nthCall;
}

void whenCalled(Step step, std::function<void()> action)
{
    std::lock_guard lock(actionsMutex);
    actions[step] = std::move(action);
}

void clear()
{
    for (auto &n : countdown)
        n = 0;
    partialBytes = 0;
    std::lock_guard lock(actionsMutex);
    for (auto &a : actions)
        a = nullptr;
}

void setPartialWriteBytes(qint64 bytes)
{
    partialBytes = bytes;
}

} // namespace tagio::faults

using namespace tagio::faults;

extern "C" {

int __real_open(const char *path, int flags, ...);
int __real_mkostemps(char *pattern, int suffixLength, int flags);
ssize_t __real_read(int fd, void *buffer, size_t size);
ssize_t __real_write(int fd, const void *buffer, size_t size);
int __real_fsync(int fd);
int __real_syncfs(int fd);
int __real_rename(const char *from, const char *to);

int __wrap_open(const char *path, int flags, ...)
{
    va_list args;
    va_start(args, flags);
    const int mode = (flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE ? va_arg(args, int) : 0;
    va_end(args);
    if ((flags & O_TMPFILE) == O_TMPFILE && shouldFail(createTemporary))
        return -1;
    return __real_open(path, flags, mode);
}

int __wrap_mkostemps(char *pattern, int suffixLength, int flags)
{
    return shouldFail(createTemporary) ? -1 : __real_mkostemps(pattern, suffixLength, flags);
}

ssize_t __wrap_read(int fd, void *buffer, size_t size)
{
    return shouldFail(readWhole) ? -1 : __real_read(fd, buffer, size);
}

ssize_t __wrap_write(int fd, const void *buffer, size_t size)
{
    if (!shouldFail(writeData))
        return __real_write(fd, buffer, size);
    const int err = errno;
    const size_t partial = size_t(std::clamp<qint64>(partialBytes.load(), 0, qint64(size)));
    if (partial > 0)
        (void)__real_write(fd, buffer, partial);
    errno = err;
    return -1;
}

int __wrap_fsync(int fd)
{
    // Folders are flushed best-effort by the writer; only files count.
    struct stat st;
    if (::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode))
        return __real_fsync(fd);
    return shouldFail(syncFile) ? -1 : __real_fsync(fd);
}

int __wrap_syncfs(int fd)
{
    return shouldFail(syncFile) ? -1 : __real_syncfs(fd);
}

int __wrap_rename(const char *from, const char *to)
{
    return shouldFail(renameFile) ? -1 : __real_rename(from, to);
}

} // extern "C"
