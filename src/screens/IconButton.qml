// SPDX-License-Identifier: GPL-3.0-or-later
// A symbol in a 36 x 36 frame that brightens while the pointer is over it.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Item {
    id: button

    property string symbol
    property real symbolSize: 20
    property string accessibleName
    readonly property bool hovered: hover.hovered

    signal clicked()

    implicitWidth: 36
    implicitHeight: 36

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
        color: button.hovered ? Theme.primaryText : Theme.secondaryText
        Behavior on color { ColorAnimation { duration: Theme.hoverDuration; easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeInOut } }
    }

    HoverHandler { id: hover; cursorShape: Qt.PointingHandCursor }
    TapHandler { onTapped: button.clicked() }
    FocusRing {}
}
