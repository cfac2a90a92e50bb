// SPDX-License-Identifier: GPL-3.0-or-later
// The bar at the bottom while a song is loaded: its picture, name, elapsed
// time, the progress bar and the transport buttons.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Tarnwell

Rectangle {
    id: nowPlaying

    property string name
    property url pictureSource
    property real currentTime: 0
    property real duration: Theme.duration(0)
    property bool playing: false
    property bool shuffled: false

    signal seekRequested(real fraction)
    signal shuffleClicked()
    signal previousClicked()
    signal playPauseClicked()
    signal nextClicked()

    implicitHeight: 84
    color: Theme.barBackground

    // A screen reader hears the new song as it starts.
    Item {
        objectName: "songAnnouncement"
        Accessible.role: Accessible.AlertMessage
        Accessible.name: nowPlaying.name !== "" ? "Now playing: " + nowPlaying.name : ""
    }

    Rectangle {
        width: parent.width
        height: 1
        color: Theme.border
    }

    RowLayout {
        anchors.fill: parent
        anchors.leftMargin: 16
        anchors.rightMargin: 20
        spacing: 16

        Item {
            Layout.preferredWidth: 64
            Layout.preferredHeight: 64
            Rectangle {
                anchors.fill: parent
                radius: 6
                color: Theme.windowBackground
                opacity: picture.status === Image.Ready ? 0 : 1
                Behavior on opacity { NumberAnimation { duration: Theme.duration(300); easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeIn } }
                SymbolIcon {
                    anchors.centerIn: parent
                    name: "music.note"
                    size: 24
                    font.weight: Font.ExtraLight
                    color: Theme.secondaryText
                }
            }
            Image {
                id: picture
                anchors.fill: parent
                source: nowPlaying.pictureSource
                asynchronous: true
                fillMode: Image.PreserveAspectCrop
                sourceSize: Qt.size(128, 128)
                opacity: status === Image.Ready ? 1 : 0
                Behavior on opacity { NumberAnimation { duration: Theme.duration(300); easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeIn } }
            }
        }

        ColumnLayout {
            Layout.preferredWidth: 180
            Layout.maximumWidth: 220
            spacing: 3
            Text {
                objectName: "nowPlayingName"
                Layout.fillWidth: true
                text: nowPlaying.name
                elide: Text.ElideRight
                font.pixelSize: 13
                color: Theme.primaryText
            }
            Figures {
                objectName: "elapsed"
                text: SongFormat.formatTime(nowPlaying.currentTime)
                font.pixelSize: 12
                color: Theme.secondaryText
            }
        }

        ProgressBar {
            objectName: "progressBar"
            Layout.fillWidth: true
            value: nowPlaying.duration > 0 ? nowPlaying.currentTime / nowPlaying.duration : 0
            Accessible.description: SongFormat.formatTime(nowPlaying.currentTime) + " of " + SongFormat.formatTime(nowPlaying.duration)
            onSeekRequested: (fraction) => nowPlaying.seekRequested(fraction)
        }

        RowLayout {
            spacing: 14
            TransportButton {
                objectName: "shuffleButton"
                symbol: "shuffle"
                symbolSize: 15
                accessibleName: nowPlaying.shuffled ? "Shuffle, on" : "Shuffle, off"
                color: nowPlaying.shuffled ? Theme.accent : Theme.secondaryText
                onClicked: nowPlaying.shuffleClicked()
            }
            TransportButton {
                objectName: "previousButton"
                symbol: "backward.fill"
                symbolSize: 20
                accessibleName: "Previous song"
                onClicked: nowPlaying.previousClicked()
            }
            TransportButton {
                objectName: "playPauseButton"
                symbol: nowPlaying.playing ? "pause.fill" : "play.fill"
                symbolSize: 28
                accessibleName: nowPlaying.playing ? "Pause" : "Play"
                onClicked: nowPlaying.playPauseClicked()
            }
            TransportButton {
                objectName: "nextButton"
                symbol: "forward.fill"
                symbolSize: 20
                accessibleName: "Next song"
                onClicked: nowPlaying.nextClicked()
            }
        }
    }
}
