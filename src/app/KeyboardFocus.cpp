// SPDX-License-Identifier: GPL-3.0-or-later
#include "KeyboardFocus.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QQuickItem>

#include <algorithm>

KeyboardFocus::KeyboardFocus(QObject *parent)
    : QObject(parent)
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool KeyboardFocus::eventFilter(QObject *, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress: {
        // Modifiers alone (Ctrl held for a click) are no keyboard use yet.
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key != Qt::Key_Control && key != Qt::Key_Shift && key != Qt::Key_Alt && key != Qt::Key_Meta)
            setShown(true);
        break;
    }
    case QEvent::MouseButtonPress:
    case QEvent::TouchBegin:
        setShown(false);
        break;
    default:
        break;
    }
    return false;
}

bool KeyboardFocus::navigate(QObject *view, int key)
{
    auto *item = qobject_cast<QQuickItem *>(view);
    if (!item)
        return false;
    // The list is a focus scope whose current row holds the focus: going back
    // from the row would land on the list and so on the row again.
    if (key == Qt::Key_Backtab) {
        if (QQuickItem *previous = item->nextItemInFocusChain(false))
            previous->forceActiveFocus(Qt::BacktabFocusReason);
        return true;
    }
    const int count = item->property("count").toInt();
    const int current = item->property("currentIndex").toInt();
    // A page: the rows (times the columns of a grid) that fit in the view.
    int page = 1;
    const bool horizontal = item->property("orientation").toInt() == Qt::Horizontal;
    const qreal cellWidth = item->property("cellWidth").toReal();
    qreal extent = item->property("cellHeight").toReal();
    if (extent <= 0) {
        if (auto *currentItem = item->property("currentItem").value<QQuickItem *>())
            extent = (horizontal ? currentItem->width() : currentItem->height()) + item->property("spacing").toReal();
    }
    if (extent > 0) {
        const int columns = cellWidth > 0 ? std::max(1, int(item->width() / cellWidth)) : 1;
        page = std::max(1, int((horizontal ? item->width() : item->height()) / extent)) * columns;
    }
    int to = current;
    switch (key) {
    case Qt::Key_Home:
        to = 0;
        break;
    case Qt::Key_End:
        to = count - 1;
        break;
    case Qt::Key_PageUp:
        to = std::max(0, current - page);
        break;
    case Qt::Key_PageDown:
        to = std::min(count - 1, current + page);
        break;
    default:
        return false;
    }
    if (count > 0 && to != current) {
        item->setProperty("currentIndex", to);
        // ListView.Contain and GridView.Contain (QQuickItemView::Contain).
        constexpr int contain = 4;
        QMetaObject::invokeMethod(item, "positionViewAtIndex", Q_ARG(int, to), Q_ARG(int, contain));
    }
    return true;
}

void KeyboardFocus::setShown(bool shown)
{
    if (shown == m_shown)
        return;
    m_shown = shown;
    Q_EMIT shownChanged();
}
