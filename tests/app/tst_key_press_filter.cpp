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
                          "  ListView { objectName: 'list'; x: 100; width: 100; height: 100; model: 40\n"
                          "    delegate: Item { objectName: 'row'; width: 100; height: 10 } }\n"
                          "  ListView { objectName: 'ticking'; x: 100; width: 100; height: 1; model: 1\n"
                          "    property bool takesSpace: true; delegate: Item { width: 1; height: 1 } }\n"
                          "}\n");
        m_window = qobject_cast<QQuickWindow *>(m_engine.rootObjects().value(0));
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

    // A real key press on a focused item, through the filter, to the action it asks for.
    void playbackKeys_data()
    {
        QTest::addColumn<QString>("focus");
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<int>("action");
        QTest::addColumn<double>("seconds");
        const int none = Qt::NoModifier, ctrl = Qt::ControlModifier;
        const auto row = [](const char *name, const char *focus, Qt::Key key, int modifiers, PlaybackKey::Action action,
                            double seconds = 0) {
            QTest::newRow(name) << QString::fromLatin1(focus) << int(key) << modifiers << int(action) << seconds;
        };
        row("space", "plain", Qt::Key_Space, none, PlaybackKey::TogglePlayPause);
        row("space in a text field", "field", Qt::Key_Space, none, PlaybackKey::None);
        row("space on a list's row", "row", Qt::Key_Space, none, PlaybackKey::TogglePlayPause);
        row("space in a list that ticks", "ticking", Qt::Key_Space, none, PlaybackKey::None);
        row("ctrl+right in a list", "row", Qt::Key_Right, ctrl, PlaybackKey::Next);
        row("ctrl+right while typing", "field", Qt::Key_Right, ctrl, PlaybackKey::None);
        row("shift+left", "plain", Qt::Key_Left, Qt::ShiftModifier, PlaybackKey::SeekBy, -30);
        row("right in a list", "row", Qt::Key_Right, none, PlaybackKey::None);
        row("alt+right", "plain", Qt::Key_Right, Qt::AltModifier, PlaybackKey::None);
        row("ctrl+s while typing", "field", Qt::Key_S, ctrl, PlaybackKey::ToggleShuffle);
        row("media previous in a list", "row", Qt::Key_MediaPrevious, none, PlaybackKey::Previous);
    }

    void playbackKeys()
    {
        QFETCH(QString, focus);
        QFETCH(int, key);
        QFETCH(int, modifiers);
        QFETCH(int, action);
        QFETCH(double, seconds);
        item(focus.toLatin1().constData())->forceActiveFocus();
        m_consume = true; // so that no text field keeps what is typed
        QTest::keyClick(m_window, Qt::Key(key), Qt::KeyboardModifiers(modifiers));
        QVERIFY(!m_seen.isEmpty());
        QCOMPARE(playbackKeyFor(m_seen.last()), (PlaybackKey{PlaybackKey::Action(action), seconds}));
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
