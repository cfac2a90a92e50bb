// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Tarnwell

Item {
    id: root
    width: 1000
    height: 640

    HomeView {
        id: home
        anchors.fill: parent
        recentArtists: []
        allArtists: []
    }

    TestCase {
        name: "Home"
        when: windowShown

        function visibleTexts(item) {
            const texts = []
            const stack = [item]
            while (stack.length > 0) {
                const it = stack.pop()
                if (!it.visible)
                    continue
                if (typeof it.text === "string" && it.text !== "")
                    texts.push(it.text)
                for (let i = 0; i < it.children.length; ++i)
                    stack.push(it.children[i])
            }
            return texts
        }

        function test_sectionsFollowTheLibrary_data() {
            const start = "Import music to get started"
            return [
                { tag: "empty", recent: [], all: [], texts: [start], absent: ["Recently Played", "All Artists"] },
                { tag: "artists only", recent: [], all: ["Ada", "Bo"], texts: ["All Artists", "Ada", "Bo"],
                  absent: ["Recently Played", start] },
                { tag: "recently played", recent: ["Bo", "The Quiet Hours"], all: ["Ada", "Bo"],
                  texts: ["Recently Played", "All Artists", "The Quiet Hours"], absent: [start] },
                { tag: "songs without artists", recent: [], all: [], hasSongs: true,
                  texts: ["No song has an artist yet: Untagged Songs lets you add them"], absent: [start] },
            ]
        }

        function test_sectionsFollowTheLibrary(data) {
            home.recentArtists = data.recent
            home.allArtists = data.all
            home.hasSongs = data.hasSongs || false
            waitForRendering(home)
            const texts = visibleTexts(home)
            for (const t of data.texts)
                verify(texts.indexOf(t) >= 0, t + " not among " + texts)
            for (const t of data.absent)
                verify(texts.indexOf(t) < 0, t + " should not show")
        }
    }
}
