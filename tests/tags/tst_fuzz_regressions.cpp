// SPDX-License-Identifier: GPL-3.0-or-later
// Inputs the fuzzers once failed on, kept as hex under tests/fuzz/regressions/
// TARGET/, run through the same checks as the fuzz targets (which trap).
#include "FuzzTargets.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTest>

class TestFuzzRegressions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void regressions_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QByteArray>("input");
        QDirIterator it(QStringLiteral(TARNWELL_FUZZ_REGRESSIONS), { QStringLiteral("*.hex") }, QDir::Files,
            QDirIterator::Subdirectories);
        int count = 0;
        while (it.hasNext()) {
            const QString path = it.next();
            QFile f(path);
            QVERIFY(f.open(QIODevice::ReadOnly));
            const QByteArray input = QByteArray::fromHex(f.readAll().simplified().replace(' ', ""));
            const QString target = QFileInfo(path).dir().dirName();
            QTest::newRow(qPrintable(target + u'/' + QFileInfo(path).fileName())) << target << input;
            ++count;
        }
        QVERIFY(count > 0);
    }

    void regressions()
    {
        QFETCH(QString, target);
        QFETCH(QByteArray, input);
        const auto found = std::find_if(std::begin(fuzz::targets), std::end(fuzz::targets),
            [&](const fuzz::Target &t) { return target == QLatin1StringView(t.name); });
        QVERIFY2(
            found != std::end(fuzz::targets), qPrintable(QStringLiteral("unknown fuzz target ") + target));
        found->run(reinterpret_cast<const uint8_t *>(input.constData()), size_t(input.size()));
    }
};

QTEST_GUILESS_MAIN(TestFuzzRegressions)
#include "tst_fuzz_regressions.moc"
