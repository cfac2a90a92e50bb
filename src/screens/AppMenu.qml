// SPDX-License-Identifier: GPL-3.0-or-later
// The application menu, opened from the top bar's menu button or by a right
// click on the top bar.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

Menu {
    id: menu

    signal aboutTriggered()
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
        contentItem: Text {
            text: item.text
            color: Theme.primaryText
            font.family: Theme.uiFont
            font.pixelSize: 13
            verticalAlignment: Text.AlignVCenter
        }
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
    Action { text: "Quit Tarnwell"; onTriggered: menu.quitTriggered() }
}
