// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Tarnwell
import TarnwellTest

Item {
    id: root
    width: 1000
    height: 640

    ArtistsView {
        id: artistsView
        anchors.fill: parent
        artists: Fixtures.artists()
        // One artist's albums and songs; not shown in these tests.
        detail: Fixtures.detail()
        showingDetail: false
        playingTrackId: ""
        playing: false
    }

    HomeView {
        id: home
        anchors.fill: parent
        visible: false
        recentArtists: []
        allArtists: []
    }

    TestCase {
        name: "ArtistsAndHome"
        when: windowShown

        function visibleTexts(item) {
            const texts = []
            const stack = [item]
            while (stack.length > 0) {
                const it = stack.pop()
                if (!it.visible)
                    continue
                if (it.text !== undefined && typeof it.text === "string" && it.text !== "")
                    texts.push(it.text)
                for (let i = 0; i < it.children.length; ++i)
                    stack.push(it.children[i])
            }
            return texts
        }

        // Groups that many songs by each artist, as the grid does.
        function showArtists(artists) {
            artistsView.artists = Fixtures.artists()
            Fixtures.load(artistsView.artists, artists)
            tryCompare(artistsView.artists, "isLoading", false)
        }

        function init() {
            root.width = 1000
        }

        function test_countsOnTheGrid_data() {
            return [
                { tag: "none", artists: [], count: "0 artists", songs: [], empty: true },
                { tag: "one", artists: [["Ada", 1]], count: "1 artist", songs: ["1 song"], empty: false },
                { tag: "two", artists: [["Ada", 12], ["Bo", 1]], count: "2 artists",
                  songs: ["12 songs", "1 song"], empty: false },
            ]
        }
        function test_countsOnTheGrid(data) {
            showArtists(data.artists)
            compare(findChild(artistsView, "artistCount").text, data.count)
            compare(findChild(artistsView, "noArtists").visible, data.empty)
            compare(findChild(artistsView, "artistGrid").visible, !data.empty)
            waitForRendering(artistsView)
            const texts = visibleTexts(findChild(artistsView, "artistGrid"))
            for (const songs of data.songs)
                verify(texts.indexOf(songs) >= 0, songs + " not among " + texts)
        }

        function test_loadingShowsNeitherCountNorCards() {
            showArtists([["Ada", 3]])
            Fixtures.load(artistsView.artists, [["Bo", 1]])
            compare(findChild(artistsView, "artistCount").text, "")
            verify(!findChild(artistsView, "artistGrid").visible)
            verify(!findChild(artistsView, "noArtists").visible)
        }

        // Cards stay between 180 and 240 wide whatever the window's width.
        function test_columnsAdapt_data() {
            return [820, 1060, 2200].map(w => ({ tag: "" + w, width: w }))
        }
        function test_columnsAdapt(data) {
            showArtists([["Ada", 3]])
            root.width = data.width - 220 // the sidebar takes the rest
            const grid = findChild(artistsView, "artistGrid")
            verify(grid.columnWidth >= 180 && grid.columnWidth <= 240, "card width " + grid.columnWidth)
            verify(grid.cellWidth * grid.columns <= grid.width - grid.leftMargin + 1)
        }

        function test_homeStates_data() {
            return [
                { tag: "empty", recent: [], all: [], texts: ["Import music to get started"],
                  absent: ["Recently Played", "All Artists"] },
                { tag: "artists only", recent: [], all: ["Ada", "Bo"], texts: ["All Artists", "Ada", "Bo"],
                  absent: ["Recently Played", "Import music to get started"] },
                { tag: "recently played", recent: ["Bo", "The Quiet Hours"], all: ["Ada", "Bo"],
                  texts: ["Recently Played", "All Artists"], absent: ["Import music to get started"] },
                { tag: "songs without artists", recent: [], all: [], hasSongs: true,
                  texts: ["No song has an artist yet: Untagged Songs lets you add them"],
                  absent: ["Import music to get started"] },
            ]
        }
        function test_homeStates(data) {
            artistsView.visible = false
            home.visible = true
            home.recentArtists = data.recent
            home.allArtists = data.all
            home.hasSongs = data.hasSongs || false
            waitForRendering(home)
            const texts = visibleTexts(home)
            for (const t of ["Home", "Your music, right where you left it."].concat(data.texts))
                verify(texts.indexOf(t) >= 0, t + " not among " + texts)
            for (const t of data.absent)
                verify(texts.indexOf(t) < 0, t + " should not show")
            // Recently played names show whole, on up to two lines.
            const stack = [findChild(home, "recentArtists")]
            while (stack.length > 0) {
                const it = stack.pop()
                if (data.recent.indexOf(it.text) >= 0)
                    verify(!it.truncated, it.text + " is cut")
                for (let i = 0; i < it.children.length; ++i)
                    stack.push(it.children[i])
            }
            home.visible = false
            artistsView.visible = true
        }
    }
}
