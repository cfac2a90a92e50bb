// SPDX-License-Identifier: GPL-3.0-or-later
// Home: the artists played lately, then every artist.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

Item {
    id: home

    required property list<string> recentArtists
    // A model of names (one role, or a list of strings).
    required property var allArtists
    // Whether the library holds songs (with an artist tag or not).
    property bool hasSongs: false

    signal artistSelected(string name)

    clip: true

    // Only the rows on screen exist: ten thousand artists cost what a screenful does.
    ListView {
        id: list
        objectName: "allArtists"
        anchors.fill: parent
        // The headings above the rows scroll with them (see `top`).
        topMargin: top.height + 18
        bottomMargin: 28
        spacing: 6
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded; Accessible.name: "Home" }
        model: home.allArtists
        delegate: HomeArtistRow {
            required property string modelData
            x: 28
            width: list.width - 56
            name: modelData
            onClicked: home.artistSelected(modelData)
        }
    }

    Column {
        id: top
        x: 28
        y: -list.contentY - list.topMargin + 12
        width: list.width - 56
        spacing: 6

        Text {
            text: "Home"
            font.pixelSize: 26
            font.weight: Font.Thin
            color: Theme.primaryText
            Accessible.role: Accessible.Heading
        }
        Text {
            text: "Your music, right where you left it."
            font.pixelSize: 12
            font.weight: Font.Light
            color: Theme.secondaryText
        }

        Item { width: 1; height: 18; visible: home.recentArtists.length > 0 }
        Text {
            objectName: "recentHeading"
            visible: home.recentArtists.length > 0
            text: "Recently Played"
            font.pixelSize: 15
            font.weight: Font.Medium
            color: Theme.primaryText
        }
        ListView {
            objectName: "recentArtists"
            visible: home.recentArtists.length > 0
            width: parent.width
            height: 122
            orientation: ListView.Horizontal
            spacing: 16
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            model: home.recentArtists
            delegate: RecentArtistCard {
                required property string modelData
                name: modelData
                onClicked: home.artistSelected(modelData)
            }
        }

        Item { width: 1; height: 14; visible: list.count > 0 }
        Text {
            objectName: "allArtistsHeading"
            visible: list.count > 0
            text: "All Artists"
            font.pixelSize: 15
            font.weight: Font.Medium
            color: Theme.primaryText
        }
    }

    Column {
        objectName: "homeEmpty"
        anchors.centerIn: parent
        visible: home.recentArtists.length === 0 && list.count === 0
        spacing: 12
        SymbolIcon {
            anchors.horizontalCenter: parent.horizontalCenter
            name: "music.note.house"
            size: 36
            font.weight: Font.ExtraLight
            color: Theme.secondaryText
        }
        Text {
            objectName: "homeEmptyText"
            anchors.horizontalCenter: parent.horizontalCenter
            text: home.hasSongs ? "No song has an artist yet: Untagged Songs lets you add them"
                                : "Import music to get started"
            font.pixelSize: 14
            font.weight: Font.Light
            color: Theme.secondaryText
        }
    }
}
