// SPDX-License-Identifier: GPL-3.0-or-later
// One of the sidebar's fixed entries: a symbol and a label, marked while chosen.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Rectangle {
    id: entry

    property string symbol
    property string label
    property bool selected: false

    signal clicked()

    implicitHeight: 34
    radius: 5
    color: selected ? Theme.panelBackground : (hover.hovered ? Qt.rgba(Theme.subtleFill.r, Theme.subtleFill.g, Theme.subtleFill.b, 0.5) : "transparent")
    Accessible.role: Accessible.Button
    Accessible.name: label
    Accessible.onPressAction: entry.clicked()
    activeFocusOnTab: true
    Keys.onReturnPressed: entry.clicked()
    Keys.onEnterPressed: entry.clicked()
    // The sidebar's entries are a list: the arrows move between them.
    Keys.onUpPressed: entry.nextItemInFocusChain(false).forceActiveFocus(Qt.TabFocusReason)
    Keys.onDownPressed: entry.nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)

    Row {
        anchors.left: parent.left
        anchors.leftMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        spacing: 8
        SymbolIcon {
            width: 14
            anchors.verticalCenter: parent.verticalCenter
            name: entry.symbol
            size: 13
            color: entry.selected ? Theme.brand : Theme.primaryText
        }
        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: entry.label
            font.pixelSize: 14
            font.weight: entry.selected ? Font.Medium : Font.Normal
            color: entry.selected ? Theme.brand : Theme.primaryText
        }
    }
    HoverHandler { id: hover }
    TapHandler { onTapped: entry.clicked() }
    FocusRing {}
}
