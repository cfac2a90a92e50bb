// SPDX-License-Identifier: GPL-3.0-or-later
#include "Palette.h"

#include <QTest>

#include <cmath>

Q_DECLARE_METATYPE(AppTheme)
Q_DECLARE_METATYPE(palette::Role)

class TestPalette : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parsesColours_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("red");
        QTest::addColumn<int>("green");
        QTest::addColumn<int>("blue");
        QTest::addColumn<int>("alpha");

        QTest::newRow("six digits") << "#c95c0f" << 0xC9 << 0x5C << 0x0F << 255;
        QTest::newRow("upper case") << "#C95C0F" << 0xC9 << 0x5C << 0x0F << 255;
        QTest::newRow("eight digits are alpha first") << "#80ff0000" << 0xFF << 0 << 0 << 0x80;
        QTest::newRow("transparent shade") << "#00000008" << 0 << 0 << 8 << 0;
        QTest::newRow("no shorthand") << "abc" << 0 << 0x0A << 0xBC << 255;
        QTest::newRow("empty") << "" << 0 << 0 << 0 << 255;
        QTest::newRow("no hex digits") << "#zz" << 0 << 0 << 0 << 255;
        QTest::newRow("eight characters of junk") << "zzzzzzzz" << 0 << 0 << 0 << 0;
        QTest::newRow("symbols trimmed at both ends") << "(#ff8800);" << 0xFF << 0x88 << 0x00 << 255;
        QTest::newRow("spaces trimmed") << "  #ff8800  " << 0xFF << 0x88 << 0x00 << 255;
        QTest::newRow("stops at first non-hex") << "#12g456" << 0 << 0 << 0x12 << 255;
        QTest::newRow("inner characters stay and count") << "#ff-00-ff" << 0 << 0 << 0xFF << 0;
        QTest::newRow("0x prefix") << "0X336699AA" << 0x66 << 0x99 << 0xAA << 255;
        QTest::newRow("0x prefix makes eight characters") << "0x123456" << 0x12 << 0x34 << 0x56 << 0;
        QTest::newRow("only low 32 bits") << "#123456789a" << 0x56 << 0x78 << 0x9A << 255;
        QTest::newRow("overflow saturates") << "#ffffffffffffffffff" << 0xFF << 0xFF << 0xFF << 255;
        QTest::newRow("nine digits") << "#1ff8800aa" << 0x88 << 0x00 << 0xAA << 255;
        QTest::newRow("letters beyond f end the number") << "#fg" << 0 << 0 << 0x0F << 255;
        QTest::newRow("non-ASCII letters kept inside") << "#é12" << 0 << 0 << 0 << 255;
    }

    void parsesColours()
    {
        QFETCH(QString, text);
        QFETCH(int, red);
        QFETCH(int, green);
        QFETCH(int, blue);
        QFETCH(int, alpha);
        const QColor c = palette::parseColor(text);
        QCOMPARE(c.spec(), QColor::Rgb);
        QCOMPARE(c.red(), red);
        QCOMPARE(c.green(), green);
        QCOMPARE(c.blue(), blue);
        QCOMPARE(c.alpha(), alpha);
    }

    void readsStoredThemes_data()
    {
        QTest::addColumn<QString>("raw");
        QTest::addColumn<AppTheme>("theme");
        QTest::newRow("sunrise") << "sunrise" << AppTheme::Sunrise;
        QTest::newRow("noir") << "noir" << AppTheme::Noir;
        QTest::newRow("light") << "light" << AppTheme::Light;
        QTest::newRow("nothing stored") << QString() << AppTheme::Noir;
        QTest::newRow("capitalised is unknown") << "Sunrise" << AppTheme::Noir;
        QTest::newRow("padded is unknown") << " light" << AppTheme::Noir;
        QTest::newRow("other") << "solarized" << AppTheme::Noir;
    }

    void readsStoredThemes()
    {
        QFETCH(QString, raw);
        QFETCH(AppTheme, theme);
        QCOMPARE(palette::fromRawValue(raw), theme);
    }

    void themesRoundTripInOrder()
    {
        const QList<AppTheme> themes = palette::allThemes();
        QCOMPARE(themes, (QList<AppTheme>{AppTheme::Sunrise, AppTheme::Noir, AppTheme::Light}));
        QStringList names;
        for (AppTheme t : themes) {
            QCOMPARE(palette::fromRawValue(palette::rawValue(t)), t);
            names.append(palette::displayName(t));
        }
        QCOMPARE(names, (QStringList{"Sunrise", "Noir", "Light"}));
    }

    // The focus ring stands out at least 3:1 (WCAG's contrast for parts of
    // controls) from everything it is drawn on, in every theme.
    void focusRingStandsOut_data()
    {
        QTest::addColumn<AppTheme>("theme");
        QTest::addColumn<palette::Role>("background");
        const std::pair<const char *, palette::Role> backgrounds[] = {
            {"window", palette::Role::WindowBackground}, {"panel", palette::Role::PanelBackground},
            {"raised", palette::Role::RaisedBackground}, {"bar", palette::Role::BarBackground},
            {"hovered row", palette::Role::SubtleFill}};
        for (AppTheme theme : palette::allThemes()) {
            for (const auto &[name, role] : backgrounds)
                QTest::addRow("%s on %s", qPrintable(palette::rawValue(theme)), name) << theme << role;
        }
    }

    void focusRingStandsOut()
    {
        QFETCH(AppTheme, theme);
        QFETCH(palette::Role, background);
        const auto luminance = [](const QColor &c) {
            const auto channel = [](double v) { return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
            return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) + 0.0722 * channel(c.blueF());
        };
        const double a = luminance(palette::color(palette::Role::FocusRing, theme));
        const double b = luminance(palette::color(background, theme));
        const double ratio = (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
        QVERIFY2(ratio >= 3.0, qPrintable(QString::number(ratio, 'f', 2)));
    }

    void hoverShadeOfLightThemeIsInvisible()
    {
        // Eight digits read alpha first, so "#00000008" is fully transparent.
        QCOMPARE(palette::color(palette::Role::AlbumHoverShade, AppTheme::Light).alpha(), 0);
        QCOMPARE(palette::color(palette::Role::AlbumHoverShade, AppTheme::Noir).alpha(), 0);
    }
};

QTEST_GUILESS_MAIN(TestPalette)
#include "tst_palette.moc"
