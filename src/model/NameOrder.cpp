// SPDX-License-Identifier: GPL-3.0-or-later
#include "NameOrder.h"

#include <QLocale>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

// Languages whose collation leaves the printable ASCII range in the root order
// (no contractions or reordering of plain letters).
bool rootOrderForAscii(QLocale::Language language)
{
    switch (language) {
    case QLocale::C:
    case QLocale::English:
    case QLocale::German:
    case QLocale::French:
    case QLocale::Italian:
    case QLocale::Dutch:
    case QLocale::Portuguese:
    case QLocale::Spanish:
    case QLocale::Catalan:
    case QLocale::Irish:
    case QLocale::Indonesian:
    case QLocale::Malay:
    case QLocale::Japanese:
    case QLocale::Chinese:
    case QLocale::Korean:
    case QLocale::Russian:
    case QLocale::Ukrainian:
    case QLocale::Greek:
    case QLocale::Hebrew:
    case QLocale::Arabic:
        return true;
    default:
        return false;
    }
}

} // namespace

NameOrder::NameOrder(const QCollator &collator)
    : m_collator(collator)
{
    if (collator.caseSensitivity() != Qt::CaseSensitive || collator.numericMode()
        || collator.ignorePunctuation() || !rootOrderForAscii(collator.locale().language()))
        return;

    // Rank the printable characters with the collator itself: characters equal
    // when case is ignored share a primary rank; within such a group the
    // collator's order gives the tertiary rank.
    std::vector<QChar> chars;
    for (char16_t c = 0x20; c < 0x7f; ++c)
        chars.push_back(QChar(c));
    std::stable_sort(chars.begin(), chars.end(), [&](QChar a, QChar b) {
        return m_collator.compare(QStringView(&a, 1), QStringView(&b, 1)) < 0;
    });
    QCollator folded = collator;
    folded.setCaseSensitivity(Qt::CaseInsensitive);
    unsigned char primary = 0;
    unsigned char tertiary = 0;
    for (size_t i = 0; i < chars.size(); ++i) {
        const QChar c = chars[i];
        if (i > 0 && m_collator.compare(QStringView(&chars[i - 1], 1), QStringView(&c, 1)) == 0)
            return; // two characters the collator can't tell apart: don't guess
        if (i == 0 || folded.compare(QStringView(&chars[i - 1], 1), QStringView(&c, 1)) != 0) {
            ++primary;
            tertiary = 1;
        } else {
            ++tertiary;
        }
        if (tertiary >= 4)
            return;
        m_primary[c.unicode()] = primary;
        m_tertiary[c.unicode()] = tertiary;
        m_charOf[primary * 4 + tertiary] = c.unicode();
    }
    m_tableUsable = true;
}

NameOrder::Key NameOrder::key(std::string_view utf8Name) const
{
    Key k;
    if (m_tableUsable) {
        bool ascii = true;
        for (const char ch : utf8Name) {
            const auto c = static_cast<unsigned char>(ch);
            if (c >= 128 || m_primary[c] == 0) {
                ascii = false;
                break;
            }
        }
        if (ascii) {
            // Primary ranks, a 0 that makes a shorter name sort first, then the
            // tertiary ranks that decide between names equal but for case.
            k.bytes.resize(2 * utf8Name.size() + 1);
            char *p = k.bytes.data();
            for (const char ch : utf8Name)
                *p++ = char(m_primary[static_cast<unsigned char>(ch)]);
            *p++ = 0;
            for (const char ch : utf8Name)
                *p++ = char(m_tertiary[static_cast<unsigned char>(ch)]);
            if (!utf8Name.empty())
                return k;
            k.bytes.clear();
        }
    }
    k.name = QString::fromUtf8(utf8Name.data(), qsizetype(utf8Name.size()));
    return k;
}

NameOrder::Key NameOrder::key(const QString &name) const
{
    const QByteArray utf8 = name.toUtf8();
    return key(std::string_view(utf8.constData(), size_t(utf8.size())));
}

int NameOrder::collate(const Key &a, const Key &b) const
{
    // At least one side is outside the table. Table keys keep no text, but
    // their primary part spells the name's characters back through the ranks.
    auto text = [this](const Key &k) {
        if (k.bytes.empty())
            return k.name;
        const size_t n = (k.bytes.size() - 1) / 2;
        QString s(qsizetype(n), Qt::Uninitialized);
        for (size_t i = 0; i < n; ++i) {
            const auto p = static_cast<unsigned char>(k.bytes[i]);
            const auto t = static_cast<unsigned char>(k.bytes[n + 1 + i]);
            s[qsizetype(i)] = QChar(m_charOf[p * 4 + t]);
        }
        return s;
    };
    return m_collator.compare(text(a), text(b));
}

int NameOrder::compare(const Key &a, const Key &b) const
{
    if (!a.bytes.empty() && !b.bytes.empty()) {
        const size_t n = std::min(a.bytes.size(), b.bytes.size());
        const int c = std::memcmp(a.bytes.data(), b.bytes.data(), n);
        if (c != 0)
            return c;
        return a.bytes.size() < b.bytes.size() ? -1 : a.bytes.size() > b.bytes.size() ? 1 : 0;
    }
    return collate(a, b);
}
