// SPDX-License-Identifier: GPL-3.0-or-later
#include "playback/SpaceBar.h"

#include <QTest>

class TestSpaceBar : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decides_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<bool>("textInputFocused");
        QTest::addColumn<bool>("toggles");
        const Qt::KeyboardModifiers none = Qt::NoModifier;
        QTest::newRow("space alone toggles") << int(Qt::Key_Space) << none << false << true;
        QTest::newRow("space in the search field types a space")
            << int(Qt::Key_Space) << none << true << false;
        QTest::newRow("shift+space passes")
            << int(Qt::Key_Space) << Qt::KeyboardModifiers(Qt::ShiftModifier) << false << false;
        QTest::newRow("ctrl+space passes")
            << int(Qt::Key_Space) << Qt::KeyboardModifiers(Qt::ControlModifier) << false << false;
        QTest::newRow("alt+space passes")
            << int(Qt::Key_Space) << Qt::KeyboardModifiers(Qt::AltModifier) << false << false;
        QTest::newRow("meta+space passes")
            << int(Qt::Key_Space) << Qt::KeyboardModifiers(Qt::MetaModifier) << false << false;
        QTest::newRow("keypad space passes")
            << int(Qt::Key_Space) << Qt::KeyboardModifiers(Qt::KeypadModifier) << false << false;
        QTest::newRow("another key passes") << int(Qt::Key_Return) << none << false << false;
        QTest::newRow("the letter k passes") << int(Qt::Key_K) << none << false << false;
        QTest::newRow("media play key is not ours")
            << int(Qt::Key_MediaTogglePlayPause) << none << false << false;
    }

    void decides()
    {
        QFETCH(int, key);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(bool, textInputFocused);
        QFETCH(bool, toggles);
        QCOMPARE(spaceBarTogglesPlayback(key, modifiers, textInputFocused), toggles);
    }
};

QTEST_GUILESS_MAIN(TestSpaceBar)
#include "tst_space_bar.moc"
