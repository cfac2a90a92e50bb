// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The form in which search compares text: the Unicode default lower-case
// mapping (no locale), then canonical composition (NFC), so that a name
// spelled with a precomposed letter and one spelled with a combining accent
// are the same text. Accents are kept: "lume" is not "lumé".
QString foldForSearch(QStringView text);

// Many folded keys laid end to end as UTF-8 in one block, so a substring
// search over all of them is one scan of contiguous memory for the query's
// rarest bytes (memchr, or SSE2 sixteen positions at a time), each candidate
// checked in place. Built once, then read-only and safe to search from any
// thread.
class FoldedColumn
{
public:
    FoldedColumn();

    // Appends one key, already folded.
    void append(QStringView foldedKey);
    void reserve(size_t items, size_t bytes);

    size_t size() const { return m_starts.size() - 1; }

    // The first key at or after `from` that contains the UTF-8 needle as a
    // contiguous substring which neither begins nor ends inside a character
    // (a match must not leave a combining mark of the text behind, so "q"
    // does not match the "q" of "q̃"); size() when there is none.
    // An empty needle matches every key.
    size_t findNext(std::string_view needle, size_t from = 0) const;

private:
    bool matchesAt(size_t begin, size_t length, size_t item) const;
    // The key that holds byte `offset`, searching from key `hint` on.
    size_t itemAt(size_t offset, size_t hint) const;

    std::string m_bytes; // key 0, '\0', key 1, '\0', ...
    std::vector<uint32_t> m_starts; // key i is [m_starts[i], m_starts[i + 1] - 1)
    std::array<uint32_t, 256> m_byteCounts {};
};
