// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <cstdint>
#include <optional>

// A read position over a byte buffer whose reads cannot leave the buffer.
// Every read checks the requested length against remaining() (never
// pos + len > size, which can wrap) and answers nothing when it doesn't fit;
// a failed read leaves the position where it was.
class ByteCursor
{
public:
    explicit ByteCursor(QByteArrayView bytes)
        : m_bytes(bytes)
    {
    }

    qsizetype position() const { return m_pos; }
    qsizetype remaining() const { return m_bytes.size() - m_pos; }
    bool atEnd() const { return m_pos >= m_bytes.size(); }

    bool skip(quint64 n)
    {
        if (n > quint64(remaining()))
            return false;
        m_pos += qsizetype(n);
        return true;
    }

    std::optional<QByteArrayView> take(quint64 n)
    {
        if (n > quint64(remaining()))
            return std::nullopt;
        const QByteArrayView v = m_bytes.sliced(m_pos, qsizetype(n));
        m_pos += qsizetype(n);
        return v;
    }

    std::optional<quint8> u8()
    {
        if (remaining() < 1)
            return std::nullopt;
        return quint8(m_bytes[m_pos++]);
    }

    std::optional<quint32> u24be() { return bigEndian(3); }
    std::optional<quint32> u32be() { return bigEndian(4); }

    std::optional<quint64> u64be()
    {
        const auto hi = bigEndian(4);
        if (!hi)
            return std::nullopt;
        const auto lo = bigEndian(4);
        if (!lo) {
            m_pos -= 4;
            return std::nullopt;
        }
        return (quint64(*hi) << 32) | *lo;
    }

    std::optional<quint32> u32le()
    {
        if (remaining() < 4)
            return std::nullopt;
        quint32 v = 0;
        for (int i = 3; i >= 0; --i)
            v = (v << 8) | quint8(m_bytes[m_pos + i]);
        m_pos += 4;
        return v;
    }

    // ID3v2 size: 7 bits from each of four bytes, most significant first.
    std::optional<quint32> synchsafe32()
    {
        if (remaining() < 4)
            return std::nullopt;
        quint32 v = 0;
        for (int i = 0; i < 4; ++i)
            v = (v << 7) | (quint8(m_bytes[m_pos + i]) & 0x7F);
        m_pos += 4;
        return v;
    }

private:
    std::optional<quint32> bigEndian(int n)
    {
        if (remaining() < n)
            return std::nullopt;
        quint32 v = 0;
        for (int i = 0; i < n; ++i)
            v = (v << 8) | quint8(m_bytes[m_pos + i]);
        m_pos += n;
        return v;
    }

    QByteArrayView m_bytes;
    qsizetype m_pos = 0;
};
