// SPDX-License-Identifier: GPL-3.0-or-later
#include "TextUtil.h"

#include "LocalPath.h"

#include <QLocale>

namespace text {

namespace {

bool isHorizontalSpace(QChar c)
{
    return c == u'\t' || c.category() == QChar::Separator_Space;
}

bool isSpaceOrTab(QChar c)
{
    return c == u' ' || c == u'\t';
}

template<typename Pred>
QString trimmedBy(const QString &s, Pred pred)
{
    qsizetype begin = 0;
    qsizetype end = s.size();
    while (begin < end && pred(s.at(begin)))
        ++begin;
    while (end > begin && pred(s.at(end - 1)))
        --end;
    if (begin == 0 && end == s.size())
        return s;
    return s.mid(begin, end - begin);
}

QLocale collationLocale()
{
    QLocale locale;
    if (locale.language() == QLocale::C)
        return QLocale(QLocale::English, QLocale::UnitedStates);
    return locale;
}

} // namespace

QString trimmedHorizontal(const QString &s)
{
    return trimmedBy(s, isHorizontalSpace);
}

QString trimmedSpacesAndTabs(const QString &s)
{
    return trimmedBy(s, isSpaceOrTab);
}

std::optional<QString> nonEmptyTrimmed(const std::optional<QString> &s)
{
    if (!s)
        return std::nullopt;
    QString t = trimmedSpacesAndTabs(*s);
    if (t.isEmpty())
        return std::nullopt;
    return t;
}

QCollator localeCollator()
{
    QCollator collator(collationLocale());
    collator.setCaseSensitivity(Qt::CaseSensitive);
    collator.setNumericMode(false);
    return collator;
}

QCollator caseInsensitiveCollator()
{
    QCollator collator(collationLocale());
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

QString displayName(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    QString name = slash >= 0 ? path.mid(slash + 1) : path;
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot > 0)
        name.truncate(dot);
    return localpath::readable(name);
}

} // namespace text
