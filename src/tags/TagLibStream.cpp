// SPDX-License-Identifier: GPL-3.0-or-later
#include "TagLibStream.h"

#include "model/LocalPath.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

TagLibStream::TagLibStream(const QString &path)
    : m_name(localpath::toBytes(path))
{
    // Non-blocking: a FIFO must not hold the reader up; it is refused below.
    m_fd = ::open(m_name.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat st;
    if (m_fd >= 0 && (::fstat(m_fd, &st) != 0 || !S_ISREG(st.st_mode))) {
        ::close(m_fd);
        m_fd = -1;
    }
    if (m_fd >= 0)
        m_size = st.st_size;
}

TagLibStream::~TagLibStream()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

TagLib::FileName TagLibStream::name() const
{
    return m_name.constData();
}

qint64 TagLibStream::readAt(qint64 offset, char *out, qint64 length) const
{
    qint64 got = 0;
    while (got < length) {
        const ssize_t n = ::pread(m_fd, out + got, size_t(length - got), offset + got);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        got += n;
    }
    return got;
}

TagLib::ByteVector TagLibStream::readBlock(unsigned long length)
{
    if (m_fd < 0 || m_pos >= m_size || length == 0)
        return {};
    const qint64 want = std::min<qint64>(qint64(length), m_size - m_pos);
    for (Window &w : m_windows) {
        if (w.size > 0 && m_pos >= w.start && m_pos + want <= w.start + w.size) {
            w.lastUse = ++m_uses;
            TagLib::ByteVector v(w.bytes + (m_pos - w.start), uint(want));
            m_pos += want;
            return v;
        }
    }
    if (want >= windowSize) {
        TagLib::ByteVector v(uint(want), '\0');
        const qint64 got = readAt(m_pos, v.data(), want);
        v.resize(uint(got));
        m_pos += got;
        return v;
    }
    // Refill the least recently used window from here on.
    Window *oldest = &m_windows[0];
    for (Window &w : m_windows) {
        if (w.lastUse < oldest->lastUse)
            oldest = &w;
    }
    const qint64 fill = std::min(windowSize, m_size - m_pos);
    oldest->start = m_pos;
    oldest->size = readAt(m_pos, oldest->bytes, fill);
    oldest->lastUse = ++m_uses;
    const qint64 got = std::min<qint64>(want, oldest->size);
    TagLib::ByteVector v(oldest->bytes, uint(got));
    m_pos += got;
    return v;
}

void TagLibStream::seek(long offset, Position p)
{
    qint64 base = 0;
    if (p == Current)
        base = m_pos;
    else if (p == End)
        base = m_size;
    // Like fseek: a position before the start is refused, one past the end allowed.
    const qint64 to = base + offset;
    if (to >= 0)
        m_pos = to;
}
