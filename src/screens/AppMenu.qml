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

    component Separator: MenuSeparator {
        contentItem: Rectangle { implicitHeight: 1; color: Theme.border }
        topPadding: 5
        bottomPadding: 5
        leftPadding: 12
        rightPadding: 12
    }

    signal aboutTriggered()
    signal musicFoldersTriggered()
    signal volumeLevellingToggled()
    signal checkForUpdatesTriggered()
    signal quitTriggered()
    // A command that also has a key (Main.qml's runCommand): "import",
    // "newPlaylist", "search", "home", "artists", "songs", "untagged",
    // "shuffle", "shortcuts".
    signal commandTriggered(string command)

    width: 250
    // A click beside the open menu only closes it.
    modal: true
    dim: false
    topPadding: 6
    bottomPadding: 6

    background: Rectangle {
        implicitWidth: 250
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
                anchors.right: keys.left
                anchors.verticalCenter: parent.verticalCenter
                text: item.text
                color: Theme.primaryText
                font.family: Theme.uiFont
                font.pixelSize: 13
                elide: Text.ElideRight
            }
            // The key that does the same, from the action's `keys`.
            Text {
                id: keys
                anchors.right: check.visible ? check.left : parent.right
                anchors.rightMargin: check.visible ? 8 : 0
                anchors.verticalCenter: parent.verticalCenter
                text: item.action && item.action.keys !== undefined ? item.action.keys : ""
                color: Theme.secondaryText
                font.family: Theme.uiFont
                font.pixelSize: 12
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
    Action { text: "Music Folders…"; onTriggered: menu.musicFoldersTriggered() }
    Separator {}
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
    Separator {}
    Action { text: "Import Music…"; property string keys: "Ctrl+O"; onTriggered: menu.commandTriggered("import") }
    Action { text: "New Playlist"; property string keys: "Ctrl+N"; onTriggered: menu.commandTriggered("newPlaylist") }
    Action { text: "Search"; property string keys: "Ctrl+F"; onTriggered: menu.commandTriggered("search") }
    Action { text: "Home"; property string keys: "Ctrl+1"; onTriggered: menu.commandTriggered("home") }
    Action { text: "All Artists"; property string keys: "Ctrl+2"; onTriggered: menu.commandTriggered("artists") }
    Action { text: "All Songs"; property string keys: "Ctrl+3"; onTriggered: menu.commandTriggered("songs") }
    Action { text: "Untagged Songs"; property string keys: "Ctrl+4"; onTriggered: menu.commandTriggered("untagged") }
    Action { text: "Shuffle"; property string keys: "Ctrl+S"; onTriggered: menu.commandTriggered("shuffle") }
    Action { text: "Keyboard Shortcuts"; property string keys: "Ctrl+?"; onTriggered: menu.commandTriggered("shortcuts") }
    Separator {}
    Action { text: "Quit Tarnwell"; property string keys: "Ctrl+Q"; onTriggered: menu.quitTriggered() }
}
