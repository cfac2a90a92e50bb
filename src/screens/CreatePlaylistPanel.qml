// SPDX-License-Identifier: GPL-3.0-or-later
// "New Playlist": a name and Create / Cancel. Return creates, Escape cancels;
// a name of only spaces can't be created.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

Rectangle {
    id: panel

    readonly property string name: field.text
    readonly property string trimmedName: name.replace(/^[ \t]+|[ \t]+$/g, "")
    readonly property bool canCreate: trimmedName !== ""

    signal createRequested(string name)
    signal cancelRequested()

    function create() {
        if (panel.canCreate)
            panel.createRequested(panel.trimmedName)
    }

    width: 480
    implicitHeight: content.implicitHeight + 96
    radius: 10
    color: Theme.raisedBackground
    border.color: Theme.border
    border.width: 1

    Component.onCompleted: field.forceActiveFocus()

    CardShadow {
        radius: panel.radius
        color: Qt.rgba(0, 0, 0, 0.3)
    }
    // Clicks on the panel stay on the panel.
    MouseArea { anchors.fill: parent }

    Column {
        id: content
        anchors.fill: parent
        anchors.margins: 48
        spacing: 22

        Text {
            text: "New Playlist"
            font.pixelSize: 22
            font.weight: Font.Medium
            color: Theme.primaryText
            Accessible.role: Accessible.Heading
        }
        TextField {
            id: field
            objectName: "playlistNameField"
            width: parent.width
            placeholderText: "Playlist name"
            Accessible.name: "Playlist name"
            font.pixelSize: 16
            color: Theme.primaryText
            placeholderTextColor: Theme.secondaryText
            background: Rectangle {
                radius: 6
                color: Theme.windowBackground
                border.color: field.activeFocus ? Theme.brand : Theme.border
                border.width: 1
            }
            Keys.onReturnPressed: panel.create()
            Keys.onEnterPressed: panel.create()
            Keys.onEscapePressed: panel.cancelRequested()
        }
        Row {
            anchors.right: parent.right
            spacing: 12
            PillButton {
                objectName: "cancelButton"
                text: "Cancel"
                quiet: true
                fontSize: 15
                onClicked: panel.cancelRequested()
            }
            PillButton {
                objectName: "createButton"
                text: "Create"
                fontSize: 15
                horizontalPadding: 28
                verticalPadding: 10
                enabled: panel.canCreate
                opacity: panel.canCreate ? 1 : 0.4
                onClicked: panel.create()
            }
        }
    }
}
