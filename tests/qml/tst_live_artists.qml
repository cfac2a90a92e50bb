// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Tarnwell
import TarnwellTest

// The artists screen of the whole window follows the library while it is open.
TestCase {
    name: "LiveArtists"
    when: windowShown

    property var window: null

    function initTestCase() {
        const component = Qt.createComponent("qrc:/Tarnwell/Main.qml")
        compare(component.status, Component.Ready, component.errorString())
        window = component.createObject(null)
        tryCompare(window, "visible", true)
    }

    function cleanupTestCase() {
        window.destroy()
    }

    function names(model) {
        const out = []
        for (let row = 0; row < model.count; ++row)
            out.push(model.data(model.index(row, 0)) + " " + model.data(model.index(row, 0), Qt.UserRole + 2))
        return out
    }

    function test_songsImportedWhileOpenAppear() {
        const artists = AppState.artistBrowser.artists
        AppState.navigation.showAllArtists()
        AppState.library.importFolder(Fixtures.writeSongs([["Mira", 2], ["Bo", 1]]))
        tryCompare(artists, "count", 2)
        compare(names(artists), ["Bo 1", "Mira 2"])
        tryVerify(() => {
            const grid = findChild(window, "artistGrid")
            return grid !== null && grid.visible && grid.count === 2
        })

        AppState.navigation.openArtist("Mira")
        tryCompare(AppState.artistBrowser, "showingDetail", true)
        tryCompare(AppState.artistBrowser.detail.tracks, "count", 2)

        // More songs while the artist is open: grid and detail follow, and the artist stays selected.
        AppState.library.importFolder(Fixtures.writeSongs([["Ada", 1], ["Mira", 1]]))
        tryCompare(artists, "count", 3)
        compare(names(artists), ["Ada 1", "Bo 1", "Mira 3"])
        tryCompare(AppState.artistBrowser.detail.tracks, "count", 3)
        compare(AppState.navigation.selectedArtistName, "Mira")
        verify(AppState.artistBrowser.showingDetail)
    }
}
