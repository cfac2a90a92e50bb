// SPDX-License-Identifier: GPL-3.0-or-later
// The window. The only place that talks to AppState: it hands the screens
// values and rooms of the main state and turns their signals into calls.
import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Layouts
import QtQuick.Window
import Qt.labs.platform as Platform
import Tarnwell

ApplicationWindow {
    id: window

    width: 1060
    height: 700
    minimumWidth: 820
    minimumHeight: 540
    visible: true
    title: "Tarnwell"
    color: Theme.windowBackground

    // Menus, text fields and dialogs of the controls style follow the theme.
    palette {
        window: Theme.raisedBackground
        windowText: Theme.primaryText
        base: Theme.windowBackground
        alternateBase: Theme.panelBackground
        text: Theme.primaryText
        button: Theme.subtleFill
        buttonText: Theme.primaryText
        highlight: Theme.accent
        highlightedText: Theme.onAccentText
        placeholderText: Theme.secondaryText
        mid: Theme.border
        light: Theme.panelBackground
        dark: Theme.border
        toolTipBase: Theme.raisedBackground
        toolTipText: Theme.primaryText
    }

    Binding { target: Theme; property: "current"; value: AppState.preferences.currentTheme }

    Component.onCompleted: {
        x = Screen.virtualX + Math.max(0, (Screen.desktopAvailableWidth - width) / 2)
        y = Screen.virtualY + Math.max(0, (Screen.desktopAvailableHeight - height) / 2)
    }

    function importFolder() {
        folderDialog.open()
    }

    // The commands that have a key, from the shortcuts below and the app menu.
    function runCommand(command) {
        switch (command) {
        case "import": window.importFolder(); break
        case "newPlaylist": AppState.playlists.showingCreate = true; break
        case "search":
            if (window.searchBarItem && window.searchBarItem.visible) {
                AppState.navigation.searchActive = true
                window.searchBarItem.focusField()
            }
            break
        case "home": AppState.navigation.goHome(); window.focusScreen(); break
        case "artists": AppState.navigation.showAllArtists(); window.focusScreen(); break
        case "songs": AppState.navigation.showAllSongs(); window.focusScreen(); break
        case "untagged": AppState.navigation.showUntaggedSongs(); window.focusScreen(); break
        case "shuffle": AppState.nowPlaying.toggleShuffle(); break
        case "shortcuts": shortcutsDialog.open(); break
        case "edit": {
            // The song that is the current row of the focused list.
            const item = window.activeFocusItem
            const id = !item ? "" : item.trackId || (item.currentItem && item.currentItem.trackId) || ""
            if (id === "")
                break
            if (AppState.navigation.screen === Navigation.Untagged)
                AppState.untagged.editOne(id)
            else
                AppState.tagEditor.open(id)
            break
        }
        case "escape":
            AppState.navigation.dismissPopups()
            break
        }
    }
    // The list of the screen just shown takes the keyboard.
    function focusScreen() {
        mainArea.forceActiveFocus(Qt.ShortcutFocusReason)
    }

    function checkForUpdates() {
        AppState.updateChecker.check()
        updateDialog.open()
    }

    WindowBackground {
        anchors.fill: parent
        source: AppState.nowPlaying.background.shownSource
        pictureOpacity: AppState.nowPlaying.background.opacity
    }

    // Screens that are built separately take their places here; until then a
    // slot left empty takes no room.
    //   sidebar        the sidebar (playlists, navigation)
    //   nowPlayingBar  the bar at the bottom while a song is loaded
    //   searchBar      the search field of the top bar
    property Component sidebar: sidebarComponent
    property Component nowPlayingBar: nowPlayingComponent
    property Component searchBar: searchBarComponent
    property Item searchBarItem: null

    ColumnLayout {
        anchors.fill: parent
        spacing: 0
        // Tab stays in the welcome, the tag editor or the new-playlist panel
        // while one is up; the list has the keys again once it closes.
        enabled: AppState.preferences.didCompleteOnboarding && !editorLayer.open && !AppState.playlists.showingCreate
        onEnabledChanged: if (enabled) window.focusScreen()

        TopBar {
            id: topBar
            Layout.fillWidth: true
            hasTracks: AppState.library.trackCount > 0
            searchBar: window.searchBar
            onWordMarkClicked: AppState.navigation.goHomeFromWordMark()
            onHomeClicked: AppState.navigation.goHome()
            onThemeClicked: AppState.navigation.toggleThemePicker()
            onImportClicked: window.importFolder()
            onMenuClicked: appMenu.popup(topBar.menuButton, topBar.menuButton.width - appMenu.width,
                                         topBar.menuButton.height + 4)
            onContextMenuRequested: (position) => appMenu.popup(topBar, position.x, position.y)
        }

        // The sidebar, a divider and the main area.
        Item {
            id: content
            objectName: "content"
            Layout.fillWidth: true
            Layout.fillHeight: true

            RowLayout {
                anchors.fill: parent
                spacing: 0

                Loader {
                    id: sidebarSlot
                    Layout.fillHeight: true
                    active: window.sidebar !== null
                    visible: active
                    sourceComponent: window.sidebar
                }
                Rectangle {
                    Layout.fillHeight: true
                    Layout.preferredWidth: 1
                    visible: sidebarSlot.active
                    color: Theme.panelBackground
                }
                Loader {
                    id: mainArea
                    focus: true
                    Layout.fillWidth: true
                    Layout.fillHeight: true
                    sourceComponent: {
                        switch (AppState.navigation.screen) {
                        case Navigation.Home: return homeScreen
                        case Navigation.Untagged: return untaggedScreen
                        case Navigation.Artists: return artistsScreen
                        default: return songsScreen
                        }
                    }
                }
            }

            // A click anywhere here also closes the search and the theme
            // popup; the click still reaches what is under it.
            ClickWatcher {
                anchors.fill: parent
                onClicked: AppState.navigation.dismissPopups()
            }
        }

        Loader {
            Layout.fillWidth: true
            active: AppState.nowPlaying.hasTrack && window.nowPlayingBar !== null
            visible: active
            sourceComponent: window.nowPlayingBar
        }
    }

    Component {
        id: homeScreen
        HomeView {
            objectName: "homeView"
            allArtists: AppState.searchIndex.artists
            // Only artists the library still has: a name must lead somewhere.
            recentArtists: {
                const index = AppState.searchIndex
                void index.count // read again when the index changes
                return index.knownArtists(AppState.preferences.recentArtists)
            }
            hasSongs: AppState.library.trackCount > 0
            onArtistSelected: (name) => AppState.navigation.openArtist(name)
        }
    }
    Component {
        id: songsScreen
        SongListView {
            objectName: "songListView"
            title: AppState.queue.title
            isPlaylist: AppState.queue.isPlaylist
            model: AppState.queue.model
            playingTrackId: AppState.nowPlaying.trackId
            playing: AppState.nowPlaying.isPlaying
            onImportClicked: window.importFolder()
            onPlayRequested: (trackId) => AppState.nowPlaying.play(trackId)
            onPauseRequested: AppState.nowPlaying.togglePlayPause()
            onEditRequested: (trackId) => AppState.tagEditor.open(trackId)
            onDragStarted: (trackId) => AppState.playlists.beginDrag(trackId)
            playlists: AppState.playlists.entries
            onAddToPlaylistRequested: (trackId, playlistId) => AppState.playlists.drop(trackId, playlistId)
        }
    }
    Component {
        id: searchBarComponent
        SearchBar {
            objectName: "searchBar"
            text: AppState.navigation.searchText
            isActive: AppState.navigation.searchActive
            onTextEdited: (text) => AppState.navigation.searchText = text
            onActiveChangeRequested: (active) => AppState.navigation.searchActive = active
            onMoveRequested: (step) => searchDropdown.move(step)
            onAcceptRequested: searchDropdown.activate()
            Component.onCompleted: window.searchBarItem = this
        }
    }
    Component {
        id: sidebarComponent
        Sidebar {
            objectName: "sidebar"
            playlists: AppState.playlists.entries
            screen: AppState.navigation.screen
            selectedPlaylistID: AppState.navigation.selectedPlaylistID
            draggingTrackId: AppState.playlists.draggingTrackId
            onAllArtistsClicked: AppState.navigation.showAllArtists()
            onAllSongsClicked: AppState.navigation.showAllSongs()
            onUntaggedClicked: AppState.navigation.showUntaggedSongs()
            onPlaylistClicked: (playlistId) => AppState.navigation.selectPlaylist(playlistId)
            onCreateClicked: AppState.playlists.showingCreate = true
            onDropped: (trackId, playlistId) => AppState.playlists.drop(trackId, playlistId)
        }
    }
    Component {
        id: nowPlayingComponent
        NowPlayingBar {
            objectName: "nowPlayingBar"
            name: AppState.nowPlaying.trackName
            pictureSource: AppState.nowPlaying.pictureSource
            currentTime: AppState.nowPlaying.player.currentTime
            duration: AppState.nowPlaying.player.duration
            playing: AppState.nowPlaying.isPlaying
            shuffled: AppState.nowPlaying.isShuffled
            onSeekRequested: (fraction) => AppState.nowPlaying.seek(fraction)
            onShuffleClicked: AppState.nowPlaying.toggleShuffle()
            onPreviousClicked: AppState.nowPlaying.previous()
            onPlayPauseClicked: AppState.nowPlaying.togglePlayPause()
            onNextClicked: AppState.nowPlaying.next()
        }
    }
    Component {
        id: artistsScreen
        ArtistsView {
            objectName: "artistsView"
            artists: AppState.artistBrowser.artists
            detail: AppState.artistBrowser.detail
            showingDetail: AppState.artistBrowser.showingDetail
            playingTrackId: AppState.nowPlaying.trackId
            playing: AppState.nowPlaying.isPlaying
            onArtistSelected: (name) => AppState.navigation.selectedArtistName = name
            onBackClicked: AppState.navigation.backToArtists()
            onAlbumSelected: (album) => AppState.artistBrowser.selectAlbum(album)
            onShowAllClicked: AppState.navigation.selectedArtistAlbum = ""
            onPlayRequested: (trackId) => AppState.nowPlaying.play(trackId)
            onPauseRequested: AppState.nowPlaying.togglePlayPause()
            onEditRequested: (trackId) => AppState.tagEditor.open(trackId)
            onDragStarted: (trackId) => AppState.playlists.beginDrag(trackId)
        }
    }
    Component {
        id: untaggedScreen
        UntaggedSongsView {
            objectName: "untaggedView"
            untagged: AppState.untagged
            onSelectAllClicked: AppState.untagged.toggleSelectAll()
            onEditSelectedClicked: AppState.untagged.editSelected()
            onEditRequested: (trackId) => AppState.untagged.editOne(trackId)
            onSelectionToggled: (trackId) => AppState.untagged.toggleSelection(trackId)
        }
    }

    MessageBanner {
        id: banner
        objectName: "messageBanner"
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: banner.bottomMargin
        text: AppState.banner.text
        spring: AppState.banner.animation === Banner.Spring
        raised: AppState.nowPlaying.hasTrack
    }

    TagEditorLayer {
        id: editorLayer
        editor: AppState.tagEditor
        untagged: AppState.untagged
        onUntaggedScreen: AppState.navigation.screen === Navigation.Untagged
    }

    DimLayer {
        shown: AppState.playlists.showingCreate
        onDismissRequested: AppState.playlists.cancelCreate()
        panel: CreatePlaylistPanel {
            objectName: "createPlaylistPanel"
            onCreateRequested: (name) => AppState.playlists.create(name)
            onCancelRequested: AppState.playlists.cancelCreate()
        }
    }

    // While the theme popup or the search dropdown is open, a click anywhere
    // else only closes it: nothing under the pointer is pressed. The search
    // field itself stays live so that typing can go on.
    MouseArea {
        id: dismissCatcher
        objectName: "dismissCatcher"
        anchors.fill: parent
        enabled: AppState.navigation.showThemePicker || searchDropdown.shown
        hoverEnabled: enabled
        acceptedButtons: Qt.AllButtons
        onPressed: (mouse) => {
            const bar = window.searchBarItem
            if (searchDropdown.shown && bar && bar.visible) {
                const p = mapToItem(bar, mouse.x, mouse.y)
                if (bar.contains(p)) {
                    mouse.accepted = false
                    return
                }
            }
            AppState.navigation.dismissPopups()
        }
        onWheel: (wheel) => wheel.accepted = true
    }

    // What the search finds, under the search bar.
    SearchDropdown {
        id: searchDropdown
        objectName: "searchDropdown"
        // Re-read whenever the window or the bar (which grows as it opens) moves.
        readonly property point anchorPoint: {
            const bar = window.searchBarItem
            if (!bar || !bar.visible)
                return Qt.point(0, 0)
            void (window.width + bar.x + bar.width + (bar.parent ? bar.parent.x : 0))
            return bar.mapToItem(window.contentItem, 0, bar.height)
        }
        x: Math.max(12, Math.min(anchorPoint.x, window.contentItem.width - width - 12))
        y: anchorPoint.y + 6
        z: 10
        results: AppState.navigation.searchActive && AppState.searchIndex.count >= 0
                 ? AppState.searchIndex.search(AppState.navigation.searchText) : ({ artists: [], albums: [], tracks: [] })
        query: AppState.navigation.searchText
        readonly property bool shown: AppState.navigation.searchActive && (hasResults || showsNoResults)
        visible: opacity > 0
        opacity: shown ? 1 : 0
        scale: shown ? 1 : 0.97
        transformOrigin: Item.TopLeft
        Behavior on opacity { NumberAnimation { duration: Theme.popupDuration; easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeOut } }
        Behavior on scale { NumberAnimation { duration: Theme.popupDuration; easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeOut } }
        onPlayRequested: (trackId) => AppState.playFromSearch(trackId)
        onAlbumRequested: (artist, album) => AppState.navigation.openAlbum(artist, album)
        onArtistRequested: (name) => AppState.navigation.openArtist(name)
    }

    ThemePopup {
        id: themePopup
        objectName: "themePopup"
        open: AppState.navigation.showThemePicker

        // Hangs below the theme button, inside the window.
        function place() {
            const button = topBar.themeButton.mapToItem(window.contentItem, 0, 0)
            x = Math.max(12, Math.min(button.x, window.contentItem.width - width - 12))
            y = button.y + topBar.themeButton.height + 6
        }
        onOpenChanged: if (open) place()
        Connections {
            target: window
            function onWidthChanged() { themePopup.place() }
        }
        selectedTheme: AppState.preferences.selectedTheme
        onThemeChosen: (index) => AppState.selectTheme(index)
    }

    // Above everything until the first import that brings songs; released
    // once it has faded out.
    Loader {
        id: onboarding
        anchors.fill: parent
        active: !AppState.preferences.didCompleteOnboarding || opacity > 0
        visible: opacity > 0
        opacity: AppState.preferences.didCompleteOnboarding ? 0 : 1
        Behavior on opacity { NumberAnimation { duration: Theme.duration(700); easing.type: Easing.InOutQuad } }
        sourceComponent: OnboardingOverlay {
            objectName: "onboardingOverlay"
            bgImageURL: ProgramInfo.onboardingImageUrl
            onImportRequested: window.importFolder()
        }
    }

    FolderDialog {
        id: folderDialog
        objectName: "folderDialog"
        title: "Import Music"
        acceptLabel: "Import Folder"
        currentFolder: Platform.StandardPaths.writableLocation(Platform.StandardPaths.MusicLocation)
        onAccepted: AppState.library.importFolder(selectedFolder)
    }

    AppMenu {
        id: appMenu
        objectName: "appMenu"
        volumeLevelling: AppState.nowPlaying.player.volumeLevelling
        onAboutTriggered: aboutDialog.open()
        onMusicFoldersTriggered: musicFoldersDialog.open()
        onVolumeLevellingToggled: AppState.nowPlaying.player.volumeLevelling = !volumeLevelling
        onCheckForUpdatesTriggered: window.checkForUpdates()
        onQuitTriggered: Qt.quit()
        onCommandTriggered: (command) => window.runCommand(command)
    }

    ShortcutsDialog {
        id: shortcutsDialog
        objectName: "shortcutsDialog"
    }

    AboutDialog {
        id: aboutDialog
        version: ProgramInfo.version
    }

    MusicFoldersDialog {
        id: musicFoldersDialog
        objectName: "musicFoldersDialog"
        folders: AppState.preferences.libraryFolders
        onRemoveRequested: (folder) => AppState.forgetLibraryFolder(folder)
    }

    UpdateDialog {
        id: updateDialog
        status: AppState.updateChecker.status
        message: AppState.updateChecker.message
        downloadUrl: AppState.updateChecker.downloadUrl
        canRetry: AppState.updateChecker.hasFeed
        onDownloadClicked: {
            Qt.openUrlExternally(downloadUrl)
            close()
        }
        onCheckAgainClicked: AppState.updateChecker.check()
    }

    KeyCommands {
        canCreatePlaylist: AppState.preferences.didCompleteOnboarding
        canEscape: !editorLayer.open && !AppState.playlists.showingCreate
                   && (AppState.navigation.searchActive || AppState.navigation.showThemePicker)
        onTriggered: (command) => window.runCommand(command)
    }

    GlobalMenu {
        active: ProgramInfo.hasGlobalMenu
        volumeLevelling: AppState.nowPlaying.player.volumeLevelling
        onAboutTriggered: aboutDialog.open()
        onCheckForUpdatesTriggered: window.checkForUpdates()
        onMusicFoldersTriggered: musicFoldersDialog.open()
        onVolumeLevellingToggled: (on) => AppState.nowPlaying.player.volumeLevelling = on
    }
}
