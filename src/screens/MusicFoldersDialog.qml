// SPDX-License-Identifier: GPL-3.0-or-later
// "Music Folders": the folders imported into the library, each with a button
// that takes it out again.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

ShellDialog {
    id: dialog

    // File URLs, in the order they were first imported.
    required property list<url> folders

    signal removeRequested(url folder)

    width: 460

    function pathOf(folder) {
        return decodeURIComponent(folder.toString().replace(/^file:\/\//, ""))
    }

    Text {
        text: "Music Folders"
        color: Theme.primaryText
        font.family: Theme.uiFont
        font.pixelSize: 16
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
    }
    Item { width: 1; height: 6 }
    Text {
        width: parent.width
        wrapMode: Text.WordWrap
        text: "Tarnwell imports these folders at every start and watches them for new songs."
        color: Theme.secondaryText
        font.family: Theme.uiFont
        font.pixelSize: 12
    }
    Item { width: 1; height: 14 }
    Text {
        objectName: "noFolders"
        visible: dialog.folders.length === 0
        text: "No folders yet. Use Import Music to add one."
        color: Theme.secondaryText
        font.family: Theme.uiFont
        font.pixelSize: 13
    }
    Repeater {
        objectName: "folderRows"
        model: dialog.folders
        delegate: Item {
            id: row
            required property url modelData
            width: dialog.availableWidth
            height: 40
            Text {
                anchors.left: parent.left
                anchors.right: remove.left
                anchors.rightMargin: 8
                anchors.verticalCenter: parent.verticalCenter
                text: dialog.pathOf(row.modelData)
                elide: Text.ElideMiddle
                color: Theme.primaryText
                font.family: Theme.uiFont
                font.pixelSize: 13
            }
            IconButton {
                id: remove
                objectName: "removeFolderButton"
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                symbol: "xmark"
                symbolSize: 14
                accessibleName: "Remove " + dialog.pathOf(row.modelData)
                onClicked: dialog.removeRequested(row.modelData)
            }
            Rectangle {
                anchors.bottom: parent.bottom
                width: parent.width
                height: 1
                color: Theme.border
            }
        }
    }
    Item { width: 1; height: 18 }
    PillButton {
        anchors.right: parent.right
        text: "Close"
        onClicked: dialog.close()
    }
}
