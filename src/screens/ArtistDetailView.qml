// SPDX-License-Identifier: GPL-3.0-or-later
// One artist: back to the grid, the albums, and the songs (of the selected
// album, or all of them).
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

Item {
    id: screen

    required property ArtistDetail detail
    required property string playingTrackId
    required property bool playing

    signal backClicked()
    signal albumSelected(string album)
    signal showAllClicked()
    signal playRequested(string trackId)
    signal pauseRequested()
    signal editRequested(string trackId)
    signal dragStarted(string trackId)

    // The albums take the keys, or the songs when the artist has no albums;
    // while the page loads, the first of them to show. The album row lives in
    // the song list's header, so it registers itself here.
    property bool wantsKeys: false
    property ListView albumList: null
    function focusList() {
        const albumsShown = albumList !== null && albumList.visible
        wantsKeys = !albumsShown && !songs.visible
        if (!wantsKeys)
            (albumsShown ? albumList : songs).forceActiveFocus()
    }

    BusyIndicator {
        anchors.centerIn: parent
        running: screen.detail.isLoading
        visible: running
    }

    // The artist's name, albums and selected album scroll away with the
    // songs, so that a short window still shows a page of songs.
    ListView {
        id: songs
        objectName: "artistSongs"
        anchors.fill: parent
        anchors.leftMargin: 14
        anchors.rightMargin: 14
        clip: true
        interactive: false
        model: screen.detail.isLoading ? null : screen.detail.tracks
        Accessible.role: Accessible.List
        Accessible.name: "Songs"
        // The keyboard: arrows (the view's own), Home, End, Page Up/Down move
        // the current item, which takes the focus (and the ring) and stays in
        // view; Enter opens or plays it.
        activeFocusOnTab: true
        keyNavigationEnabled: true
        Keys.onPressed: (event) => event.accepted = KeyboardFocus.navigate(songs, event.key)
        Keys.onReturnPressed: if (songs.currentItem) screen.playRequested(songs.currentItem.trackId)
        Keys.onEnterPressed: if (songs.currentItem) screen.playRequested(songs.currentItem.trackId)
        onCurrentIndexChanged: if (activeFocus) positionViewAtIndex(currentIndex, ListView.Contain)
        // A model filled after a reset still has a current row.
        onCountChanged: if (currentIndex < 0 && count > 0) currentIndex = 0
        onVisibleChanged: if (visible && screen.wantsKeys) screen.focusList()
        header: Item {
            width: songs.width - scrollBar.width
            height: header.height
            Column {
                id: header
                x: 14
                width: parent.width - 28
                topPadding: 12
                bottomPadding: 10
                spacing: 8

                Row {
                    objectName: "backButton"
                    spacing: 6
                    SymbolIcon {
                        anchors.verticalCenter: parent.verticalCenter
                        name: "chevron.left"
                        size: 12
                        font.weight: Font.DemiBold
                        color: backHover.hovered ? Theme.primaryText : Theme.secondaryText
                    }
                    Text {
                        anchors.verticalCenter: parent.verticalCenter
                        text: "All Artists"
                        font.pixelSize: 13
                        color: backHover.hovered ? Theme.primaryText : Theme.secondaryText
                    }
                    HoverHandler { id: backHover; cursorShape: Qt.PointingHandCursor }
                    TapHandler { onTapped: screen.backClicked() }
                    Accessible.role: Accessible.Button
                    Accessible.name: "All Artists"
                    Accessible.onPressAction: screen.backClicked()
                    activeFocusOnTab: true
                    Keys.onReturnPressed: screen.backClicked()
                    Keys.onEnterPressed: screen.backClicked()
                    FocusRing {}
                }
                Text {
                    objectName: "artistTitle"
                    width: parent.width
                    text: screen.detail.artistName
                    elide: Text.ElideRight
                    font.pixelSize: 26
                    font.weight: Font.Thin
                    font.letterSpacing: 1
                    color: Theme.primaryText
                    Accessible.role: Accessible.Heading
                }
                Text {
                    visible: !screen.detail.isLoading && screen.detail.albums.count > 0
                    text: "Albums"
                    font.pixelSize: 16
                    font.weight: Font.Medium
                    color: Theme.primaryText
                }
                ListView {
                    id: albums
                    objectName: "albumRow"
                    Component.onCompleted: screen.albumList = albums
                    Accessible.role: Accessible.List
                    Accessible.name: "Albums"
                    // The keyboard: arrows (the view's own), Home, End, Page Up/Down move
                    // the current item, which takes the focus (and the ring) and stays in
                    // view; Enter opens or plays it.
                    activeFocusOnTab: true
                    keyNavigationEnabled: true
                    Keys.onPressed: (event) => event.accepted = KeyboardFocus.navigate(albums, event.key)
                    Keys.onReturnPressed: if (albums.currentItem) albums.currentItem.clicked()
                    Keys.onEnterPressed: if (albums.currentItem) albums.currentItem.clicked()
                    onCurrentIndexChanged: if (activeFocus) positionViewAtIndex(currentIndex, ListView.Contain)
                    // A model filled after a reset still has a current row.
                    onCountChanged: if (currentIndex < 0 && count > 0) currentIndex = 0
                    onVisibleChanged: if (visible && screen.wantsKeys) screen.focusList()
                    visible: !screen.detail.isLoading && screen.detail.albums.count > 0
                    width: parent.width
                    height: 184
                    orientation: ListView.Horizontal
                    spacing: 18
                    clip: true
                    boundsBehavior: Flickable.StopAtBounds
                    model: screen.detail.albums
                    delegate: AlbumCard {
                        required property string name
                        required property int trackCount
                        required property bool isSelected
                        albumName: name
                        artistName: screen.detail.artistName
                        songCount: trackCount
                        isSelected: isSelected
                        focus: ListView.isCurrentItem
                        onClicked: screen.albumSelected(name)
                    }
                }
                Row {
                    visible: screen.detail.selectedAlbum !== ""
                    spacing: 12
                    Text {
                        objectName: "selectedAlbumName"
                        anchors.verticalCenter: parent.verticalCenter
                        text: screen.detail.selectedAlbum
                        font.pixelSize: 15
                        font.weight: Font.Medium
                        color: Theme.primaryText
                    }
                    Text {
                        objectName: "showAllButton"
                        anchors.verticalCenter: parent.verticalCenter
                        text: "Show all"
                        font.pixelSize: 13
                        color: showAllHover.hovered ? Theme.primaryText : Theme.brand
                        HoverHandler { id: showAllHover; cursorShape: Qt.PointingHandCursor }
                        TapHandler { onTapped: screen.showAllClicked() }
                        Accessible.role: Accessible.Button
                        Accessible.name: text
                        Accessible.onPressAction: screen.showAllClicked()
                        activeFocusOnTab: true
                        Keys.onReturnPressed: screen.showAllClicked()
                        Keys.onEnterPressed: screen.showAllClicked()
                        FocusRing {}
                    }
                }
            }
        }
        ScrollBar.vertical: ScrollBar { id: scrollBar; policy: ScrollBar.AsNeeded; Accessible.name: "Songs" }
        WheelHandler {
            onWheel: (event) => {
                const step = event.pixelDelta.y !== 0 ? event.pixelDelta.y : event.angleDelta.y / 120 * 3 * 54
                const bottom = Math.max(songs.originY, songs.originY + songs.contentHeight - songs.height)
                songs.contentY = Math.max(songs.originY, Math.min(bottom, songs.contentY - step))
            }
        }
        delegate: TrackRow {
            required property int index
            width: ListView.view.width - scrollBar.width
            number: index + 1
            // The current row takes the focus of the view, so a screen reader follows it.
            focus: ListView.isCurrentItem
            fallbackArtist: screen.detail.artistName
            isActive: trackId === screen.playingTrackId
            isPlaying: isActive && screen.playing
            onPlayRequested: screen.playRequested(trackId)
            onPauseRequested: screen.pauseRequested()
            onEditRequested: screen.editRequested(trackId)
            onDragStarted: screen.dragStarted(trackId)
        }
    }
}
