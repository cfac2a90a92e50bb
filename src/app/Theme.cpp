// SPDX-License-Identifier: GPL-3.0-or-later
#include "Theme.h"

#include "Motion.h"

#include <QFontDatabase>

Theme::Theme(QObject *parent)
    : QObject(parent)
{
}

void Theme::setCurrent(int index)
{
    const auto themes = palette::allThemes();
    const AppTheme theme = index >= 0 && index < themes.size() ? themes[index] : AppTheme::Noir;
    if (theme == m_theme)
        return;
    m_theme = theme;
    Q_EMIT changed();
}

QStringList Theme::themeNames()
{
    QStringList names;
    for (AppTheme t : palette::allThemes())
        names.append(palette::displayName(t));
    return names;
}

QStringList Theme::themeRawValues()
{
    QStringList values;
    for (AppTheme t : palette::allThemes())
        values.append(palette::rawValue(t));
    return values;
}

bool Theme::reduceMotion()
{
    return desktopReducesMotion();
}

QString Theme::uiFont()
{
    return QStringLiteral("Inter");
}

QString Theme::wordMarkFont()
{
    // The word mark's own face when the user has it; the UI font otherwise.
    static const QString family = [] {
        for (const char *name : {"GoogleSans-Flex", "Google Sans Flex"}) {
            if (QFontDatabase::hasFamily(QLatin1String(name)))
                return QString::fromLatin1(name);
        }
        return uiFont();
    }();
    return family;
}

QString Theme::symbolFont()
{
    return QStringLiteral("Material Design Icons");
}

// Cubic Bézier control points of the standard curves; the trailing 1, 1 closes
// the segment as QML's Easing.Bezier expects.
QVariantList Theme::easeOut()
{
    return {0.0, 0.0, 0.58, 1.0, 1.0, 1.0};
}

QVariantList Theme::easeInOut()
{
    return {0.42, 0.0, 0.58, 1.0, 1.0, 1.0};
}

QVariantList Theme::easeIn()
{
    return {0.42, 0.0, 1.0, 1.0, 1.0, 1.0};
}

// A well-damped spring (response 0.35 s, damping 0.85) settles in about 0.45 s
// with an overshoot under one per cent; this curve follows it closely.
QVariantList Theme::spring()
{
    return {0.2, 0.9, 0.3, 1.0, 1.0, 1.0};
}

QColor Theme::color(const QString &text)
{
    return palette::parseColor(text);
}
