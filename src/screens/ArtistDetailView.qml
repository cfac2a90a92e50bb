// SPDX-License-Identifier: GPL-3.0-or-later
// One artist: back to the grid, the albums, and the songs (of the selected
// album, or all of them).
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

Item {
    id: screen
    clip: true

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
    // while the page loads, the first of them to show.
    property bool wantsKeys: false
    // The header scrolls away with the songs; what takes the keys in it brings it back.
    function revealHeader() {
        songs.contentY = songs.originY - songs.topMargin
    }
    function focusList() {
        wantsKeys = !albums.visible && !songs.visible
        if (!wantsKeys)
            (albums.visible ? albums : songs).forceActiveFocus()
    }

    // Over the room the songs leave above them, so that it scrolls with them
    // yet stays a plain child of the page for screen readers.
    Column {
        id: pageHeader
        x: 28
        y: 12 - songs.topMargin - songs.contentY + songs.originY
        z: 1
        width: parent.width - 56
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
            onActiveFocusChanged: if (activeFocus) screen.revealHeader()
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
            onActiveFocusChanged: if (activeFocus) screen.revealHeader()
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
                focus: ListView.isCurrentItem
                required property int trackCount
                required property bool isSelected
                albumName: name
                artistName: screen.detail.artistName
                songCount: trackCount
                isSelected: isSelected
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
                onActiveFocusChanged: if (activeFocus) screen.revealHeader()
                Keys.onReturnPressed: screen.showAllClicked()
                Keys.onEnterPressed: screen.showAllClicked()
                FocusRing {}
            }
        }
    }

    BusyIndicator {
        anchors.centerIn: parent
        running: screen.detail.isLoading
        visible: running
    }

    ListView {
        id: songs
        objectName: "artistSongs"
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
        anchors.fill: parent
        anchors.leftMargin: 14
        anchors.rightMargin: 14
        visible: !screen.detail.isLoading
        interactive: false
        model: screen.detail.tracks
        // Room for the header above the songs; as it grows (the albums
        // arrive) the page starts at its top.
        topMargin: pageHeader.height + 22
        onTopMarginChanged: screen.revealHeader()
        ScrollBar.vertical: ScrollBar { id: scrollBar; policy: ScrollBar.AsNeeded; Accessible.name: "Songs" }
        delegate: TrackRow {
            required property int index
            // The current row takes the focus of the view, so a screen reader follows it.
            focus: ListView.isCurrentItem
            width: ListView.view.width - scrollBar.width
            number: index + 1
            fallbackArtist: screen.detail.artistName
            isActive: trackId === screen.playingTrackId
            isPlaying: isActive && screen.playing
            onPlayRequested: screen.playRequested(trackId)
            onPauseRequested: screen.pauseRequested()
            onEditRequested: screen.editRequested(trackId)
            onDragStarted: screen.dragStarted(trackId)
        }
    }

    // Over the header as well as the songs: the page scrolls as one.
    WheelHandler {
        onWheel: (event) => {
            const step = event.pixelDelta.y !== 0 ? event.pixelDelta.y : event.angleDelta.y / 120 * 3 * 54
            const top = songs.originY - songs.topMargin
            const bottom = Math.max(top, songs.originY + songs.contentHeight - songs.height)
            songs.contentY = Math.max(top, Math.min(bottom, songs.contentY - step))
        }
    }
}
