// SPDX-License-Identifier: GPL-3.0-or-later
#include "KeyPressFilter.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

class TestKeyPressFilter : public QObject
{
    Q_OBJECT

    QQmlApplicationEngine m_engine;
    QQuickWindow *m_window = nullptr;
    QList<KeyPressFilter::KeyPress> m_seen;
    bool m_consume = false;
    std::unique_ptr<KeyPressFilter> m_filter;

    QQuickItem *item(const char *name) { return m_window->findChild<QQuickItem *>(QLatin1String(name)); }

private Q_SLOTS:
    void initTestCase()
    {
        m_engine.loadData("import QtQuick\n"
                          "Window {\n"
                          "  width: 200; height: 100; visible: true\n"
                          "  Item { objectName: 'plain'; width: 10; height: 10; focus: true }\n"
                          "  TextInput { objectName: 'field'; y: 20; width: 100; height: 20 }\n"
                          "  TextEdit { objectName: 'area'; y: 50; width: 100; height: 20 }\n"
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

    void seesEachKeyPressOnce()
    {
        item("plain")->forceActiveFocus();
        QTest::keyClick(m_window, Qt::Key_Space, Qt::ShiftModifier);
        // Shift goes down first, then Space with Shift held.
        QCOMPARE(m_seen.size(), 2);
        QCOMPARE(m_seen.first().key, int(Qt::Key_Shift));
        QCOMPARE(m_seen.last().key, int(Qt::Key_Space));
        QCOMPARE(m_seen.last().modifiers, Qt::ShiftModifier);
        QVERIFY(!m_seen.last().textInputFocused);
    }

    void knowsWhenTextIsBeingEdited_data()
    {
        QTest::addColumn<QString>("focused");
        QTest::addColumn<bool>("editsText");
        QTest::newRow("plain item") << "plain" << false;
        QTest::newRow("text field") << "field" << true;
        QTest::newRow("text area") << "area" << true;
    }

    void knowsWhenTextIsBeingEdited()
    {
        QFETCH(QString, focused);
        QFETCH(bool, editsText);
        item(focused.toLatin1().constData())->forceActiveFocus();
        QTest::keyClick(m_window, Qt::Key_Space);
        QCOMPARE(m_seen.size(), 1);
        QCOMPARE(m_seen.first().textInputFocused, editsText);
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
