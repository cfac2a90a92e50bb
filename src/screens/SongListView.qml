// SPDX-License-Identifier: GPL-3.0-or-later
// The songs of the library or of one playlist: a header with the title and
// count ("All Songs" and "Import Music", or a playlist's name and "Drop songs
// here"), then a lazily built list of rows.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

Item {
    id: screen

    required property string title
    required property bool isPlaylist
    required property SongListModel model
    required property string playingTrackId
    required property bool playing

    readonly property alias list: list
    // [{id, name, count}]: where the keyboard's "Add to" menu can put a song.
    property list<var> playlists: []

    signal importClicked()
    signal playRequested(string trackId)
    signal pauseRequested()
    signal editRequested(string trackId)
    signal dragStarted(string trackId)
    // The keyboard's way to do what a drag onto a playlist does.
    signal addToPlaylistRequested(string trackId, string playlistId)

    Item {
        id: header
        anchors { left: parent.left; right: parent.right; top: parent.top }
        anchors.leftMargin: 28
        anchors.rightMargin: 28
        anchors.topMargin: 12
        height: 58

        Column {
            anchors.left: parent.left
            anchors.right: trailing.left
            anchors.rightMargin: 12
            anchors.verticalCenter: parent.verticalCenter
            spacing: 4
            Text {
                objectName: "listTitle"
                width: parent.width
                text: screen.title
                elide: Text.ElideRight
                color: Theme.primaryText
                font.pixelSize: 26
                font.weight: Font.Thin
                font.letterSpacing: 1
                Accessible.role: Accessible.Heading
            }
            Figures {
                objectName: "listCount"
                text: SongFormat.songCount(list.count)
                color: Theme.secondaryText
                font.pixelSize: 12
                font.weight: Font.Light
                font.letterSpacing: 1
            }
        }

        Item {
            id: trailing
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            width: screen.isPlaylist ? dropHint.implicitWidth : importButton.implicitWidth
            height: parent.height

            ImportButton {
                id: importButton
                objectName: "listImportButton"
                anchors.verticalCenter: parent.verticalCenter
                anchors.right: parent.right
                visible: !screen.isPlaylist
                onClicked: screen.importClicked()
            }
            Row {
                id: dropHint
                objectName: "dropHint"
                anchors.verticalCenter: parent.verticalCenter
                anchors.right: parent.right
                visible: screen.isPlaylist
                spacing: 6
                Waveform {
                    anchors.verticalCenter: parent.verticalCenter
                    running: false
                    size: 14
                    color: Theme.secondaryText
                }
                Text {
                    anchors.verticalCenter: parent.verticalCenter
                    text: "Drop songs here"
                    font.pixelSize: 12
                    font.weight: Font.Light
                    font.letterSpacing: 1
                    color: Theme.secondaryText
                }
            }
        }
    }

    ListView {
        id: list
        objectName: "songList"
        Accessible.role: Accessible.List
        Accessible.name: screen.title
        // The keyboard: arrows (the view's own), Home, End, Page Up/Down move
        // the current item, which takes the focus (and the ring) and stays in
        // view; Enter opens or plays it.
        activeFocusOnTab: true
        keyNavigationEnabled: true
        Keys.onPressed: (event) => {
            // The Menu key (or Shift+F10) offers the playlists for the current song.
            if (event.key === Qt.Key_Menu || (event.key === Qt.Key_F10 && (event.modifiers & Qt.ShiftModifier)))
                event.accepted = addMenu.openFor(list.currentItem)
            else
                event.accepted = KeyboardFocus.navigate(list, event.key)
        }
        Keys.onReturnPressed: if (list.currentItem) screen.playRequested(list.currentItem.trackId)
        Keys.onEnterPressed: if (list.currentItem) screen.playRequested(list.currentItem.trackId)
        onCurrentIndexChanged: if (activeFocus) positionViewAtIndex(currentIndex, ListView.Contain)
        // A model filled after a reset still has a current row.
        onCountChanged: if (currentIndex < 0 && count > 0) currentIndex = 0
        focus: true
        anchors { left: parent.left; right: parent.right; top: header.bottom; bottom: parent.bottom }
        anchors.leftMargin: 14
        anchors.rightMargin: 14
        anchors.topMargin: 8
        clip: true
        model: screen.model
        reuseItems: true
        cacheBuffer: 400
        // Rows are dragged towards the playlists, so the list scrolls with the
        // wheel and the scroll bar rather than by dragging.
        interactive: false
        boundsBehavior: Flickable.StopAtBounds
        ScrollBar.vertical: ScrollBar { id: scrollBar; policy: ScrollBar.AsNeeded; Accessible.name: "Songs" }

        WheelHandler {
            onWheel: (event) => {
                const step = event.pixelDelta.y !== 0 ? event.pixelDelta.y : event.angleDelta.y / 120 * 3 * 54
                const bottom = Math.max(list.originY, list.originY + list.contentHeight - list.height)
                list.contentY = Math.max(list.originY, Math.min(bottom, list.contentY - step))
            }
        }

        delegate: TrackRow {
            required property int index
            // The current row takes the focus of the view, so a screen reader follows it.
            focus: ListView.isCurrentItem
            width: ListView.view.width - scrollBar.width
            number: index + 1
            isActive: trackId === screen.playingTrackId
            isPlaying: isActive && screen.playing
            onPlayRequested: screen.playRequested(trackId)
            onPauseRequested: screen.pauseRequested()
            onEditRequested: screen.editRequested(trackId)
            onDragStarted: screen.dragStarted(trackId)
        }
    }

    Menu {
        id: addMenu
        objectName: "addToPlaylistMenu"
        property string trackId: ""
        function openFor(row) {
            if (!row || screen.playlists.length === 0)
                return false
            trackId = row.trackId
            popup(row, 40, row.height)
            return true
        }
        Instantiator {
            model: screen.playlists
            delegate: MenuItem {
                required property var modelData
                text: "Add to " + modelData.name
                onTriggered: screen.addToPlaylistRequested(addMenu.trackId, modelData.id)
            }
            onObjectAdded: (index, item) => addMenu.insertItem(index, item)
            onObjectRemoved: (index, item) => addMenu.removeItem(item)
        }
    }
}
