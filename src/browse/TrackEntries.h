// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "SearchResults.h"

#include <QList>

#include <iterator>
#include <memory>
#include <vector>

// The entries of a search index, in library order: a list that copies in
// constant time and grows without copying what it holds. Entries sit in
// blocks of a few thousand that copies share; an append copies at most the
// last block, and only when another list still shares it. So a song added to
// a 100,000-song index costs the songs of one block, not the whole library.
class TrackEntries
{
public:
    static constexpr qsizetype blockSize = 4096;

    qsizetype size() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }
    const TrackSearchEntry &at(qsizetype i) const { return m_blocks[size_t(i / blockSize)]->at(i % blockSize); }

    void append(QList<TrackSearchEntry> more)
    {
        // A list no one else holds gives its entries up; a shared one is copied.
        const bool own = more.isDetached();
        for (qsizetype i = 0; i < more.size();) {
            if (m_size % blockSize == 0) {
                m_blocks.push_back(std::make_shared<Block>());
                m_blocks.back()->reserve(blockSize);
            } else if (m_blocks.back().use_count() > 1) {
                // Shared with an older list: the block is copied, never changed.
                auto copy = std::make_shared<Block>();
                copy->reserve(blockSize);
                copy->append(*m_blocks.back());
                m_blocks.back() = std::move(copy);
            }
            Block &block = *m_blocks.back();
            const qsizetype n = std::min(blockSize - m_size % blockSize, more.size() - i);
            for (const qsizetype end = i + n; i < end; ++i) {
                if (own)
                    block.append(std::move(more[i]));
                else
                    block.append(more.at(i));
            }
            m_size += n;
        }
    }

    QList<TrackSearchEntry> toList() const
    {
        QList<TrackSearchEntry> list;
        list.reserve(m_size);
        for (const auto &block : m_blocks)
            list.append(*block);
        return list;
    }

    class const_iterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = TrackSearchEntry;
        using difference_type = qsizetype;
        using pointer = const TrackSearchEntry *;
        using reference = const TrackSearchEntry &;

        const_iterator() = default;
        const_iterator(const TrackEntries *list, qsizetype i)
            : m_list(list)
            , m_i(i)
        {
        }
        reference operator*() const { return m_list->at(m_i); }
        pointer operator->() const { return &m_list->at(m_i); }
        const_iterator &operator++()
        {
            ++m_i;
            return *this;
        }
        const_iterator operator++(int)
        {
            const const_iterator before = *this;
            ++m_i;
            return before;
        }
        bool operator==(const const_iterator &other) const { return m_i == other.m_i; }

    private:
        const TrackEntries *m_list = nullptr;
        qsizetype m_i = 0;
    };
    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, m_size}; }

private:
    using Block = QList<TrackSearchEntry>;
    std::vector<std::shared_ptr<Block>> m_blocks;
    qsizetype m_size = 0;
};
