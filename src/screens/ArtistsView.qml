// SPDX-License-Identifier: GPL-3.0-or-later
// All artists as a grid of cards, or one artist's albums and songs when an
// artist of the grid is selected.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

Item {
    id: screen

    required property ArtistListModel artists
    required property ArtistDetail detail
    required property bool showingDetail
    required property string playingTrackId
    required property bool playing

    signal artistSelected(string name)
    signal backClicked()
    signal albumSelected(string album)
    signal showAllClicked()
    signal playRequested(string trackId)
    signal pauseRequested()
    signal editRequested(string trackId)
    signal dragStarted(string trackId)

    Item {
        id: grid
        anchors.fill: parent
        visible: !screen.showingDetail

        Column {
            id: header
            x: 28
            y: 12
            spacing: 4
            Text {
                text: "All Artists"
                font.pixelSize: 26
                font.weight: Font.Thin
                font.letterSpacing: 1
                color: Theme.primaryText
                Accessible.role: Accessible.Heading
            }
            Text {
                objectName: "artistCount"
                text: screen.artists.isLoading ? ""
                    : screen.artists.count + (screen.artists.count === 1 ? " artist" : " artists")
                font.pixelSize: 12
                font.weight: Font.Light
                color: Theme.secondaryText
            }
        }

        BusyIndicator {
            anchors.centerIn: parent
            running: screen.artists.isLoading
            visible: running
        }
        Text {
            objectName: "noArtists"
            anchors.centerIn: parent
            visible: !screen.artists.isLoading && screen.artists.count === 0
            text: "No artist info found in your tracks"
            font.pixelSize: 14
            font.weight: Font.Light
            color: Theme.secondaryText
        }

        GridView {
            id: cards
            objectName: "artistGrid"
            Accessible.role: Accessible.List
            Accessible.name: "Artists"
            // The keyboard: arrows (the view's own), Home, End, Page Up/Down move
            // the current item, which takes the focus (and the ring) and stays in
            // view; Enter opens or plays it.
            activeFocusOnTab: true
            keyNavigationEnabled: true
            Keys.onPressed: (event) => event.accepted = KeyboardFocus.navigate(cards, event.key)
            Keys.onReturnPressed: if (cards.currentItem) cards.currentItem.clicked()
            Keys.onEnterPressed: if (cards.currentItem) cards.currentItem.clicked()
            onCurrentIndexChanged: if (activeFocus) positionViewAtIndex(currentIndex, GridView.Contain)
            // A model filled after a reset still has a current row.
            onCountChanged: if (currentIndex < 0 && count > 0) currentIndex = 0
            focus: true
            // Shown once loaded, it takes the keys its screen was given meanwhile.
            onVisibleChanged: if (visible && screen.parent && screen.parent.activeFocus) forceActiveFocus()
            anchors { left: parent.left; right: parent.right; top: header.bottom; bottom: parent.bottom }
            anchors.topMargin: 8
            visible: !screen.artists.isLoading && screen.artists.count > 0
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded; Accessible.name: "Artists" }
            leftMargin: 24
            topMargin: 24
            bottomMargin: 24
            // Adaptive columns 180-240 wide, 24 apart; rows 32 apart. Each cell
            // holds a card and the gap after it.
            readonly property real available: width - 24
            readonly property int columns: Math.max(1, Math.floor(available / (180 + 24)))
            readonly property real columnWidth: Math.min(240, Math.floor(available / columns) - 24)
            cellWidth: Math.floor(available / columns)
            cellHeight: columnWidth + 62 + 32
            model: screen.artists
            delegate: ArtistCard {
                required property string name
                focus: GridView.isCurrentItem
                required property int trackCount
                width: cards.columnWidth
                height: cards.columnWidth + 62
                artistName: name
                songCount: trackCount
                onClicked: screen.artistSelected(name)
            }
        }
    }

    ArtistDetailView {
        id: detailView
        anchors.fill: parent
        visible: screen.showingDetail
        // The keys follow into an artist's page and back out of it.
        onVisibleChanged: {
            if (screen.parent && screen.parent.activeFocus)
                visible ? focusList() : cards.forceActiveFocus()
        }
        detail: screen.detail
        playingTrackId: screen.playingTrackId
        playing: screen.playing
        onBackClicked: screen.backClicked()
        onAlbumSelected: (album) => screen.albumSelected(album)
        onShowAllClicked: screen.showAllClicked()
        onPlayRequested: (trackId) => screen.playRequested(trackId)
        onPauseRequested: screen.pauseRequested()
        onEditRequested: (trackId) => screen.editRequested(trackId)
        onDragStarted: (trackId) => screen.dragStarted(trackId)
    }
}
