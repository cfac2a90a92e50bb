// SPDX-License-Identifier: GPL-3.0-or-later
// A transport symbol of the now-playing bar that dims while hovered.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Item {
    id: button

    property string symbol
    property real symbolSize: 20
    property color color: Theme.transportSymbol
    property string accessibleName
    readonly property bool hovered: hover.hovered

    signal clicked()

    implicitWidth: Math.max(28, symbolSize + 8)
    implicitHeight: Math.max(28, symbolSize + 8)
    Accessible.role: Accessible.Button
    Accessible.name: accessibleName
    Accessible.onPressAction: button.clicked()
    activeFocusOnTab: true
    Keys.onReturnPressed: button.clicked()
    Keys.onEnterPressed: button.clicked()

    SymbolIcon {
        anchors.centerIn: parent
        name: button.symbol
        size: button.symbolSize
        color: button.color
        opacity: button.hovered ? 0.6 : 1
        Behavior on opacity { NumberAnimation { duration: Theme.hoverDuration; easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeInOut } }
    }
    HoverHandler { id: hover; cursorShape: Qt.PointingHandCursor }
    TapHandler { onTapped: button.clicked() }
    FocusRing {}
}
