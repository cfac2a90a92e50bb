// SPDX-License-Identifier: GPL-3.0-or-later
// The app menu's commands in the desktop's global menu bar, where it has one.
import QtQuick
import Qt.labs.platform as Platform

Loader {
    id: menu

    property bool volumeLevelling: false
    signal aboutTriggered()
    signal checkForUpdatesTriggered()
    signal musicFoldersTriggered()
    signal volumeLevellingToggled(bool on)

    sourceComponent: Platform.MenuBar {
        Platform.Menu {
            title: "Tarnwell"
            Platform.MenuItem { text: "About Tarnwell"; onTriggered: menu.aboutTriggered() }
            Platform.MenuItem { text: "Check for Updates..."; onTriggered: menu.checkForUpdatesTriggered() }
            Platform.MenuItem { text: "Music Folders…"; onTriggered: menu.musicFoldersTriggered() }
            Platform.MenuSeparator {}
            Platform.MenuItem {
                text: "Volume Levelling"
                checkable: true
                checked: menu.volumeLevelling
                onTriggered: menu.volumeLevellingToggled(checked)
            }
            Platform.MenuSeparator {}
            Platform.MenuItem { text: "Quit Tarnwell"; onTriggered: Qt.quit() }
        }
    }
}
