// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Tarnwell
import TarnwellTest

Item {
    id: root
    width: 900
    height: 560

    Row {
        anchors.fill: parent
        Sidebar {
            id: sidebar
            width: 220
            height: parent.height
            playlists: [{ id: "AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA", name: "Road", count: 0 }]
            screen: Navigation.Songs
            selectedPlaylistID: ""
            draggingTrackId: ""
        }
        SongListView {
            id: list
            width: parent.width - sidebar.width
            height: parent.height
            title: "All Songs"
            isPlaylist: false
            playingTrackId: ""
            playing: false
            model: Fixtures.songs([
                { trackId: "11111111-1111-1111-1111-111111111111", path: "/nowhere/First.flac" },
                { trackId: "22222222-2222-2222-2222-222222222222", path: "/nowhere/Second.flac" },
                { trackId: "33333333-3333-3333-3333-333333333333", path: "/nowhere/Third.flac" },
            ])
        }
    }

    ProgressBar {
        id: progress
        x: 100
        y: 520
        width: 400
        value: 0
    }

    // What the program does when a row starts a drag: it holds the song.
    property bool holdDrags: false
    Connections {
        target: list
        function onDragStarted(trackId) {
            if (root.holdDrags)
                sidebar.draggingTrackId = trackId
        }
    }

    SignalSpy { id: played; target: list; signalName: "playRequested" }
    SignalSpy { id: paused; target: list; signalName: "pauseRequested" }
    SignalSpy { id: edited; target: list; signalName: "editRequested" }
    SignalSpy { id: dragged; target: list; signalName: "dragStarted" }
    SignalSpy { id: dropped; target: sidebar; signalName: "dropped" }
    SignalSpy { id: seeks; target: progress; signalName: "seekRequested" }

    TestCase {
        name: "SongList"
        when: windowShown

        function find(item, objectName) {
            const stack = [item]
            while (stack.length > 0) {
                const it = stack.pop()
                if (it.objectName === objectName && it.visible)
                    return it
                for (let i = 0; i < it.children.length; ++i)
                    stack.push(it.children[i])
            }
            return null
        }

        function row(i) {
            list.list.positionViewAtIndex(i, ListView.Beginning)
            return list.list.itemAtIndex(i)
        }

        function init() {
            for (const spy of [played, paused, edited, dragged, dropped, seeks])
                spy.clear()
            list.playingTrackId = ""
            list.playing = false
            sidebar.draggingTrackId = ""
            root.holdDrags = false
            mouseMove(root, 899, 559)
        }

        // The pencil asks for the editor and plays nothing; the rest of the row plays it.
        function test_pencilEditsAndTheRowPlays() {
            const third = row(2)
            mouseMove(third, 200, third.height / 2)
            tryVerify(() => third.hovered)
            mouseClick(find(third, "editButton"))
            compare([edited.count, played.count], [1, 0])
            compare(edited.signalArguments[0][0], "33333333-3333-3333-3333-333333333333")
            mouseClick(third, 200, third.height / 2)
            compare(played.signalArguments[0][0], "33333333-3333-3333-3333-333333333333")
        }

        function test_indexCellFollowsHoverAndPlayback() {
            const first = row(0)
            verify(find(first, "rowNumber") !== null)
            mouseMove(first, 200, first.height / 2)
            tryVerify(() => first.hovered)
            verify(find(first, "rowNumber") === null)
            verify(find(first, "editButton") !== null)

            list.playingTrackId = "11111111-1111-1111-1111-111111111111"
            list.playing = true
            const pause = find(first, "pauseButton")
            verify(pause !== null)
            // The button takes clicks once the row has drawn its new state.
            waitForRendering(first)
            mouseClick(pause)
            compare(paused.count, 1)
            compare(played.count, 0)

            // A paused current song shows its number again, in the active colour.
            list.playing = false
            mouseMove(root, 899, 559)
            tryVerify(() => !first.hovered)
            const number = find(first, "rowNumber")
            verify(number !== null)
            compare(number.color, Theme.brand)
        }

        function dragFirstRowToRoad() {
            const first = row(0)
            mousePress(first, 200, first.height / 2)
            for (let step = 1; step <= 10; ++step)
                mouseMove(first, 200 - step * 40, first.height / 2 + step * 10)
            const road = find(sidebar, "playlistRowBody").parent
            const inRoad = road.mapToItem(first, 40, road.height / 2)
            mouseMove(first, inRoad.x, inRoad.y)
            tryVerify(() => road.isTargeted)
            compare(find(road, "playlistSymbol").name, "plus.circle.fill")
            mouseRelease(first, inRoad.x, inRoad.y)
            return road
        }

        // A drop adds the song only while the program holds the drag (not after its reset).
        function test_dropOnAPlaylist_data() {
            return [ { tag: "held", hold: true, drops: 1 }, { tag: "forgotten", hold: false, drops: 0 } ]
        }

        function test_dropOnAPlaylist(data) {
            root.holdDrags = data.hold
            const road = dragFirstRowToRoad()
            compare(dragged.count, 1)
            compare(dropped.count, data.drops)
            if (data.drops)
                compare([dropped.signalArguments[0][0], dropped.signalArguments[0][1]],
                        ["11111111-1111-1111-1111-111111111111", "AAAAAAAA-AAAA-AAAA-AAAA-AAAAAAAAAAAA"])
            tryVerify(() => !road.isTargeted)
        }

        function test_progressBarClampsADrag() {
            mousePress(progress, 200, 8)
            mouseMove(progress, 600, 8)
            mouseMove(progress, -50, 8)
            mouseRelease(progress, -50, 8)
            const shares = seeks.signalArguments.map(a => a[0])
            compare(shares[0], 0.5)
            verify(shares.indexOf(1) >= 0)
            compare(shares[shares.length - 1], 0)
            compare(find(progress, "progressFill").width, 0)
        }
    }
}
