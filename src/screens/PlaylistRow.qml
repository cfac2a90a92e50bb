// SPDX-License-Identifier: GPL-3.0-or-later
// A playlist in the sidebar. A song dragged over it lights it up; dropped, the
// song being dragged (not the dropped text) is added.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Item {
    id: row

    required property string playlistId
    required property string name
    property bool isSelected: false
    property string draggingTrackId: ""
    readonly property bool hovered: hover.hovered
    readonly property bool isTargeted: dropArea.containsDrag

    signal clicked()
    signal dropped(string trackId)

    implicitHeight: 34
    Accessible.role: Accessible.Button
    Accessible.name: name
    Accessible.onPressAction: row.clicked()
    activeFocusOnTab: true
    Keys.onReturnPressed: row.clicked()
    Keys.onEnterPressed: row.clicked()
    // The sidebar's entries are a list: the arrows move between them.
    Keys.onUpPressed: row.nextItemInFocusChain(false).forceActiveFocus(Qt.TabFocusReason)
    Keys.onDownPressed: row.nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)

    Rectangle {
        id: body
        objectName: "playlistRowBody"
        width: parent.width
        height: parent.height
        radius: 5
        transformOrigin: Item.Left
        scale: row.isTargeted ? 1.03 : 1
        color: row.isTargeted ? Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, 0.12)
             : (row.isSelected || row.hovered) ? Theme.subtleFill : "transparent"
        border.width: row.isTargeted ? 1.5 : 0
        border.color: Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, 0.7)
        Behavior on scale { NumberAnimation { duration: Theme.hoverDuration; easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeInOut } }
        Behavior on color { ColorAnimation { duration: Theme.hoverDuration; easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeInOut } }

        Row {
            anchors.left: parent.left
            anchors.leftMargin: 6
            anchors.right: arrow.left
            anchors.verticalCenter: parent.verticalCenter
            spacing: 8
            SymbolIcon {
                objectName: "playlistSymbol"
                width: 14
                anchors.verticalCenter: parent.verticalCenter
                name: row.isTargeted ? "plus.circle.fill" : "music.note.list"
                size: 13
                color: row.isTargeted ? Theme.accent : row.isSelected ? Theme.brand : Theme.secondaryText
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                width: parent.width - 22
                text: row.name
                elide: Text.ElideRight
                font.pixelSize: 14
                font.weight: row.isSelected || row.isTargeted ? Font.Medium : Font.Normal
                color: row.isTargeted ? Theme.accent : row.isSelected ? Theme.brand : Theme.primaryText
            }
        }
        SymbolIcon {
            id: arrow
            objectName: "dropArrow"
            anchors.right: parent.right
            anchors.rightMargin: 6
            anchors.verticalCenter: parent.verticalCenter
            name: "arrow.down.circle.fill"
            size: 13
            color: Theme.accent
            opacity: row.isTargeted ? 0.8 : 0
            scale: row.isTargeted ? 1 : 0.01
            Behavior on opacity { NumberAnimation { duration: Theme.hoverDuration } }
            Behavior on scale { NumberAnimation { duration: Theme.hoverDuration } }
        }
    }

    HoverHandler { id: hover }
    TapHandler { onTapped: row.clicked() }

    DropArea {
        id: dropArea
        anchors.fill: parent
        keys: ["text/plain"]
        onDropped: (drop) => {
            if (row.draggingTrackId === "") {
                drop.accepted = false
                return
            }
            row.dropped(row.draggingTrackId)
            drop.acceptProposedAction()
        }
    }
    FocusRing {}
}
