// SPDX-License-Identifier: GPL-3.0-or-later
// "Keyboard Shortcuts": every key of the window, in groups, from the app
// menu or Ctrl+?.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

ShellDialog {
    id: dialog

    // [{title, keys: [[keys, what], ...]}, ...]
    readonly property var groups: [
        { title: "Playback", keys: [
            ["Space", "Play or pause"],
            ["Ctrl+→", "Next song"],
            ["Ctrl+←", "Previous song"],
            ["→  /  ←", "Forward or back 5 seconds"],
            ["Shift+→  /  Shift+←", "Forward or back 30 seconds"],
            ["Ctrl+S", "Shuffle on or off"] ] },
        { title: "Library", keys: [
            ["Ctrl+F  or  /", "Search"],
            ["Ctrl+O", "Import Music"],
            ["Ctrl+N", "New Playlist"],
            ["Ctrl+1 … 4", "Home, All Artists, All Songs, Untagged Songs"],
            ["Ctrl+E", "Edit the tags of the chosen song"] ] },
        { title: "Moving around", keys: [
            ["Tab  /  Shift+Tab", "Next or previous control"],
            ["Arrows, Home, End, Page Up/Down", "Move in a list or grid"],
            ["Enter", "Play, open or press"],
            ["Space", "Tick a song in Untagged Songs"],
            ["Escape", "Close what is open"],
            ["Ctrl+?", "Keyboard Shortcuts"],
            ["Ctrl+Q", "Quit Tarnwell"] ] }
    ]

    width: 520
    // Escape closes it and Tab stays inside.
    focus: true

    Text {
        objectName: "shortcutsHeading"
        text: "Keyboard Shortcuts"
        color: Theme.primaryText
        font.family: Theme.uiFont
        font.pixelSize: 18
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    Repeater {
        model: dialog.groups
        delegate: Column {
            id: group
            required property var modelData
            width: parent.width
            topPadding: 14
            spacing: 4
            Text {
                text: group.modelData.title.toUpperCase()
                color: Theme.secondaryText
                font.family: Theme.uiFont
                font.pixelSize: 10
                font.weight: Font.DemiBold
                font.letterSpacing: 1
            }
            Repeater {
                model: group.modelData.keys
                delegate: Row {
                    id: line
                    required property var modelData
                    width: group.width
                    Accessible.role: Accessible.StaticText
                    Accessible.name: modelData[1] + ": " + modelData[0]
                    Text {
                        width: line.width * 0.45
                        text: line.modelData[0]
                        wrapMode: Text.WordWrap
                        color: Theme.brand
                        font.family: Theme.uiFont
                        font.pixelSize: 13
                        font.weight: Font.Medium
                    }
                    Text {
                        width: line.width * 0.55
                        text: line.modelData[1]
                        wrapMode: Text.WordWrap
                        color: Theme.primaryText
                        font.family: Theme.uiFont
                        font.pixelSize: 13
                    }
                }
            }
        }
    }
    Item { width: 1; height: 18 }
    PillButton {
        objectName: "shortcutsClose"
        anchors.horizontalCenter: parent.horizontalCenter
        text: "Close"
        onClicked: dialog.close()
    }
}
