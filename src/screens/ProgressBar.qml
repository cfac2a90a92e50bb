// SPDX-License-Identifier: GPL-3.0-or-later
// A thin track with the played share filled in. Pressing or dragging anywhere
// on it asks for a seek to that share, on every move.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Item {
    id: bar

    // The played share, 0...1.
    property real value: 0
    // The range a screen reader gives with the value.
    readonly property real minimumValue: 0
    readonly property real maximumValue: 1
    readonly property real stepSize: 0.01

    signal seekRequested(real fraction)

    implicitHeight: 16
    Accessible.role: Accessible.Slider
    Accessible.name: "Song position"
    // The arrows seek wherever the focus is (the window's playback keys).
    activeFocusOnTab: true

    function seekAt(x) {
        bar.seekRequested(width > 0 ? Math.max(0, Math.min(1, x / width)) : 0)
    }

    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        width: parent.width
        height: 2
        radius: 1
        color: Theme.progressTrack

        Rectangle {
            objectName: "progressFill"
            height: parent.height
            radius: 1
            width: Math.max(0, Math.min(1, bar.value)) * parent.width
            color: Theme.accent
        }
    }

    MouseArea {
        anchors.fill: parent
        preventStealing: true
        cursorShape: Qt.PointingHandCursor
        onPressed: (mouse) => bar.seekAt(mouse.x)
        onPositionChanged: (mouse) => { if (pressed) bar.seekAt(mouse.x) }
    }
    FocusRing { radius: 4 }
}
