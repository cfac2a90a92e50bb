// SPDX-License-Identifier: GPL-3.0-or-later
#include "KeyPressFilter.h"

#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickWindow>

KeyPressFilter::KeyPressFilter(Handler handler, QObject *parent)
    : QObject(parent)
    , m_handler(std::move(handler))
{
}

bool KeyPressFilter::editsText(const QObject *item)
{
    return item && (item->inherits("QQuickTextInput") || item->inherits("QQuickTextEdit"));
}

QObject *KeyPressFilter::enclosingList(QObject *item)
{
    for (auto *i = qobject_cast<QQuickItem *>(item); i; i = i->parentItem()) {
        if (i->inherits("QQuickItemView"))
            return i;
    }
    return nullptr;
}

bool KeyPressFilter::eventFilter(QObject *watched, QEvent *event)
{
    // A key press is seen here once for the window and again for each item it
    // is delivered to; only the window's copy counts.
    if (event->type() != QEvent::KeyPress || !m_handler)
        return false;
    auto *window = qobject_cast<QQuickWindow *>(watched);
    if (!window)
        return false;
    const auto *key = static_cast<QKeyEvent *>(event);
    KeyPress press;
    press.key = key->key();
    press.modifiers = key->modifiers();
    press.autoRepeat = key->isAutoRepeat();
    press.textInputFocused = editsText(window->activeFocusItem());
    if (QObject *list = enclosingList(window->activeFocusItem())) {
        press.listFocused = true;
        press.listTakesSpace = list->property("takesSpace").toBool();
    }
    if (!m_handler(press))
        return false;
    event->accept();
    return true;
}
