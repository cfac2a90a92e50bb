// SPDX-License-Identifier: GPL-3.0-or-later
// A rounded button with a label: filled with the theme's button colour, or
// quiet (a subtle fill) for the secondary choice of a dialog.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Rectangle {
    id: button

    required property string text
    property string symbol: ""
    property bool quiet: false
    property int fontSize: 13
    property int symbolSize: fontSize
    property int horizontalPadding: 16
    property int verticalPadding: 8
    readonly property bool hovered: hover.hovered

    signal clicked()

    implicitWidth: row.implicitWidth + 2 * horizontalPadding
    implicitHeight: row.implicitHeight + 2 * verticalPadding
    radius: 8
    color: quiet ? (hovered ? Theme.progressTrack : Theme.subtleFill)
                 : (hovered ? Theme.buttonFillHover : Theme.buttonFill)
    Behavior on color { ColorAnimation { duration: Theme.hoverDuration; easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeInOut } }

    activeFocusOnTab: true
    Keys.onReturnPressed: button.clicked()
    Keys.onEnterPressed: button.clicked()
    Keys.onSpacePressed: button.clicked()
    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: button.clicked()

    Rectangle {
        anchors.fill: parent
        anchors.margins: -3
        radius: button.radius + 3
        color: "transparent"
        border.color: Theme.focusRing
        border.width: 2
        visible: button.activeFocus && KeyboardFocus.shown
    }

    Row {
        id: row
        anchors.centerIn: parent
        spacing: 7
        SymbolIcon {
            anchors.verticalCenter: parent.verticalCenter
            visible: button.symbol !== ""
            name: button.symbol
            size: button.symbolSize
            font.weight: Font.Medium
            color: button.quiet ? Theme.primaryText : Theme.onAccentText
        }
        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: button.text
            color: button.quiet ? Theme.primaryText : Theme.onAccentText
            font.family: Theme.uiFont
            font.pixelSize: button.fontSize
            font.weight: Font.Medium
        }
    }

    HoverHandler { id: hover; cursorShape: Qt.PointingHandCursor }
    TapHandler {
        gesturePolicy: TapHandler.ReleaseWithinBounds
        onTapped: button.clicked()
    }
}
