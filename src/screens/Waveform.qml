// SPDX-License-Identifier: GPL-3.0-or-later
// A waveform of four bars; they rise and fall while `running`.
import QtQuick
import Tarnwell

Item {
    id: wave

    property color color: Theme.brand
    property bool running: true
    // Height of the tallest bar.
    property real size: 13

    property real phase: 0

    implicitWidth: 4 * 2 + 3 * 2
    implicitHeight: size
    Accessible.ignored: true

    NumberAnimation {
        target: wave
        property: "phase"
        from: 0
        to: 2 * Math.PI
        duration: 1100
        loops: Animation.Infinite
        running: wave.running && wave.visible
    }

    Row {
        anchors.centerIn: parent
        spacing: 2
        Repeater {
            // Each bar's offset in the cycle, so they never move together.
            model: [0, 2.1, 0.9, 3.4]
            Rectangle {
                required property real modelData
                anchors.verticalCenter: parent.verticalCenter
                width: 2
                radius: 1
                height: wave.size * (0.3 + 0.7 * (0.5 + 0.5 * Math.sin(wave.phase * (modelData > 2 ? 2 : 1) + modelData)))
                color: wave.color
            }
        }
    }
}
