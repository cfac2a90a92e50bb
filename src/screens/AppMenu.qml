// SPDX-License-Identifier: GPL-3.0-or-later
// The application menu, opened from the top bar's menu button or by a right
// click on the top bar.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

Menu {
    id: menu

    // Whether songs play at the level their ReplayGain tags ask for.
    required property bool volumeLevelling

    signal aboutTriggered()
    signal volumeLevellingToggled()
    signal checkForUpdatesTriggered()
    signal quitTriggered()

    width: 220
    topPadding: 6
    bottomPadding: 6

    background: Rectangle {
        implicitWidth: 220
        radius: 10
        color: Theme.raisedBackground
        border.color: Theme.border
        border.width: 1
    }

    delegate: MenuItem {
        id: item
        implicitHeight: 32
        leftPadding: 14
        rightPadding: 14
        contentItem: Item {
            implicitHeight: label.implicitHeight
            Text {
                id: label
                anchors.left: parent.left
                anchors.right: check.left
                anchors.verticalCenter: parent.verticalCenter
                text: item.text
                color: Theme.primaryText
                font.family: Theme.uiFont
                font.pixelSize: 13
                elide: Text.ElideRight
            }
            SymbolIcon {
                id: check
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                name: "checkmark"
                size: 14
                visible: item.checkable && item.checked
            }
        }
        indicator: null
        background: Rectangle {
            anchors.fill: parent
            anchors.leftMargin: 6
            anchors.rightMargin: 6
            radius: 6
            color: item.highlighted ? Theme.subtleFill : "transparent"
        }
    }

    Action { text: "About Tarnwell"; onTriggered: menu.aboutTriggered() }
    Action { text: "Check for Updates..."; onTriggered: menu.checkForUpdatesTriggered() }
    MenuSeparator {
        contentItem: Rectangle { implicitHeight: 1; color: Theme.border }
        topPadding: 5
        bottomPadding: 5
        leftPadding: 12
        rightPadding: 12
    }
    Action {
        text: "Volume Levelling"
        checkable: true
        checked: menu.volumeLevelling
        onTriggered: {
            menu.volumeLevellingToggled()
            // The stored preference decides, not the click.
            checked = Qt.binding(() => menu.volumeLevelling)
        }
    }
    MenuSeparator {
        contentItem: Rectangle { implicitHeight: 1; color: Theme.border }
        topPadding: 5
        bottomPadding: 5
        leftPadding: 12
        rightPadding: 12
    }
    Action { text: "Quit Tarnwell"; onTriggered: menu.quitTriggered() }
}
