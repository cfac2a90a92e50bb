// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QList>
#include <QString>
#include <QStringView>

// The three colour themes and their palette. Pure data and functions: the QML
// side (Theme.h) looks colours up here for the theme the main state selects.

enum class AppTheme { Sunrise = 0, Noir = 1, Light = 2 };

namespace palette {

// Every theme, in index order (also the order of the theme popup's rows).
QList<AppTheme> allThemes();

// The stored value: "sunrise", "noir", "light".
QString rawValue(AppTheme theme);
// What the theme popup shows: "Sunrise", "Noir", "Light".
QString displayName(AppTheme theme);
// An exact match of a raw value; anything else, a missing value included, is noir.
AppTheme fromRawValue(const QString &raw);

// Turns "#RRGGBB" or "#AARRGGBB" (alpha first) into a colour. Characters that are
// neither letters nor digits are dropped at both ends; the rest is read as a
// hexadecimal number up to its first non-hex character (0 when there is none),
// of which the low 32 bits count. Only a string of exactly 8 characters carries
// an alpha; there is no 3-digit shorthand, so "abc" is 0x000ABC.
QColor parseColor(QStringView text);

enum class Role {
    WindowBackground,
    PanelBackground,
    RaisedBackground,
    BarBackground,
    ProgressTrack,
    SubtleFill,
    Border,
    Brand,
    Accent,
    ButtonFill,
    ButtonFillHover,
    SecondaryText,
    PrimaryText,
    OnAccentText,
    TransportSymbol,
    SelectedAlbumOutline,
    AlbumHoverShade,
    FocusRing,
};

// The palette's string for a role in a theme, and the colour it parses to.
QString hex(Role role, AppTheme theme);
QColor color(Role role, AppTheme theme);

} // namespace palette
