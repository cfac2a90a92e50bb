// SPDX-License-Identifier: GPL-3.0-or-later
#include "BackgroundFade.h"

#include <QSignalSpy>
#include <QTest>

// The fade runs faster than in the program (100 ms fades, a swap after 400 ms);
// the order of events is what is tested.
class TestBackgroundFade : public QObject
{
    Q_OBJECT

    static constexpr int fadeMs = 100;
    static constexpr int swapMs = 400;

    static QUrl picture(const char *name) { return QUrl(QStringLiteral("image://artwork/") + QLatin1String(name)); }

private Q_SLOTS:
    void fadesStraightInWhenNothingIsShown()
    {
        BackgroundFade fade(nullptr, fadeMs, swapMs);
        fade.show(picture("a"));
        QCOMPARE(fade.shownSource(), picture("a"));
        QVERIFY(!fade.swapPending());
        QTRY_COMPARE(fade.opacity(), 1.0);
    }

    void fadesOutSwapsAndFadesIn()
    {
        BackgroundFade fade(nullptr, fadeMs, swapMs);
        fade.show(picture("a"));
        QTRY_COMPARE(fade.opacity(), 1.0);

        fade.show(picture("b"));
        QCOMPARE(fade.shownSource(), picture("a"));
        QTRY_VERIFY(fade.opacity() < 0.5);
        QTRY_COMPARE(fade.shownSource(), picture("b"));
        QTRY_COMPARE(fade.opacity(), 1.0);
    }

    void aSecondChangeCancelsTheFirstSwap()
    {
        BackgroundFade fade(nullptr, fadeMs, swapMs);
        fade.show(picture("a"));
        QTRY_COMPARE(fade.opacity(), 1.0);
        QList<QUrl> shown;
        connect(&fade, &BackgroundFade::shownSourceChanged, this, [&] { shown.append(fade.shownSource()); });

        fade.show(picture("b"));
        QTest::qWait(swapMs / 4);
        fade.show(picture("c"));
        QTRY_COMPARE(fade.shownSource(), picture("c"));
        // b's swap was cancelled: only c ever took a's place.
        QTRY_COMPARE(fade.opacity(), 1.0);
        QCOMPARE(shown, QList<QUrl>{picture("c")});
    }

    void noPictureFadesOutAndLeavesNothing()
    {
        BackgroundFade fade(nullptr, fadeMs, swapMs);
        fade.show(picture("a"));
        QTRY_COMPARE(fade.opacity(), 1.0);
        fade.show({});
        QTRY_VERIFY(fade.shownSource().isEmpty());
        QTRY_COMPARE(fade.opacity(), 0.0);

        // Nothing to nothing: nothing happens.
        QSignalSpy changed(&fade, &BackgroundFade::shownSourceChanged);
        fade.show({});
        QTest::qWait(swapMs + 20);
        QCOMPARE(changed.size(), 0);
        QCOMPARE(fade.opacity(), 0.0);
    }
};

QTEST_GUILESS_MAIN(TestBackgroundFade)
#include "tst_background_fade.moc"
