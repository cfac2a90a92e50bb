// SPDX-License-Identifier: GPL-3.0-or-later
// "Import Music": the top bar's call to action.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Rectangle {
    id: button

    readonly property bool hovered: hover.hovered

    signal clicked()

    implicitWidth: row.implicitWidth + 28
    implicitHeight: row.implicitHeight + 14
    radius: 8
    color: hovered ? Theme.buttonFillHover : Theme.buttonFill
    Behavior on color { ColorAnimation { duration: Theme.hoverDuration; easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeInOut } }

    Accessible.role: Accessible.Button
    Accessible.name: label.text
    Accessible.onPressAction: button.clicked()
    activeFocusOnTab: true
    Keys.onReturnPressed: button.clicked()
    Keys.onEnterPressed: button.clicked()

    Row {
        id: row
        anchors.centerIn: parent
        spacing: 6

        SymbolIcon {
            anchors.verticalCenter: parent.verticalCenter
            name: "plus"
            size: 11
            font.weight: Font.DemiBold
            color: Theme.onAccentText
        }
        Text {
            id: label
            anchors.verticalCenter: parent.verticalCenter
            text: "Import Music"
            color: Theme.onAccentText
            font.family: Theme.uiFont
            font.pixelSize: 13
            font.weight: Font.Medium
        }
    }

    HoverHandler { id: hover; cursorShape: Qt.PointingHandCursor }
    TapHandler { onTapped: button.clicked() }
    FocusRing { radius: 10 }
}
