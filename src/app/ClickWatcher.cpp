// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClickWatcher.h"

#include <QGuiApplication>
#include <QPointerEvent>
#include <QQuickWindow>
#include <QStyleHints>

ClickWatcher::ClickWatcher(QQuickItem *parent)
    : QQuickItem(parent)
{
    // Never a target of pointer events itself.
    setAcceptedMouseButtons(Qt::NoButton);
    setAcceptTouchEvents(false);
}

ClickWatcher::~ClickWatcher()
{
    watch(nullptr);
}

void ClickWatcher::itemChange(ItemChange change, const ItemChangeData &data)
{
    if (change == ItemSceneChange)
        watch(data.window);
    QQuickItem::itemChange(change, data);
}

void ClickWatcher::watch(QQuickWindow *window)
{
    if (m_window == window)
        return;
    if (m_window)
        m_window->removeEventFilter(this);
    m_window = window;
    m_pressed = false;
    if (m_window)
        m_window->installEventFilter(this);
}

bool ClickWatcher::covers(const QPointF &scenePosition) const
{
    return isVisible() && isEnabled() && contains(mapFromScene(scenePosition));
}

bool ClickWatcher::ownsGrabber(QObject *grabber) const
{
    // A pointer handler belongs to the item it is declared in.
    QObject *o = grabber;
    while (o && !qobject_cast<QQuickItem *>(o))
        o = o->parent();
    auto *item = qobject_cast<QQuickItem *>(o);
    const QQuickItem *area = parentItem() ? parentItem() : this;
    return item && (item == area || area->isAncestorOf(item));
}

bool ClickWatcher::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_window)
        return false;
    const QEvent::Type type = event->type();
    const bool press = type == QEvent::MouseButtonPress || type == QEvent::TouchBegin;
    const bool release = type == QEvent::MouseButtonRelease || type == QEvent::TouchEnd;
    if (!press && !release)
        return false;
    auto *pointerEvent = static_cast<QPointerEvent *>(event);
    if (pointerEvent->pointCount() != 1)
        return false;
    const QEventPoint &point = pointerEvent->points().constFirst();
    if (press) {
        const auto *mouse = type == QEvent::MouseButtonPress ? static_cast<QMouseEvent *>(event) : nullptr;
        m_pressed = (!mouse || mouse->button() == Qt::LeftButton) && covers(point.scenePosition());
        m_pressPosition = point.scenePosition();
        return false;
    }
    if (!m_pressed)
        return false;
    m_pressed = false;
    const qreal moved = (point.scenePosition() - m_pressPosition).manhattanLength();
    if (moved > QGuiApplication::styleHints()->startDragDistance())
        return false;
    // Seen before the release is delivered: who took the press is still known.
    QObject *grabber = pointerEvent->exclusiveGrabber(point);
    if (grabber && !ownsGrabber(grabber))
        return false;
    Q_EMIT clicked();
    return false;
}
