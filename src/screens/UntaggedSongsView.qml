// SPDX-License-Identifier: GPL-3.0-or-later
// The songs missing a title, artist or album; tick some and write the tags
// into all of them at once.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

Item {
    id: screen

    required property UntaggedSongs untagged

    signal selectAllClicked()
    signal editSelectedClicked()
    signal editRequested(string trackId)
    signal selectionToggled(string trackId)

    Column {
        id: header
        x: 28
        y: 12
        width: parent.width - 56
        spacing: 6

        Item {
            width: parent.width
            height: titleColumn.implicitHeight
            Column {
                id: titleColumn
                spacing: 4
                Text {
                    text: "Untagged Songs"
                    font.pixelSize: 26
                    font.weight: Font.Thin
                    color: Theme.primaryText
                    Accessible.role: Accessible.Heading
                }
                Text {
                    objectName: "untaggedCount"
                    visible: !screen.untagged.isLoading
                    text: SongFormat.songCount(screen.untagged.count) + " missing tags"
                    font.pixelSize: 12
                    font.weight: Font.Light
                    font.letterSpacing: 1
                    color: Theme.secondaryText
                }
            }
            Row {
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                spacing: 14
                visible: !screen.untagged.isLoading && screen.untagged.count > 0
                Text {
                    objectName: "selectAllButton"
                    anchors.verticalCenter: parent.verticalCenter
                    text: screen.untagged.selectedCount === screen.untagged.count ? "Deselect All" : "Select All"
                    font.pixelSize: 12
                    font.weight: Font.Medium
                    color: Theme.buttonFill
                    MouseArea { anchors.fill: parent; cursorShape: Qt.PointingHandCursor; onClicked: screen.selectAllClicked() }
                    Accessible.role: Accessible.Button
                    Accessible.name: text
                    Accessible.onPressAction: screen.selectAllClicked()
                    activeFocusOnTab: true
                    Keys.onReturnPressed: screen.selectAllClicked()
                    Keys.onEnterPressed: screen.selectAllClicked()
                    FocusRing {}
                }
                PillButton {
                    objectName: "editSelectedButton"
                    visible: screen.untagged.selectedCount > 0
                    text: "Edit " + screen.untagged.selectedCount + " selected"
                    fontSize: 12
                    horizontalPadding: 12
                    verticalPadding: 6
                    onClicked: screen.editSelectedClicked()
                }
            }
        }
        Text {
            width: parent.width
            text: "Songs without a title, artist, or album. Add tags so they show up correctly across your library."
            wrapMode: Text.Wrap
            font.pixelSize: 12
            font.weight: Font.Light
            color: Theme.secondaryText
        }
    }

    BusyIndicator {
        anchors.centerIn: parent
        running: screen.untagged.isLoading
        visible: running
    }
    Column {
        objectName: "allTagged"
        anchors.centerIn: parent
        visible: !screen.untagged.isLoading && screen.untagged.count === 0
        spacing: 12
        SymbolIcon {
            anchors.horizontalCenter: parent.horizontalCenter
            name: "checkmark.circle"
            size: 36
            color: Theme.accent
        }
        Text {
            text: "All songs are tagged"
            font.pixelSize: 14
            color: Theme.secondaryText
        }
    }

    ListView {
        id: list
        objectName: "untaggedList"
        Accessible.role: Accessible.List
        Accessible.name: "Untagged Songs"
        // The keyboard: arrows (the view's own), Home, End, Page Up/Down move
        // the current item, which takes the focus (and the ring) and stays in
        // view; Enter opens or plays it.
        activeFocusOnTab: true
        keyNavigationEnabled: true
        Keys.onPressed: (event) => event.accepted = KeyboardFocus.navigate(list, event.key)
        Keys.onReturnPressed: if (list.currentItem) screen.editRequested(list.currentItem.trackId)
        Keys.onEnterPressed: if (list.currentItem) screen.editRequested(list.currentItem.trackId)
        onCurrentIndexChanged: if (activeFocus) positionViewAtIndex(currentIndex, ListView.Contain)
        // A model filled after a reset still has a current row.
        onCountChanged: if (currentIndex < 0 && count > 0) currentIndex = 0
        focus: true
        // Space ticks the current row's check box.
        readonly property bool takesSpace: true
        Keys.onSpacePressed: if (list.currentItem) screen.selectionToggled(list.currentItem.trackId)
        // Shown once loaded, it takes the keys its screen was given meanwhile.
        onVisibleChanged: if (visible && screen.parent && screen.parent.activeFocus) forceActiveFocus()
        anchors { left: parent.left; right: parent.right; top: header.bottom; bottom: parent.bottom }
        anchors.leftMargin: 8
        anchors.rightMargin: 8
        anchors.topMargin: 14
        visible: !screen.untagged.isLoading && screen.untagged.count > 0
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        model: screen.untagged
        ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded; Accessible.name: "Untagged Songs" }
        delegate: Rectangle {
            id: row
            required property int index
            required property string trackId
            required property string name
            required property string missing
            required property bool isSelected
            readonly property bool hovered: rowHover.hovered || rowArea.containsMouse

            width: ListView.view.width
            height: 52
            focus: ListView.isCurrentItem
            Accessible.role: Accessible.ListItem
            Accessible.name: row.name + ", " + row.missing
            Accessible.checkable: true
            Accessible.checked: row.isSelected
            color: hovered ? Theme.subtleFill : "transparent"
            Behavior on color { ColorAnimation { duration: Theme.duration(100); easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeInOut } }

            HoverHandler { id: rowHover }
            FocusRing { anchors.margins: 1 }
            MouseArea {
                id: rowArea
                anchors.fill: parent
                hoverEnabled: true
                onClicked: screen.editRequested(row.trackId)
            }
            Rectangle {
                visible: row.index > 0
                width: parent.width - 40
                x: 20
                height: 1
                color: Theme.panelBackground
            }
            // Ends where the Edit button begins, shown or not: long names elide.
            Row {
                anchors.left: parent.left
                anchors.leftMargin: 20
                anchors.right: editButton.left
                anchors.rightMargin: 12
                anchors.verticalCenter: parent.verticalCenter
                spacing: 12
                SymbolIcon {
                    id: checkbox
                    objectName: "checkbox"
                    anchors.verticalCenter: parent.verticalCenter
                    name: row.isSelected ? "checkmark.square.fill" : "square"
                    size: 16
                    color: row.isSelected ? Theme.buttonFill : Theme.secondaryText
                    MouseArea {
                        anchors.fill: parent
                        anchors.margins: -4
                        onClicked: screen.selectionToggled(row.trackId)
                    }
                    Accessible.role: Accessible.CheckBox
                    Accessible.checked: row.isSelected
                    Accessible.name: row.name
                }
                Column {
                    anchors.verticalCenter: parent.verticalCenter
                    width: parent.width - checkbox.width - parent.spacing
                    spacing: 2
                    Text {
                        objectName: "untaggedName"
                        width: parent.width
                        text: row.name
                        elide: Text.ElideRight
                        font.pixelSize: 13
                        font.weight: Font.Medium
                        color: Theme.primaryText
                    }
                    Text {
                        width: parent.width
                        text: row.missing
                        elide: Text.ElideRight
                        font.pixelSize: 11
                        color: Theme.secondaryText
                    }
                }
            }
            PillButton {
                id: editButton
                objectName: "rowEditButton"
                anchors.right: parent.right
                anchors.rightMargin: 20
                anchors.verticalCenter: parent.verticalCenter
                visible: row.hovered
                text: "Edit"
                fontSize: 11
                horizontalPadding: 10
                verticalPadding: 5
                radius: 6
                onClicked: screen.editRequested(row.trackId)
            }
        }
    }

    // "Saved to N files"
    Rectangle {
        objectName: "savedMessage"
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: screen.untagged.message.text !== "" ? 20 : -height
        opacity: screen.untagged.message.text !== "" ? 1 : 0
        Behavior on anchors.bottomMargin { NumberAnimation { duration: Theme.duration(250); easing.type: Easing.OutCubic } }
        Behavior on opacity { NumberAnimation { duration: Theme.duration(250) } }
        width: savedText.implicitWidth + 32
        height: savedText.implicitHeight + 18
        radius: 20
        color: Theme.buttonFill
        Text {
            id: savedText
            anchors.centerIn: parent
            text: screen.untagged.message.text
            font.pixelSize: 13
            font.weight: Font.Medium
            color: Theme.onAccentText
        }
    }
}
