// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <taglib/tiostream.h>

#include <QByteArray>
#include <QString>
#include <QtGlobal>

// A read-only TagLib stream over a file that answers TagLib's many small reads
// and seeks from a few cached windows: one pread fills a window, seeks cost no
// system call. TagLib's own stream pays a seek and a read for every kilobyte.
class TagLibStream : public TagLib::IOStream
{
public:
    explicit TagLibStream(const QString &path);
    ~TagLibStream() override;
    TagLibStream(const TagLibStream &) = delete;
    TagLibStream &operator=(const TagLibStream &) = delete;

    TagLib::FileName name() const override;
    TagLib::ByteVector readBlock(unsigned long length) override;
    void writeBlock(const TagLib::ByteVector &) override { }
    void insert(const TagLib::ByteVector &, unsigned long = 0, unsigned long = 0) override { }
    void removeBlock(unsigned long = 0, unsigned long = 0) override { }
    bool readOnly() const override { return true; }
    bool isOpen() const override { return m_fd >= 0; }
    void seek(long offset, Position p = Beginning) override;
    long tell() const override { return long(m_pos); }
    long length() override { return long(m_size); }
    void truncate(long) override { }

private:
    // Page-sized windows: TagLib reads a kilobyte at a time, mostly near the
    // start and the end of the file; larger windows only copy bytes nobody reads.
    static constexpr int windowCount = 3;
    static constexpr qint64 windowSize = 4096;
    struct Window
    {
        qint64 start = 0;
        qint64 size = 0;
        quint64 lastUse = 0;
        char bytes[windowSize];
    };

    qint64 readAt(qint64 offset, char *out, qint64 length) const;

    QByteArray m_name;
    int m_fd = -1;
    qint64 m_size = 0;
    qint64 m_pos = 0;
    Window m_windows[windowCount];
    quint64 m_uses = 0;
};
