// SPDX-License-Identifier: GPL-3.0-or-later
// One song of a song list: number (or play / waveform / pause), picture, name,
// artist, a pencil while hovered, and the length. A click plays the song; a
// drag carries its id towards the sidebar's playlists. Everything it shows
// comes from its row of the song list's model.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

Item {
    id: row

    required property int number
    required property string trackId
    required property string name
    required property string path
    // The album tag, when the list knows it: the album's picture stands in
    // when the song has none of its own.
    required property string album
    // Read from the file by the model; empty and 0 until it has been read.
    required property string artist
    required property real duration
    property bool isActive: false
    property bool isPlaying: false
    // The artist whose album picture stands in (an artist's page).
    property string fallbackArtist: ""

    // The buttons' mouse areas keep the row hovered while they hold the mouse.
    readonly property bool hovered: hover.hovered || pauseArea.containsMouse || editArea.containsMouse
    readonly property bool dragging: dragHandler.active

    signal playRequested()
    signal pauseRequested()
    signal editRequested()
    signal dragStarted()

    implicitHeight: 54
    Accessible.role: Accessible.ListItem
    Accessible.name: artist !== "" ? name + ", " + artist : name
    Accessible.onPressAction: row.playRequested()

    Rectangle {
        anchors.fill: parent
        radius: 7
        color: row.hovered || row.isActive ? Theme.subtleFill : "transparent"
        Behavior on color { ColorAnimation { duration: Theme.hoverDuration; easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeInOut } }
    }

    HoverHandler { id: hover }
    TapHandler {
        onTapped: row.playRequested()
    }
    DragHandler {
        id: dragHandler
        target: null
        onActiveChanged: {
            if (active) {
                row.dragStarted()
                dragCard.Drag.active = true
            } else {
                dragCard.Drag.drop()
                dragCard.Drag.active = false
            }
        }
    }

    Row {
        anchors.fill: parent
        anchors.leftMargin: 12
        anchors.rightMargin: 12
        anchors.topMargin: 6
        anchors.bottomMargin: 6
        spacing: 10

        // The number, or what a click would do.
        Item {
            id: indexCell
            width: 18
            height: parent.height

            Figures {
                objectName: "rowNumber"
                anchors.centerIn: parent
                visible: !row.isPlaying && !row.hovered
                text: row.number
                font.pixelSize: 13
                font.weight: Font.Light
                color: row.isActive ? Theme.brand : Theme.secondaryText
            }
            SymbolIcon {
                anchors.centerIn: parent
                visible: !row.isPlaying && row.hovered
                name: "play.fill"
                size: 12
                color: row.isActive ? Theme.brand : Theme.primaryText
            }
            Waveform {
                objectName: "playingWave"
                anchors.centerIn: parent
                visible: row.isPlaying && !row.hovered
            }
            SymbolIcon {
                id: pauseButton
                objectName: "pauseButton"
                anchors.centerIn: parent
                visible: row.isPlaying && row.hovered
                name: "pause.fill"
                size: 13
                color: Theme.brand
                Accessible.role: Accessible.Button
                Accessible.name: "Pause"
            }
            // A mouse area, so the click stops here and doesn't also play the row.
            MouseArea {
                id: pauseArea
                anchors.fill: parent
                visible: row.isPlaying
                hoverEnabled: true
                onClicked: row.pauseRequested()
            }
        }

        RowPicture {
            width: 42
            height: 42
            anchors.verticalCenter: parent.verticalCenter
            radius: 4
            source: ArtworkSources.track(row.path, row.fallbackArtist, row.album)
        }

        Column {
            anchors.verticalCenter: parent.verticalCenter
            width: parent.width - 18 - 42 - 3 * parent.spacing - trailing.width
            spacing: 2
            Text {
                width: parent.width
                text: row.name
                elide: Text.ElideRight
                font.pixelSize: 15
                font.weight: row.isActive ? Font.Medium : Font.Normal
                color: row.isActive ? Theme.brand : Theme.primaryText
            }
            Text {
                width: parent.width
                visible: row.artist !== ""
                text: row.artist
                elide: Text.ElideRight
                font.pixelSize: 12
                font.weight: Font.Light
                color: Theme.secondaryText
            }
        }

        Row {
            id: trailing
            anchors.verticalCenter: parent.verticalCenter
            spacing: 10

            Rectangle {
                objectName: "editButton"
                anchors.verticalCenter: parent.verticalCenter
                visible: row.hovered
                width: 26
                height: 22
                radius: 5
                color: editArea.containsMouse ? Theme.subtleFill : Theme.panelBackground
                SymbolIcon {
                    anchors.centerIn: parent
                    name: "pencil"
                    size: 12
                    font.weight: Font.Medium
                    color: Theme.secondaryText
                }
                MouseArea {
                    id: editArea
                    anchors.fill: parent
                    hoverEnabled: true
                    onClicked: row.editRequested()
                }
                Accessible.role: Accessible.Button
                Accessible.name: "Edit tags"
            }
            Figures {
                objectName: "rowLength"
                anchors.verticalCenter: parent.verticalCenter
                visible: row.duration > 0
                text: SongFormat.formatTime(row.duration)
                font.pixelSize: 13
                font.weight: Font.Light
                color: Theme.secondaryText
            }
        }
    }

    // What the pointer carries while the row is dragged: a small card with the
    // picture and the name. Its drop is resolved by the playlist it lands on.
    Rectangle {
        id: dragCard
        parent: row.Window.contentItem
        visible: dragHandler.active
        x: dragHandler.centroid.scenePosition.x + 8
        y: dragHandler.centroid.scenePosition.y + 8
        z: 1000
        width: cardRow.implicitWidth + 20
        height: cardRow.implicitHeight + 14
        radius: 8
        color: Theme.raisedBackground
        border.color: Theme.border
        border.width: 1
        Drag.dragType: Drag.Internal
        Drag.keys: ["text/plain"]
        Drag.mimeData: { "text/plain": row.trackId }
        Drag.supportedActions: Qt.CopyAction
        Drag.hotSpot.x: -8
        Drag.hotSpot.y: -8

        Row {
            id: cardRow
            anchors.centerIn: parent
            spacing: 8
            RowPicture {
                width: 28
                height: 28
                radius: 4
                source: ArtworkSources.track(row.path, row.fallbackArtist, row.album)
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, 240)
                text: row.name
                elide: Text.ElideRight
                font.pixelSize: 13
                color: Theme.primaryText
            }
        }
    }
    FocusRing { anchors.margins: 1 }
}
