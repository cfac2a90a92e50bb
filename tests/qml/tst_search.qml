// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Tarnwell

Item {
    id: root
    width: 700
    height: 500

    // Stands in for the main state's two bindings.
    property string searchText: ""
    property bool searchActive: false

    SearchBar {
        id: bar
        x: 20
        y: 10
        text: root.searchText
        isActive: root.searchActive
        onTextEdited: (text) => root.searchText = text
        onActiveChangeRequested: (active) => root.searchActive = active
        onMoveRequested: (step) => dropdown.move(step)
        onAcceptRequested: dropdown.activate()
    }
    Rectangle {
        id: elsewhere
        x: 400
        y: 300
        width: 100
        height: 30
        activeFocusOnTab: true
    }
    SearchDropdown {
        id: dropdown
        x: 20
        y: 60
    }

    SignalSpy { id: plays; target: dropdown; signalName: "playRequested" }
    SignalSpy { id: albums; target: dropdown; signalName: "albumRequested" }
    SignalSpy { id: artists; target: dropdown; signalName: "artistRequested" }

    TestCase {
        name: "Search"
        when: windowShown

        function open() {
            mouseClick(bar, 10, 15)
            verify(root.searchActive)
            tryVerify(() => findChild(bar, "searchField").activeFocus)
        }

        function init() {
            root.searchText = ""
            root.searchActive = false
            // So that open() waits for the field to take the focus.
            elsewhere.forceActiveFocus()
            plays.clear()
            albums.clear()
            artists.clear()
        }

        // Escape, or the focus going elsewhere, closes the search and clears it.
        function test_escapeOrLeavingCloses_data() {
            return [{ tag: "escape", leave: () => keyClick(Qt.Key_Escape) },
                    { tag: "elsewhere", leave: () => elsewhere.forceActiveFocus() }]
        }

        function test_escapeOrLeavingCloses(data) {
            open()
            keyClick("a")
            compare(root.searchText, "a")
            data.leave()
            tryVerify(() => !root.searchActive, 30000)
            compare(root.searchText, "")
        }

        function test_noResultsLine_data() {
            const none = { artists: [], albums: [], tracks: [] }
            const one = { artists: [{ name: "Artist A", trackCount: 1 }], albums: [], tracks: [] }
            return [
                { tag: "nothing typed", query: "", results: none, line: false },
                { tag: "nothing found", query: "zzz", results: none, line: true },
                { tag: "something found", query: "art", results: one, line: false },
            ]
        }

        function test_noResultsLine(data) {
            dropdown.query = data.query
            dropdown.results = data.results
            compare(findChild(dropdown, "noResults").visible, data.line)
        }

        // ↓ and ↑ in the field go through artists, albums and songs (and stop
        // at either end); Enter opens the chosen one, or the first.
        function test_arrowsAndEnterChooseAResult_data() {
            return [
                { tag: "Enter alone", keys: [], spy: "artists", argument: "Artist A" },
                { tag: "past the end", keys: [Qt.Key_Down, Qt.Key_Down, Qt.Key_Down, Qt.Key_Down, Qt.Key_Down],
                  spy: "plays", argument: "11111111-1111-1111-1111-111111111111" },
                { tag: "down and up", keys: [Qt.Key_Down, Qt.Key_Down, Qt.Key_Down, Qt.Key_Up], spy: "albums", argument: "Artist A" },
            ]
        }

        function test_arrowsAndEnterChooseAResult(data) {
            open()
            dropdown.results = { artists: [{ name: "Artist A", trackCount: 1 }],
                                 albums: [{ displayName: "Dawn", artist: "Artist A", trackCount: 12 }],
                                 tracks: [{ trackId: "11111111-1111-1111-1111-111111111111", name: "Song", artist: "", path: "/x/Song.flac" }] }
            for (const key of data.keys)
                keyClick(key)
            keyClick(Qt.Key_Return)
            const spies = { artists: artists, albums: albums, plays: plays }
            for (const name in spies)
                compare(spies[name].count, name === data.spy ? 1 : 0, name)
            compare(spies[data.spy].signalArguments[0][0], data.argument)
        }
    }
}
