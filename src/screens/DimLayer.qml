// SPDX-License-Identifier: GPL-3.0-or-later
// A panel in the middle of the window over a dimmed window. A click on the
// dim asks to dismiss; the dim takes the hover too, so what is behind it
// stays still.
import QtQuick
import Tarnwell

Item {
    id: dimLayer

    required property bool shown
    required property Component panel
    property real dim: 0.35
    property bool dismissable: true
    signal dismissRequested()

    anchors.fill: parent
    visible: opacity > 0
    opacity: shown ? 1 : 0
    Behavior on opacity { NumberAnimation { duration: Theme.duration(150); easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeOut } }

    Rectangle {
        anchors.fill: parent
        color: "#000000"
        opacity: dimLayer.dim
        MouseArea {
            anchors.fill: parent
            hoverEnabled: true
            onClicked: if (dimLayer.dismissable) dimLayer.dismissRequested()
        }
    }
    Loader {
        anchors.centerIn: parent
        active: dimLayer.shown
        sourceComponent: dimLayer.panel
    }
}
