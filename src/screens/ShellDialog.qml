// SPDX-License-Identifier: GPL-3.0-or-later
// A small modal card in the middle of the window, in the theme's colours.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

Popup {
    id: dialog

    default property alias content: body.data

    anchors.centerIn: Overlay.overlay
    width: 380
    modal: true
    dim: true
    padding: 28
    closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutside

    enter: Transition {
        NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.panelDuration; easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeOut }
        NumberAnimation { property: "scale"; from: 0.97; to: 1; duration: Theme.panelDuration; easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeOut }
    }
    exit: Transition {
        NumberAnimation { property: "opacity"; from: 1; to: 0; duration: Theme.panelDuration; easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeOut }
    }

    Overlay.modal: Rectangle { color: Qt.rgba(0, 0, 0, 0.35) }

    background: Rectangle {
        radius: 12
        color: Theme.raisedBackground
        border.color: Theme.border
        border.width: 1
        CardShadow {
            radius: 12
            blur: 24
            offset: 10
            color: Qt.rgba(0, 0, 0, 0.3)
        }
    }

    contentItem: Column {
        id: body
        spacing: 0
    }
}
