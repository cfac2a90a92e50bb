// SPDX-License-Identifier: GPL-3.0-or-later
// The ring around what has the keyboard focus, drawn only while the keyboard
// is in use (never after a click). A child of the control (a list's rows
// take the focus of their list as it moves).
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Rectangle {
    id: ring

    // What the ring belongs to has the focus.
    property bool active: parent ? parent.activeFocus : false

    anchors.fill: parent
    anchors.margins: -2
    z: 100
    radius: 6
    color: "transparent"
    border.width: 2
    border.color: Theme.focusRing
    visible: active && KeyboardFocus.shown
}
