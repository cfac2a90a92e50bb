// SPDX-License-Identifier: GPL-3.0-or-later
#include "BackgroundFade.h"

#include <QTest>

// Faster than in the program: the order of events is what is tested.
class TestBackgroundFade : public QObject
{
    Q_OBJECT

    static constexpr int fadeMs = 100;
    static constexpr int swapMs = 400;

    static QUrl picture(const char *name) { return QUrl(QStringLiteral("image://artwork/") + QLatin1String(name)); }

private Q_SLOTS:
    void fadesOutSwapsAndFadesIn()
    {
        BackgroundFade fade(nullptr, fadeMs, swapMs);
        QList<QUrl> shown;
        connect(&fade, &BackgroundFade::shownSourceChanged, this, [&] { shown.append(fade.shownSource()); });
        fade.show(picture("a"));
        QCOMPARE(fade.shownSource(), picture("a"));
        QVERIFY(!fade.swapPending());
        QTRY_COMPARE(fade.opacity(), 1.0);

        fade.show(picture("b"));
        QCOMPARE(fade.shownSource(), picture("a"));
        QTRY_VERIFY(fade.opacity() < 0.5);
        QTRY_COMPARE(fade.shownSource(), picture("b"));
        QTRY_COMPARE(fade.opacity(), 1.0);

        // A second change before the swap cancels the first: only d takes b's place.
        fade.show(picture("c"));
        fade.show(picture("d"));
        QTRY_COMPARE_WITH_TIMEOUT(fade.shownSource(), picture("d"), 30000);
        QTRY_COMPARE(fade.opacity(), 1.0);
        QCOMPARE(shown, (QList<QUrl>{picture("a"), picture("b"), picture("d")}));

        fade.show({});
        QTRY_VERIFY(fade.shownSource().isEmpty());
        QTRY_COMPARE(fade.opacity(), 0.0);
    }
};

QTEST_GUILESS_MAIN(TestBackgroundFade)
#include "tst_background_fade.moc"
