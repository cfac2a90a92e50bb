// SPDX-License-Identifier: GPL-3.0-or-later
#include "Symbols.h"
#include "Theme.h"

#include <QDirIterator>
#include <QFile>
#include <QRawFont>
#include <QRegularExpression>
#include <QTest>

class TestSymbols : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Every quoted name a screen gives a symbol or picture placeholder is in
    // the table, and every name of the table is used somewhere.
    void theTableHoldsWhatTheScreensUse()
    {
        const QRegularExpression quoted(
            QStringLiteral(R"re((?:name|symbol|placeholder|trailing|emptySymbol)\s*:[^\n]*)re"));
        const QRegularExpression text(QStringLiteral(R"re("([a-z0-9]+(?:\.[a-z0-9]+)*)")re"));
        QSet<QString> used;
        QDirIterator screens(QStringLiteral(":/Tarnwell"), {QStringLiteral("*.qml")});
        while (screens.hasNext()) {
            QFile file(screens.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QString source = QString::fromUtf8(file.readAll());
            for (const QRegularExpressionMatch &line : quoted.globalMatch(source)) {
                for (const QRegularExpressionMatch &name : text.globalMatch(line.captured()))
                    used.insert(name.captured(1));
            }
        }
        const QStringList table = Symbols::names();
        for (const QString &name : table)
            QVERIFY2(used.contains(name), qPrintable(name + QStringLiteral(" is not used")));
        for (const QString &name : std::as_const(used)) {
            if (name.contains(u'.') || table.contains(name))
                QVERIFY2(table.contains(name), qPrintable(name + QStringLiteral(" has no glyph")));
        }
    }

    void glyphsExistInTheIconFont()
    {
        // The package depends on the font: without it every symbol is a blank box.
        const QRawFont font = QRawFont::fromFont(QFont(Theme::symbolFont()));
        QCOMPARE(font.familyName(), Theme::symbolFont());
        for (const QString &name : Symbols::names()) {
            const QList<uint> glyph = Symbols::glyph(name).toUcs4();
            QVERIFY2(glyph.size() == 1 && font.supportsCharacter(glyph.first()), qPrintable(name));
        }
    }
};

QTEST_MAIN(TestSymbols)
#include "tst_symbols.moc"
