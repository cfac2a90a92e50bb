// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

// Reads ranges of a file through a small window, so that the block headers and
// short bodies near each other cost one read.
class FileWindow
{
public:
    explicit FileWindow(const QString &path);
    ~FileWindow();
    FileWindow(const FileWindow &) = delete;
    FileWindow &operator=(const FileWindow &) = delete;

    bool isOpen() const { return m_fd >= 0 && m_size >= 0; }
    qint64 size() const { return m_size; }

    // The bytes [offset, offset + length) of the file; nothing when the read fails
    // or the range lies beyond the end.
    std::optional<QByteArrayView> read(qint64 offset, qint64 length);

private:
    static constexpr qint64 chunk = 8192;
    int m_fd = -1;
    qint64 m_size = -1;
    qint64 m_start = 0;
    QByteArray m_window;
};

// The same reads over bytes already in memory.
class MemoryWindow
{
public:
    explicit MemoryWindow(QByteArrayView bytes)
        : m_bytes(bytes)
    {
    }
    bool isOpen() const { return true; }
    qint64 size() const { return m_bytes.size(); }
    std::optional<QByteArrayView> read(qint64 offset, qint64 length) const
    {
        if (offset < 0 || length < 0 || offset > size() || length > size() - offset)
            return std::nullopt;
        return m_bytes.sliced(offset, length);
    }

private:
    QByteArrayView m_bytes;
};
