// SPDX-License-Identifier: GPL-3.0-or-later
#include "KeyPressFilter.h"
#include "KeyboardFocus.h"
#include "PlaybackKeys.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

class TestKeyPressFilter : public QObject
{
    Q_OBJECT

    KeyboardFocus m_keyboardFocus;
    QQmlApplicationEngine m_engine;
    QQuickWindow *m_window = nullptr;
    QList<KeyPressFilter::KeyPress> m_seen;
    bool m_consume = false;
    std::unique_ptr<KeyPressFilter> m_filter;

    // Through the items rather than the objects: a list's rows have no parent object.
    QQuickItem *item(const char *name, QQuickItem *from = nullptr)
    {
        for (QQuickItem *child : (from ? from : m_window->contentItem())->childItems()) {
            if (child->objectName() == QLatin1String(name))
                return child;
            if (QQuickItem *found = item(name, child))
                return found;
        }
        return nullptr;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_engine.loadData("import QtQuick\n"
                          "Window {\n"
                          "  width: 200; height: 100; visible: true\n"
                          "  Item { objectName: 'plain'; width: 10; height: 10; focus: true }\n"
                          "  TextInput { objectName: 'field'; y: 20; width: 100; height: 20 }\n"
                          "  TextEdit { objectName: 'area'; y: 50; width: 100; height: 20 }\n"
                          "  ListView { objectName: 'list'; x: 100; width: 100; height: 100; model: 40\n"
                          "    delegate: Item { objectName: 'row'; width: 100; height: 10 } }\n"
                          "  ListView { objectName: 'ticking'; x: 100; width: 100; height: 1; model: 1\n"
                          "    property bool takesSpace: true; delegate: Item { width: 1; height: 1 } }\n"
                          "}\n");
        QVERIFY(!m_engine.rootObjects().isEmpty());
        m_window = qobject_cast<QQuickWindow *>(m_engine.rootObjects().first());
        QVERIFY(m_window);
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
        m_filter = std::make_unique<KeyPressFilter>([this](const KeyPressFilter::KeyPress &press) {
            m_seen.append(press);
            return m_consume;
        });
        qApp->installEventFilter(m_filter.get());
    }

    void init()
    {
        m_seen.clear();
        m_consume = false;
    }

    void knowsWhatHasTheFocus_data()
    {
        QTest::addColumn<QString>("focused");
        QTest::addColumn<bool>("editsText");
        QTest::addColumn<bool>("inList");
        QTest::addColumn<bool>("takesSpace");
        QTest::newRow("plain item") << "plain" << false << false << false;
        QTest::newRow("text field") << "field" << true << false << false;
        QTest::newRow("text area") << "area" << true << false << false;
        QTest::newRow("row of a list") << "row" << false << true << false;
        QTest::newRow("list that ticks with Space") << "ticking" << false << true << true;
    }

    void knowsWhatHasTheFocus()
    {
        QFETCH(QString, focused);
        QFETCH(bool, editsText);
        QFETCH(bool, inList);
        QFETCH(bool, takesSpace);
        item(focused.toLatin1().constData())->forceActiveFocus();
        QTest::keyClick(m_window, Qt::Key_Space);
        QCOMPARE(m_seen.size(), 1);
        QCOMPARE(m_seen.first().textInputFocused, editsText);
        QCOMPARE(m_seen.first().listFocused, inList);
        QCOMPARE(m_seen.first().listTakesSpace, takesSpace);
    }

    void playbackKeys_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<QString>("focus");
        QTest::addColumn<int>("action");
        QTest::addColumn<double>("seconds");
        const int none = Qt::NoModifier, ctrl = Qt::ControlModifier, shift = Qt::ShiftModifier;
        const auto row = [](const char *name, Qt::Key key, int modifiers, const char *focus, PlaybackKey::Action action,
                            double seconds = 0) {
            QTest::newRow(name) << int(key) << modifiers << QString::fromLatin1(focus) << int(action) << seconds;
        };
        row("space", Qt::Key_Space, none, "", PlaybackKey::TogglePlayPause);
        row("space while typing", Qt::Key_Space, none, "typing", PlaybackKey::None);
        row("space in a list that ticks", Qt::Key_Space, none, "ticking", PlaybackKey::None);
        row("ctrl+space", Qt::Key_Space, ctrl, "", PlaybackKey::None);
        row("ctrl+right", Qt::Key_Right, ctrl, "list", PlaybackKey::Next);
        row("ctrl+right while typing", Qt::Key_Right, ctrl, "typing", PlaybackKey::None);
        row("right", Qt::Key_Right, none, "", PlaybackKey::SeekBy, 5);
        row("shift+left", Qt::Key_Left, shift, "", PlaybackKey::SeekBy, -30);
        row("right in a list", Qt::Key_Right, none, "list", PlaybackKey::None);
        row("alt+right", Qt::Key_Right, Qt::AltModifier, "", PlaybackKey::None);
        row("ctrl+s", Qt::Key_S, ctrl, "typing", PlaybackKey::ToggleShuffle);
        row("s alone", Qt::Key_S, none, "", PlaybackKey::None);
        row("media play", Qt::Key_MediaPlay, none, "typing", PlaybackKey::TogglePlayPause);
        row("media previous", Qt::Key_MediaPrevious, none, "list", PlaybackKey::Previous);
    }

    void playbackKeys()
    {
        QFETCH(int, key);
        QFETCH(int, modifiers);
        QFETCH(QString, focus);
        QFETCH(int, action);
        QFETCH(double, seconds);
        KeyPressFilter::KeyPress press;
        press.key = key;
        press.modifiers = Qt::KeyboardModifiers(modifiers);
        press.textInputFocused = focus == u"typing";
        press.listFocused = focus == u"list" || focus == u"ticking";
        press.listTakesSpace = focus == u"ticking";
        QCOMPARE(playbackKeyFor(press), (PlaybackKey{PlaybackKey::Action(action), seconds}));
    }

    // Shift+Tab from a list's current row leaves the list, which would give
    // the focus straight back to the row.
    void backTabLeavesAList()
    {
        QQuickItem *list = item("list");
        list->setProperty("activeFocusOnTab", true);
        item("plain")->setProperty("activeFocusOnTab", true);
        item("row")->setFocus(true);
        list->forceActiveFocus();
        QVERIFY(item("row")->hasActiveFocus());
        QVERIFY(KeyboardFocus::navigate(list, Qt::Key_Backtab));
        QVERIFY(!list->hasActiveFocus());
    }

    // The ring shows from a key press until the next click.
    void focusRingFollowsTheInput()
    {
        QTest::mouseClick(m_window, Qt::LeftButton, {}, QPoint(5, 5));
        QVERIFY(!m_keyboardFocus.shown());
        QTest::keyClick(m_window, Qt::Key_Control);
        QVERIFY(!m_keyboardFocus.shown());
        QTest::keyClick(m_window, Qt::Key_Tab);
        QVERIFY(m_keyboardFocus.shown());
        QTest::mouseClick(m_window, Qt::LeftButton, {}, QPoint(5, 5));
        QVERIFY(!m_keyboardFocus.shown());
    }

    void aHandledKeyGoesNoFurther()
    {
        QQuickItem *field = item("field");
        field->setProperty("text", QString());
        field->forceActiveFocus();
        m_consume = true;
        QTest::keyClick(m_window, Qt::Key_Space);
        QCOMPARE(field->property("text").toString(), QString());
        m_consume = false;
        QTest::keyClick(m_window, Qt::Key_Space);
        QCOMPARE(field->property("text").toString(), QStringLiteral(" "));
    }
};

QTEST_MAIN(TestKeyPressFilter)
#include "tst_key_press_filter.moc"
