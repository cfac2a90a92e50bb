// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCollator>
#include <QString>

#include <string>
#include <string_view>

// Sorting many names in the user's locale order, fast.
//
// Most file and artist names are plain ASCII. For those, the locale collation
// (case-insensitive letters first, then lower case before upper case) is
// captured once in a small table, and a name's key is a byte string whose
// memcmp order is exactly the collator's order. Any comparison involving a
// name outside that range goes to the collator itself, so the order is always
// the collator's; the table only saves the cost of collating the common case.
// Locales whose rules reorder ASCII (contractions such as Danish "aa") never use
// the table.
class NameOrder
{
public:
    explicit NameOrder(const QCollator &collator);

    struct Key
    {
        std::string bytes; // memcmp-ordered key; empty when the name needs the collator
        QString name;      // the name itself, kept only when bytes is empty
    };

    Key key(std::string_view utf8Name) const;
    Key key(const QString &name) const;

    // Negative, zero or positive, as QCollator::compare.
    int compare(const Key &a, const Key &b) const;

    bool usesTable() const { return m_tableUsable; }

private:
    int collate(const Key &a, const Key &b) const;

    QCollator m_collator;
    bool m_tableUsable = false;
    unsigned char m_primary[128] = {};  // 0: not in the table
    unsigned char m_tertiary[128] = {};
    char16_t m_charOf[128 * 4] = {}; // primary * 4 + tertiary -> character
};
