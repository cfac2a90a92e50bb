// SPDX-License-Identifier: GPL-3.0-or-later
#include "FileWindow.h"

#include "model/LocalPath.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

FileWindow::FileWindow(const QString &path)
{
    // Non-blocking: a FIFO must not hold the reader up; it is refused below.
    m_fd = ::open(localpath::toBytes(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat st;
    if (m_fd >= 0 && ::fstat(m_fd, &st) == 0 && S_ISREG(st.st_mode))
        m_size = st.st_size;
}

FileWindow::~FileWindow()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

std::optional<QByteArrayView> FileWindow::read(qint64 offset, qint64 length)
{
    if (offset < 0 || length < 0 || offset > m_size || length > m_size - offset)
        return std::nullopt;
    if (offset >= m_start && offset + length <= m_start + m_window.size())
        return QByteArrayView(m_window).sliced(offset - m_start, length);
    const qint64 want = std::min(std::max(length, qint64(chunk)), m_size - offset);
    m_window.resize(want);
    qint64 got = 0;
    while (got < want) {
        const ssize_t n = ::pread(m_fd, m_window.data() + got, size_t(want - got), offset + got);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        got += n;
    }
    m_window.resize(got);
    m_start = offset;
    if (got < length)
        return std::nullopt;
    return QByteArrayView(m_window).first(length);
}
