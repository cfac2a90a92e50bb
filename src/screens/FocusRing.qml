// SPDX-License-Identifier: GPL-3.0-or-later
// The ring around what has the keyboard focus, drawn only while the keyboard
// is in use (never after a click). A child of the control, or a list's
// highlight, which then follows the current item.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Rectangle {
    id: ring

    // What the ring belongs to has the focus.
    property bool active: parent ? parent.activeFocus : false
    // A list's highlight is placed by the list instead.
    property bool fillsParent: true

    anchors.fill: fillsParent ? parent : undefined
    anchors.margins: -2
    z: 100
    radius: 6
    color: "transparent"
    border.width: 2
    border.color: Theme.focusRing
    visible: active && KeyboardFocus.shown
}
