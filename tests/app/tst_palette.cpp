// SPDX-License-Identifier: GPL-3.0-or-later
#include "Palette.h"

#include <QTest>

#include <algorithm>
#include <cmath>

Q_DECLARE_METATYPE(palette::Role)

class TestPalette : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parsesColours_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QColor>("colour");
        QTest::newRow("six digits, either case") << "#C95c0f" << QColor(0xC9, 0x5C, 0x0F);
        QTest::newRow("eight digits are alpha first") << "#80ff0000" << QColor(0xFF, 0, 0, 0x80);
        QTest::newRow("no shorthand") << "abc" << QColor(0, 0x0A, 0xBC);
        QTest::newRow("symbols and spaces trimmed") << " (#ff8800); " << QColor(0xFF, 0x88, 0x00);
        QTest::newRow("stops at first non-hex") << "#12g456" << QColor(0, 0, 0x12);
    }

    void parsesColours()
    {
        QFETCH(QString, text);
        QFETCH(QColor, colour);
        QCOMPARE(palette::parseColor(text), colour);
    }

    // WCAG 2 contrast in every theme: text needs 4.5:1, symbols, bars and outlines 3:1.
    void foregroundsStandOut_data()
    {
        using R = palette::Role;
        QTest::addColumn<QList<R>>("foregrounds");
        QTest::addColumn<QList<R>>("backgrounds");
        QTest::addColumn<double>("minimum");
        const QList<R> surfaces = {R::WindowBackground, R::PanelBackground, R::RaisedBackground,
                                   R::BarBackground, R::SubtleFill};
        QTest::newRow("text") << QList<R>{R::PrimaryText, R::SecondaryText, R::Brand} << surfaces << 4.5;
        QTest::newRow("drop target") << QList<R>{R::Accent} << QList<R>{R::PanelBackground} << 4.5;
        QTest::newRow("banner") << QList<R>{R::OnAccentText} << QList<R>{R::Accent} << 4.5;
        QTest::newRow("transport") << QList<R>{R::TransportSymbol} << QList<R>{R::BarBackground} << 3.0;
        QTest::newRow("progress") << QList<R>{R::Accent} << QList<R>{R::ProgressTrack, R::BarBackground} << 3.0;
        QTest::newRow("focus ring") << QList<R>{R::FocusRing} << surfaces << 3.0;
        QTest::newRow("album outline") << QList<R>{R::SelectedAlbumOutline} << QList<R>{R::WindowBackground} << 3.0;
    }

    void foregroundsStandOut()
    {
        QFETCH(QList<palette::Role>, foregrounds);
        QFETCH(QList<palette::Role>, backgrounds);
        QFETCH(double, minimum);
        const auto luminance = [](const QColor &c) {
            const auto channel = [](double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
            return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) + 0.0722 * channel(c.blueF());
        };
        for (AppTheme theme : palette::allThemes()) {
            for (palette::Role foreground : foregrounds) {
                for (palette::Role background : backgrounds) {
                    const double fg = luminance(palette::color(foreground, theme));
                    const double bg = luminance(palette::color(background, theme));
                    const double ratio = (std::max(fg, bg) + 0.05) / (std::min(fg, bg) + 0.05);
                    QVERIFY2(ratio >= minimum, qPrintable(QStringLiteral("%1 on %2 in %3: %4:1")
                                                              .arg(palette::hex(foreground, theme),
                                                                   palette::hex(background, theme),
                                                                   palette::rawValue(theme))
                                                              .arg(ratio, 0, 'f', 2)));
                }
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestPalette)
#include "tst_palette.moc"
