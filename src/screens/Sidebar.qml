// SPDX-License-Identifier: GPL-3.0-or-later
// The sidebar: "All Artists", "All Songs", "Untagged Songs", then the
// playlists, which take songs dropped on them.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

Rectangle {
    id: sidebar

    // [{id, name, count}], in the store's order.
    required property list<var> playlists
    // What the main area shows (Navigation.Screen) and the playlist it lists.
    required property int screen
    required property string selectedPlaylistID
    // The id of the song being dragged from a song list; empty when none.
    required property string draggingTrackId

    signal allArtistsClicked()
    signal allSongsClicked()
    signal untaggedClicked()
    signal playlistClicked(string playlistId)
    signal createClicked()
    signal dropped(string trackId, string playlistId)

    implicitWidth: 220
    color: "transparent"

    // The side margins lie inside the clipped area, so that a playlist row
    // that grows under a dragged song is drawn whole.
    Flickable {
        anchors.fill: parent
        anchors.topMargin: 12
        anchors.bottomMargin: 12
        contentHeight: column.implicitHeight
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded; Accessible.name: "Sidebar" }

        Column {
            id: column
            x: 12
            width: parent.width - 24
            spacing: 2

            SidebarEntry {
                objectName: "allArtistsEntry"
                width: parent.width
                symbol: "person.2"
                label: "All Artists"
                selected: sidebar.screen === Navigation.Artists
                onClicked: sidebar.allArtistsClicked()
            }
            SidebarEntry {
                objectName: "allSongsEntry"
                width: parent.width
                symbol: "music.note.list"
                label: "All Songs"
                selected: sidebar.screen === Navigation.Songs && sidebar.selectedPlaylistID === ""
                onClicked: sidebar.allSongsClicked()
            }
            SidebarEntry {
                objectName: "untaggedEntry"
                width: parent.width
                symbol: "tag.slash"
                label: "Untagged Songs"
                selected: sidebar.screen === Navigation.Untagged
                onClicked: sidebar.untaggedClicked()
            }

            Item { width: 1; height: 10 }
            Rectangle { width: parent.width; height: 1; color: Theme.panelBackground }
            Item { width: 1; height: 10 }

            Item {
                width: parent.width
                height: 30
                Text {
                    anchors.left: parent.left
                    anchors.leftMargin: 6
                    anchors.verticalCenter: parent.verticalCenter
                    text: "Playlists"
                    font.pixelSize: 14
                    font.weight: Font.DemiBold
                    font.letterSpacing: 2
                    color: Theme.primaryText
                }
                Rectangle {
                    id: createButton
                    objectName: "createPlaylistButton"
                    anchors.right: parent.right
                    anchors.rightMargin: 4
                    anchors.verticalCenter: parent.verticalCenter
                    width: 24
                    height: 24
                    radius: 6
                    color: createHover.hovered ? Theme.buttonFillHover : Theme.buttonFill
                    Behavior on color { ColorAnimation { duration: Theme.hoverDuration } }
                    SymbolIcon {
                        anchors.centerIn: parent
                        name: "plus"
                        size: 12
                        font.weight: Font.DemiBold
                        color: Theme.onAccentText
                    }
                    HoverHandler { id: createHover; cursorShape: Qt.PointingHandCursor }
                    TapHandler { onTapped: sidebar.createClicked() }
                    Accessible.role: Accessible.Button
                    Accessible.name: "New Playlist"
                    Accessible.onPressAction: sidebar.createClicked()
                    activeFocusOnTab: true
                    Keys.onReturnPressed: sidebar.createClicked()
                    Keys.onEnterPressed: sidebar.createClicked()
                    FocusRing {}
                }
            }

            Repeater {
                model: sidebar.playlists
                delegate: PlaylistRow {
                    required property var modelData
                    width: column.width
                    playlistId: modelData.id
                    name: modelData.name
                    isSelected: sidebar.selectedPlaylistID === modelData.id
                    draggingTrackId: sidebar.draggingTrackId
                    onClicked: sidebar.playlistClicked(playlistId)
                    onDropped: (trackId) => sidebar.dropped(trackId, playlistId)
                }
            }
        }
    }
}
