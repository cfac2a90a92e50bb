// SPDX-License-Identifier: GPL-3.0-or-later
#include "Palette.h"

#include <QTextBoundaryFinder>

#include <array>
#include <cstdint>
#include <limits>

namespace palette {

namespace {

struct Triplet
{
    const char *sunrise;
    const char *noir;
    const char *light;
};

// Indexed by Role. Two-way colours repeat one value for two themes. Text keeps
// 4.5:1 and symbols 3:1 against every surface it is drawn on: sunrise's brand,
// accent and transport symbols, noir's secondary text and the light theme's blue
// and grey symbols are the lightest (or darkest) shades of their hue that do.
constexpr std::array<Triplet, 18> table = {{
    {"#fcf0da", "#1c1c1e", "#ffffff"}, // WindowBackground
    {"#f5e8cc", "#2c2c2e", "#f8f8f8"}, // PanelBackground
    {"#f2d3ab", "#2c2c2e", "#f2f2f7"}, // RaisedBackground
    {"#ecd5b0", "#111113", "#e5e5ea"}, // BarBackground
    {"#e4cda8", "#3a3a3c", "#d1d1d6"}, // ProgressTrack
    {"#e4cda8", "#3a3a3c", "#e5e5ea"}, // SubtleFill
    {"#d9c49a", "#38383a", "#d1d1d6"}, // Border
    {"#715510", "#e3f794", "#0063d0"}, // Brand
    {"#ab4e0d", "#e3f794", "#0063d0"}, // Accent
    {"#7d6245", "#e3f794", "#0063d0"}, // ButtonFill
    {"#5e4932", "#cade78", "#0051a8"}, // ButtonFillHover
    {"#6b4e2a", "#a3a3a7", "#636366"}, // SecondaryText
    {"#000000", "#f5f5f7", "#000000"}, // PrimaryText
    {"#ffffff", "#111111", "#ffffff"}, // OnAccentText
    {"#937451", "#8e8e93", "#838389"}, // TransportSymbol
    {"#666666", "#67676a", "#94949e"}, // SelectedAlbumOutline
    {"#00000010", "#00000040", "#00000008"}, // AlbumHoverShade (alpha first)
    {"#9a3d00", "#e3f794", "#0062cc"}, // FocusRing
}};

bool isLetterOrDigit(QChar c)
{
    return c.isLetterOrNumber() || c.isMark();
}

int hexDigit(QChar c)
{
    const char16_t u = c.unicode();
    if (u >= '0' && u <= '9')
        return u - '0';
    if (u >= 'a' && u <= 'f')
        return u - 'a' + 10;
    if (u >= 'A' && u <= 'F')
        return u - 'A' + 10;
    return -1;
}

// Reads a hexadecimal number from the start, with an optional 0x prefix; an
// overflowing number saturates to all bits set rather than wrapping.
std::uint64_t scanHex(QStringView s)
{
    qsizetype i = 0;
    if (s.size() >= 3 && s[0] == u'0' && (s[1] == u'x' || s[1] == u'X') && hexDigit(s[2]) >= 0)
        i = 2;
    std::uint64_t value = 0;
    bool overflow = false;
    for (; i < s.size(); ++i) {
        const int d = hexDigit(s[i]);
        if (d < 0)
            break;
        if (value > (std::numeric_limits<std::uint64_t>::max() >> 4))
            overflow = true;
        value = (value << 4) | std::uint64_t(d);
    }
    return overflow ? std::numeric_limits<std::uint64_t>::max() : value;
}

// Characters as a person counts them (grapheme clusters), not UTF-16 units.
qsizetype characterCount(QStringView s)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, s.toString());
    qsizetype count = 0;
    while (finder.toNextBoundary() > 0)
        ++count;
    return count;
}

} // namespace

QList<AppTheme> allThemes()
{
    return {AppTheme::Sunrise, AppTheme::Noir, AppTheme::Light};
}

QString rawValue(AppTheme theme)
{
    switch (theme) {
    case AppTheme::Sunrise:
        return QStringLiteral("sunrise");
    case AppTheme::Light:
        return QStringLiteral("light");
    case AppTheme::Noir:
        break;
    }
    return QStringLiteral("noir");
}

QString displayName(AppTheme theme)
{
    switch (theme) {
    case AppTheme::Sunrise:
        return QStringLiteral("Sunrise");
    case AppTheme::Light:
        return QStringLiteral("Light");
    case AppTheme::Noir:
        break;
    }
    return QStringLiteral("Noir");
}

AppTheme fromRawValue(const QString &raw)
{
    if (raw == QLatin1String("sunrise"))
        return AppTheme::Sunrise;
    if (raw == QLatin1String("light"))
        return AppTheme::Light;
    return AppTheme::Noir;
}

QColor parseColor(QStringView text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && !isLetterOrDigit(text[begin]))
        ++begin;
    while (end > begin && !isLetterOrDigit(text[end - 1]))
        --end;
    const QStringView trimmed = text.sliced(begin, end - begin);

    const auto v = std::uint32_t(scanHex(trimmed) & 0xFFFFFFFFu);
    const int alpha = characterCount(trimmed) == 8 ? int((v >> 24) & 0xFF) : 255;
    return QColor(int((v >> 16) & 0xFF), int((v >> 8) & 0xFF), int(v & 0xFF), alpha);
}

QString hex(Role role, AppTheme theme)
{
    const Triplet &t = table[std::size_t(role)];
    switch (theme) {
    case AppTheme::Sunrise:
        return QLatin1String(t.sunrise);
    case AppTheme::Light:
        return QLatin1String(t.light);
    case AppTheme::Noir:
        break;
    }
    return QLatin1String(t.noir);
}

QColor color(Role role, AppTheme theme)
{
    return parseColor(hex(role, theme));
}

} // namespace palette
