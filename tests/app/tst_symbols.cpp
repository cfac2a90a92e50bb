// SPDX-License-Identifier: GPL-3.0-or-later
#include "Symbols.h"
#include "Theme.h"

#include <QFontDatabase>
#include <QRawFont>
#include <QRegularExpression>
#include <QTest>

class TestSymbols : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everySymbolTheScreensUseHasAGlyph()
    {
        const QStringList used{
            "house", "plus", "checkmark", "magnifyingglass", "xmark", "xmark.circle.fill", "person", "person.2",
            "music.note", "music.note.list", "music.note.house", "tag.slash", "plus.circle.fill",
            "arrow.down.circle.fill", "chevron.left", "chevron.right", "play.fill", "pause.fill", "play.circle",
            "backward.fill", "forward.fill", "shuffle", "waveform", "pencil", "folder.badge.plus",
            "checkmark.square.fill", "square", "checkmark.circle", "ellipsis"};
        for (const QString &name : used)
            QVERIFY2(Symbols::names().contains(name), qPrintable(name));
    }

    void glyphsExistInTheIconFont()
    {
        const QStringList families = QFontDatabase::families();
        if (!families.contains(Theme::symbolFont()))
            QSKIP("the icon font is not installed");
        const QRawFont font = QRawFont::fromFont(QFont(Theme::symbolFont()));
        QVERIFY(font.isValid());
        QCOMPARE(font.familyName(), Theme::symbolFont());
        for (const QString &name : Symbols::names()) {
            const QString glyph = Symbols::glyph(name);
            QCOMPARE(glyph.toUcs4().size(), 1);
            QVERIFY2(font.supportsCharacter(glyph.toUcs4().first()), qPrintable(name));
        }
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("no symbol named")));
        QVERIFY(Symbols::glyph(QStringLiteral("no.such.symbol")).isEmpty());
    }
};

QTEST_MAIN(TestSymbols)
#include "tst_symbols.moc"
