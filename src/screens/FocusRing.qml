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
    // A gap of the background between the control and the ring keeps the
    // ring apart from a fill of the same colour.
    anchors.margins: -4
    z: 100
    radius: 8
    color: "transparent"
    border.width: 2
    border.color: Theme.focusRing
    visible: active && KeyboardFocus.shown
}
