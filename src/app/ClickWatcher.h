// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>
#include <QPointer>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

// Notices clicks on the area it covers without taking them: whatever is under
// the pointer handles the click as usual, and `clicked` is emitted as well. A
// click that something outside the watched area took (a popup, a dialog, an
// overlay above it) does not count.
class ClickWatcher : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT

public:
    explicit ClickWatcher(QQuickItem *parent = nullptr);
    ~ClickWatcher() override;

Q_SIGNALS:
    void clicked();

protected:
    void itemChange(ItemChange change, const ItemChangeData &data) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void watch(QQuickWindow *window);
    bool covers(const QPointF &scenePosition) const;
    // Whether an object that grabbed the pointer belongs to the watched area.
    bool ownsGrabber(QObject *grabber) const;

    QPointer<QQuickWindow> m_window;
    bool m_pressed = false;
    QPointF m_pressPosition;
};
