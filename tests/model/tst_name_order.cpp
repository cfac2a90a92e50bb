// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/NameOrder.h"
#include "model/TextUtil.h"

#include <QRandomGenerator>
#include <QTest>

// The fast name order must be the collator's order, to the letter.
class TestNameOrder : public QObject
{
    Q_OBJECT

    static QStringList sample()
    {
        // Beside the random names, what their alphabet lacks.
        QStringList names = QStringLiteral("Ωmega ß ss 日本 eclair Éclair 9.mp3 10.mp3 .flac").split(u' ')
            << QString();
        // Random names over the printable range, biased to letters and a few symbols.
        const QString alphabet = QStringLiteral("aAbBzZ09 -_.,'!&()[]~@#+=éÉü");
        QRandomGenerator rng(42);
        for (int i = 0; i < 3000; ++i) {
            QString s;
            for (int j = rng.bounded(6); j >= 0; --j)
                s += alphabet.at(rng.bounded(int(alphabet.size())));
            names.append(s);
        }
        for (char16_t c = 0x20; c < 0x7f; ++c)
            names.append(QString(QChar(c)) + u'a');
        return names;
    }

private Q_SLOTS:
    void agreesWithTheCollator_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<bool>("table");
        QTest::newRow("C falls back to English") << "C" << true;
        QTest::newRow("en_US") << "en_US" << true;
        QTest::newRow("de_DE") << "de_DE" << true;
        QTest::newRow("da_DK: aa is a letter of its own") << "da_DK" << false;
        QTest::newRow("cs_CZ: ch is a letter of its own") << "cs_CZ" << false;
    }

    void agreesWithTheCollator()
    {
        QFETCH(QString, locale);
        QFETCH(bool, table);
        QLocale::setDefault(QLocale(locale));
        const QCollator collator = text::localeCollator();
        const NameOrder order(collator);
        QCOMPARE(order.usesTable(), table);

        const QStringList names = sample();
        std::vector<NameOrder::Key> keys;
        for (const QString &n : names)
            keys.push_back(order.key(n));
        for (qsizetype i = 0; i + 1 < names.size(); ++i) {
            for (qsizetype j : { i + 1, (i * 7919) % names.size() }) {
                const auto sign = [](int v) { return (v > 0) - (v < 0); };
                QVERIFY2(sign(collator.compare(names[i], names[j]))
                        == sign(order.compare(keys[size_t(i)], keys[size_t(j)])),
                    qPrintable(names[i] + QStringLiteral(" vs ") + names[j]));
            }
        }
        QLocale::setDefault(QLocale::c());
    }
};

QTEST_GUILESS_MAIN(TestNameOrder)
#include "tst_name_order.moc"
