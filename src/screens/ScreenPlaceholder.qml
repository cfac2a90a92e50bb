// SPDX-License-Identifier: GPL-3.0-or-later
// Stands in the main area for a screen that is not built yet: its title and
// a line under it.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Item {
    id: screen

    required property string title
    required property string subtitle
    // Shown in the middle when the screen has nothing to list.
    property string emptyText: ""
    property string emptySymbol: "music.note.house"

    Column {
        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            leftMargin: 28
            rightMargin: 28
            topMargin: 12
        }
        spacing: 4

        Text {
            text: screen.title
            color: Theme.primaryText
            font.family: Theme.uiFont
            font.pixelSize: 26
            font.weight: Font.Thin
            font.letterSpacing: 1
            Accessible.role: Accessible.Heading
        }
        Text {
            text: screen.subtitle
            visible: text !== ""
            color: Theme.secondaryText
            font.family: Theme.uiFont
            font.pixelSize: 12
            font.weight: Font.Light
        }
    }

    Column {
        anchors.centerIn: parent
        visible: screen.emptyText !== ""
        spacing: 12

        SymbolIcon {
            anchors.horizontalCenter: parent.horizontalCenter
            name: screen.emptySymbol
            size: 36
            color: Theme.secondaryText
            font.weight: Font.ExtraLight
        }
        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: screen.emptyText
            color: Theme.secondaryText
            font.family: Theme.uiFont
            font.pixelSize: 14
            font.weight: Font.Light
        }
    }
}
