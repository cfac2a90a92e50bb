// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

// Whether the focus ring is drawn: from the first key press until the next
// click or tap, so that a control clicked with the mouse shows no ring while
// one reached with Tab or the arrows does. Watches the whole application.
class KeyboardFocus : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool shown READ shown NOTIFY shownChanged)

public:
    explicit KeyboardFocus(QObject *parent = nullptr);

    bool shown() const { return m_shown; }

    // Home, End, Page Up and Page Down in a ListView or GridView: moves its
    // current item (a page is what fits in the view) and scrolls it into
    // view; Shift+Tab leaves the view for the control before it. True when
    // the key was one of them.
    Q_INVOKABLE static bool navigate(QObject *view, int key);

Q_SIGNALS:
    void shownChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void setShown(bool shown);

    bool m_shown = false;
};
