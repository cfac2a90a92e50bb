// SPDX-License-Identifier: GPL-3.0-or-later
#include "FoldedColumn.h"

#include <QChar>

#include <algorithm>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

QString foldForSearch(QStringView text)
{
    // Plain ASCII is by far the common case and needs neither tables nor
    // normalisation.
    bool ascii = true;
    for (const QChar c : text) {
        if (c.unicode() >= 0x80) {
            ascii = false;
            break;
        }
    }
    if (ascii) {
        QString out(text.size(), Qt::Uninitialized);
        QChar *p = out.data();
        for (const QChar c : text) {
            const char16_t u = c.unicode();
            *p++ = QChar(u >= u'A' && u <= u'Z' ? char16_t(u + 32) : u);
        }
        return out;
    }
    // Lower-casing first: the case mapping of a decomposed letter may itself be
    // decomposed, and composition afterwards makes both spellings one text.
    return text.toString().toLower().normalized(QString::NormalizationForm_C);
}

namespace {

// The code point that starts at p (valid UTF-8 of at most `available` bytes).
char32_t decodeAt(const char *p, size_t available)
{
    const auto b0 = static_cast<unsigned char>(p[0]);
    auto cont = [&](size_t i) {
        return i < available ? char32_t(static_cast<unsigned char>(p[i]) & 0x3f) : char32_t(0);
    };
    if (b0 < 0x80)
        return b0;
    if (b0 < 0xe0)
        return (char32_t(b0 & 0x1f) << 6) | cont(1);
    if (b0 < 0xf0)
        return (char32_t(b0 & 0x0f) << 12) | (cont(1) << 6) | cont(2);
    return (char32_t(b0 & 0x07) << 18) | (cont(1) << 12) | (cont(2) << 6) | cont(3);
}

bool isCombining(char32_t c)
{
    return c >= 0x300 && QChar::isMark(c);
}

} // namespace

FoldedColumn::FoldedColumn()
    : m_starts { 0 }
{
}

void FoldedColumn::reserve(size_t items, size_t bytes)
{
    m_starts.reserve(items + 1);
    m_bytes.reserve(bytes);
}

void FoldedColumn::append(QStringView foldedKey)
{
    const QByteArray utf8 = foldedKey.toUtf8();
    m_bytes.append(utf8.constData(), size_t(utf8.size()));
    m_bytes.push_back('\0');
    for (const char ch : utf8)
        ++m_byteCounts[static_cast<unsigned char>(ch)];
    m_starts.push_back(uint32_t(m_bytes.size()));
}

bool FoldedColumn::matchesAt(size_t begin, size_t length, size_t item) const
{
    // A query containing the separator could match across two keys.
    const size_t keyEnd = m_starts[item + 1] - 1;
    if (begin + length > keyEnd)
        return false;
    const char *base = m_bytes.data();
    if (begin + length < keyEnd && isCombining(decodeAt(base + begin + length, keyEnd - begin - length)))
        return false;
    if (begin > m_starts[item] && isCombining(decodeAt(base + begin, length)))
        return false;
    return true;
}

size_t FoldedColumn::itemAt(size_t offset, size_t hint) const
{
    return size_t(std::upper_bound(m_starts.begin() + qsizetype(hint) + 1, m_starts.end(), uint32_t(offset))
               - m_starts.begin())
        - 1;
}

size_t FoldedColumn::findNext(std::string_view needle, size_t from) const
{
    const size_t count = size();
    if (from >= count)
        return count;
    if (needle.empty())
        return from;

    // The needle's rarest bytes in this column decide where to look: a
    // candidate must have both at their places, and is then checked in full.
    const auto rarity = [&](size_t k) { return m_byteCounts[static_cast<unsigned char>(needle[k])]; };
    size_t rare = 0;
    for (size_t k = 1; k < needle.size(); ++k) {
        if (rarity(k) < rarity(rare))
            rare = k;
    }
    if (rarity(rare) == 0 && needle[rare] != '\0')
        return count;

    const char *base = m_bytes.data();
    const size_t end = m_bytes.size();
    const size_t n = needle.size();
    size_t item = from;
    const auto check = [&](size_t begin) {
        if (begin + n > end || std::memcmp(base + begin, needle.data(), n) != 0)
            return false;
        item = itemAt(begin, item);
        return matchesAt(begin, n, item);
    };

    if (n == 1) {
        for (size_t pos = m_starts[from]; pos < end;) {
            const void *hit = std::memchr(base + pos, needle[0], end - pos);
            if (!hit)
                return count;
            const size_t at = size_t(static_cast<const char *>(hit) - base);
            if (check(at))
                return item;
            pos = at + 1;
        }
        return count;
    }

    size_t other = rare == 0 ? 1 : 0;
    for (size_t k = 0; k < n; ++k) {
        if (k != rare && rarity(k) < rarity(other))
            other = k;
    }
    const size_t lo = std::min(rare, other);
    const size_t hi = std::max(rare, other);
    size_t begin = m_starts[from];
#ifdef __SSE2__
    // Sixteen candidate positions at a time: compare the bytes at both places
    // with one instruction each and look closer only where both agree.
    const __m128i wantLo = _mm_set1_epi8(needle[lo]);
    const __m128i wantHi = _mm_set1_epi8(needle[hi]);
    for (; begin + hi + 16 <= end; begin += 16) {
        const __m128i atLo = _mm_loadu_si128(reinterpret_cast<const __m128i *>(base + begin + lo));
        const __m128i atHi = _mm_loadu_si128(reinterpret_cast<const __m128i *>(base + begin + hi));
        unsigned mask = unsigned(
            _mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi8(atLo, wantLo), _mm_cmpeq_epi8(atHi, wantHi))));
        while (mask) {
            if (check(begin + size_t(__builtin_ctz(mask))))
                return item;
            mask &= mask - 1;
        }
    }
#endif
    for (; begin + n <= end; ++begin) {
        if (base[begin + lo] == needle[lo] && base[begin + hi] == needle[hi] && check(begin))
            return item;
    }
    return count;
}
