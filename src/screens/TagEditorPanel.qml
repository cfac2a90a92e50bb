// SPDX-License-Identifier: GPL-3.0-or-later
// Title, artist and album for one song or for several. Closing with unsaved
// changes asks first; the backdrop (the owner's) closes at once.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

Rectangle {
    id: panel

    // How many songs the panel writes to, and the file name of a single one.
    property int songCount: 1
    property string fileName: ""
    property string initialTitle: ""
    property string initialArtist: ""
    property string initialAlbum: ""
    property bool busy: false
    property string busyText: ""
    // Why the last save failed: one line a file. The fields keep what was typed.
    property string errorText: ""

    readonly property bool several: songCount >= 2
    readonly property bool hasChanges: titleField.text !== initialTitle || artistField.text !== initialArtist
                                       || albumField.text !== initialAlbum
    readonly property bool showDiscardAlert: alert.visible

    signal saveRequested(string title, string artist, string album)
    signal cancelRequested()

    function attemptClose() {
        if (panel.hasChanges)
            alert.visible = true
        else
            panel.cancelRequested()
    }

    width: 380
    implicitHeight: content.implicitHeight + 48
    radius: 14
    color: Theme.raisedBackground
    border.color: Theme.border
    border.width: 1
    focus: true

    Keys.onEscapePressed: (event) => {
        if (event.modifiers === Qt.NoModifier) {
            if (alert.visible)
                alert.visible = false
            else
                panel.attemptClose()
        }
    }
    // Enter in a field saves, as the Save button does.
    Keys.onReturnPressed: if (!panel.busy && !alert.visible) saveButton.clicked()
    Keys.onEnterPressed: if (!panel.busy && !alert.visible) saveButton.clicked()
    Component.onCompleted: titleField.forceActiveFocus()

    CardShadow {
        radius: panel.radius
        color: Qt.rgba(0, 0, 0, 0.28)
    }
    // Clicks on the panel stay on the panel.
    MouseArea { anchors.fill: parent }

    Column {
        id: content
        x: 24
        y: 24
        width: parent.width - 48
        spacing: 14

        Item {
            width: parent.width
            height: heading.implicitHeight
            Text {
                id: heading
                objectName: "editorHeading"
                text: panel.several ? "Edit " + panel.songCount + " Tracks" : "Edit Tags"
                font.pixelSize: 16
                font.weight: Font.DemiBold
                color: Theme.primaryText
                Accessible.role: Accessible.Heading
            }
            Rectangle {
                objectName: "closeButton"
                anchors.right: parent.right
                anchors.verticalCenter: heading.verticalCenter
                width: 26
                height: 26
                radius: 13
                color: Theme.subtleFill
                SymbolIcon {
                    anchors.centerIn: parent
                    name: "xmark"
                    size: 11
                    font.weight: Font.Bold
                    color: Theme.secondaryText
                }
                MouseArea { anchors.fill: parent; cursorShape: Qt.PointingHandCursor; onClicked: panel.attemptClose() }
                Accessible.role: Accessible.Button
                Accessible.name: "Close"
                Accessible.onPressAction: panel.attemptClose()
            }
        }
        Text {
            objectName: "editorLine"
            width: parent.width
            visible: text !== ""
            text: panel.several ? "Leave a field empty to keep each track's existing value."
                : panel.songCount === 1 ? panel.fileName : ""
            wrapMode: Text.Wrap
            font.pixelSize: 12
            color: Theme.secondaryText
        }

        TagField {
            id: titleField
            objectName: "titleField"
            width: parent.width
            label: "Title"
            placeholder: panel.several ? "Leave empty to keep original" : "Track title"
            initial: panel.initialTitle
        }
        TagField {
            id: artistField
            objectName: "artistField"
            width: parent.width
            label: "Artist"
            placeholder: panel.several ? "Leave empty to keep original" : "Artist name"
            initial: panel.initialArtist
        }
        TagField {
            id: albumField
            objectName: "albumField"
            width: parent.width
            label: "Album"
            placeholder: panel.several ? "Leave empty to keep original" : "Album name"
            initial: panel.initialAlbum
        }

        Text {
            objectName: "saveError"
            width: parent.width
            visible: text !== ""
            text: panel.errorText
            wrapMode: Text.Wrap
            maximumLineCount: 6
            elide: Text.ElideRight
            font.pixelSize: 12
            color: Theme.primaryText
        }

        Item {
            width: parent.width
            height: saveButton.implicitHeight
            Text {
                anchors.verticalCenter: parent.verticalCenter
                visible: panel.busy
                text: panel.busyText
                font.pixelSize: 12
                color: Theme.secondaryText
            }
            Row {
                anchors.right: parent.right
                spacing: 10
                PillButton {
                    objectName: "cancelButton"
                    text: "Cancel"
                    quiet: true
                    fontSize: 13
                    horizontalPadding: 14
                    enabled: !panel.busy
                    onClicked: panel.attemptClose()
                }
                PillButton {
                    id: saveButton
                    objectName: "saveButton"
                    text: "Save"
                    fontSize: 13
                    horizontalPadding: 14
                    enabled: !panel.busy
                    opacity: enabled ? 1 : 0.5
                    onClicked: panel.saveRequested(titleField.text, artistField.text, albumField.text)
                }
            }
        }
    }

    // The panel dims behind the question.
    Rectangle {
        objectName: "discardDim"
        anchors.fill: parent
        radius: panel.radius
        visible: alert.visible
        color: Qt.rgba(0, 0, 0, 0.3)
    }
    // "Discard changes?"
    Rectangle {
        id: alert
        objectName: "discardAlert"
        visible: false
        anchors.centerIn: parent
        width: parent.width - 40
        height: alertColumn.implicitHeight + 36
        radius: 12
        color: Theme.windowBackground
        border.color: Theme.border
        border.width: 1
        MouseArea { anchors.fill: parent }
        CardShadow {
            radius: alert.radius
            color: Qt.rgba(0, 0, 0, 0.28)
        }
        Column {
            id: alertColumn
            x: 18
            y: 18
            width: parent.width - 36
            spacing: 10
            Text {
                text: "Discard changes?"
                font.pixelSize: 15
                font.weight: Font.DemiBold
                color: Theme.primaryText
            }
            Text {
                width: parent.width
                text: "You have unsaved changes. They will be lost if you close now."
                wrapMode: Text.Wrap
                font.pixelSize: 12
                color: Theme.secondaryText
            }
            Row {
                anchors.right: parent.right
                spacing: 10
                PillButton {
                    objectName: "keepEditingButton"
                    text: "Keep editing"
                    quiet: true
                    fontSize: 13
                    onClicked: {
                        alert.visible = false
                        titleField.forceActiveFocus()
                    }
                }
                PillButton {
                    objectName: "discardButton"
                    text: "Discard"
                    fontSize: 13
                    color: hovered ? "#a82824" : "#c9302c"
                    onClicked: panel.cancelRequested()
                }
            }
        }
    }
}
