// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/NameOrder.h"
#include "model/TextUtil.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>

// The fast name order must be the collator's order, to the letter.
class TestNameOrder : public QObject
{
    Q_OBJECT

    static QStringList sample()
    {
        QStringList names{QStringLiteral("a"), QStringLiteral("A"), QStringLiteral("ab"), QStringLiteral("aB"),
                          QStringLiteral("Ab"), QStringLiteral("AB"), QStringLiteral("a b"), QStringLiteral("a-b"),
                          QStringLiteral("a_b"), QStringLiteral("a.b"), QStringLiteral("a.mp3"), QStringLiteral("A.flac"),
                          QStringLiteral("10 x.mp3"), QStringLiteral("9 x.mp3"), QStringLiteral("(x)"), QStringLiteral("[x]"),
                          QStringLiteral("éclair"), QStringLiteral("Éclair"), QStringLiteral("eclair"), QStringLiteral("Ωmega"),
                          QStringLiteral("ß"), QStringLiteral("ss"), QStringLiteral("日本"), QStringLiteral("~"), QStringLiteral("")};
        // Random names over the printable range, biased to letters and a few symbols.
        const QString alphabet = QStringLiteral("aAbBzZ09 -_.,'!&()[]~@#+=éÉü");
        QRandomGenerator rng(42);
        for (int i = 0; i < 3000; ++i) {
            QString s;
            const int len = 1 + rng.bounded(6);
            for (int j = 0; j < len; ++j)
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
        QTest::newRow("fr_FR") << "fr_FR" << true;
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
            for (qsizetype j : {i + 1, (i * 7919) % names.size()}) {
                const int expected = collator.compare(names[i], names[j]);
                const int actual = order.compare(keys[size_t(i)], keys[size_t(j)]);
                if ((expected < 0) != (actual < 0) || (expected > 0) != (actual > 0))
                    QFAIL(qPrintable(QStringLiteral("'%1' vs '%2': collator %3, fast order %4")
                                         .arg(names[i], names[j]).arg(expected).arg(actual)));
            }
        }
        QLocale::setDefault(QLocale::c());
    }
};

QTEST_GUILESS_MAIN(TestNameOrder)
#include "tst_name_order.moc"
