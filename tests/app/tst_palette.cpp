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
        QTest::addColumn<int>("red");
        QTest::addColumn<int>("green");
        QTest::addColumn<int>("blue");
        QTest::addColumn<int>("alpha");

        QTest::newRow("six digits, either case") << "#C95c0f" << 0xC9 << 0x5C << 0x0F << 255;
        QTest::newRow("eight digits are alpha first") << "#80ff0000" << 0xFF << 0 << 0 << 0x80;
        QTest::newRow("no shorthand") << "abc" << 0 << 0x0A << 0xBC << 255;
        QTest::newRow("no hex digits") << "#zz" << 0 << 0 << 0 << 255;
        QTest::newRow("eight characters of junk") << "zzzzzzzz" << 0 << 0 << 0 << 0;
        QTest::newRow("symbols and spaces trimmed") << " (#ff8800); " << 0xFF << 0x88 << 0x00 << 255;
        QTest::newRow("stops at first non-hex") << "#12g456" << 0 << 0 << 0x12 << 255;
        QTest::newRow("inner characters stay and count") << "#ff-00-ff" << 0 << 0 << 0xFF << 0;
        QTest::newRow("0x prefix makes eight characters") << "0x123456" << 0x12 << 0x34 << 0x56 << 0;
        QTest::newRow("only low 32 bits") << "#123456789a" << 0x56 << 0x78 << 0x9A << 255;
        QTest::newRow("overflow saturates") << "#ffffffffffffffffff" << 0xFF << 0xFF << 0xFF << 255;
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

    // WCAG 2 contrast of each colour the screens draw over the surfaces it
    // is drawn on: text needs 4.5:1, symbols, bars and outlines 3:1.
    void foregroundsStandOut_data()
    {
        using R = palette::Role;
        QTest::addColumn<R>("foreground");
        QTest::addColumn<QList<R>>("backgrounds");
        QTest::addColumn<double>("minimum");
        const QList<R> surfaces = {R::WindowBackground, R::PanelBackground, R::RaisedBackground,
                                   R::BarBackground, R::SubtleFill};
        QTest::newRow("primary text") << R::PrimaryText << surfaces << 4.5;
        QTest::newRow("secondary text") << R::SecondaryText << surfaces << 4.5;
        QTest::newRow("brand text: word mark, selection, playing row") << R::Brand << surfaces << 4.5;
        QTest::newRow("accent text: drop target") << R::Accent << QList<R>{R::PanelBackground} << 4.5;
        QTest::newRow("text on accent: banner") << R::OnAccentText << QList<R>{R::Accent} << 4.5;
        QTest::newRow("previous and next") << R::TransportSymbol << QList<R>{R::BarBackground} << 3.0;
        QTest::newRow("progress and shuffle")
            << R::Accent << QList<R>{R::ProgressTrack, R::BarBackground} << 3.0;
        QTest::newRow("focus ring") << R::FocusRing << surfaces << 3.0;
        QTest::newRow("selected album") << R::SelectedAlbumOutline << QList<R>{R::WindowBackground} << 3.0;
    }

    void foregroundsStandOut()
    {
        QFETCH(palette::Role, foreground);
        QFETCH(QList<palette::Role>, backgrounds);
        QFETCH(double, minimum);
        const auto luminance = [](const QColor &c) {
            const auto channel = [](double v) {
                return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
            };
            return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) + 0.0722 * channel(c.blueF());
        };
        for (AppTheme theme : palette::allThemes()) {
            const double fg = luminance(palette::color(foreground, theme));
            for (palette::Role background : backgrounds) {
                const double bg = luminance(palette::color(background, theme));
                const double ratio = (std::max(fg, bg) + 0.05) / (std::min(fg, bg) + 0.05);
                if (ratio < minimum)
                    QFAIL(qPrintable(QStringLiteral("%1 on %2 in %3: %4:1")
                                         .arg(palette::hex(foreground, theme),
                                              palette::hex(background, theme),
                                              palette::rawValue(theme))
                                         .arg(ratio, 0, 'f', 2)));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestPalette)
#include "tst_palette.moc"
