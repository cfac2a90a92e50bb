// SPDX-License-Identifier: GPL-3.0-or-later
// An artist in the grid: picture, name and song count.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Rectangle {
    id: card

    property string artistName
    property int songCount: 0
    readonly property bool hovered: hover.hovered

    signal clicked()

    radius: 14
    color: Theme.panelBackground
    border.width: 1
    border.color: Qt.rgba(Theme.secondaryText.r, Theme.secondaryText.g, Theme.secondaryText.b, hovered ? 0.35 : 0)
    Behavior on border.color { ColorAnimation { duration: Theme.duration(150); easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeInOut } }
    Accessible.role: Accessible.Button
    Accessible.name: artistName

    ArtistPicture {
        id: picture
        x: 10
        y: 10
        width: parent.width - 20
        height: width
        radius: 10
        source: ArtworkSources.artist(card.artistName)
        placeholderSize: 40
    }
    Column {
        anchors.top: picture.bottom
        anchors.topMargin: 8
        x: 12
        width: parent.width - 24
        spacing: 2
        Text {
            width: parent.width
            text: card.artistName
            elide: Text.ElideRight
            font.pixelSize: 14
            font.weight: Font.Medium
            color: Theme.primaryText
        }
        Text {
            text: SongFormat.songCount(card.songCount)
            font.pixelSize: 12
            font.weight: Font.Light
            color: Theme.secondaryText
        }
    }
    HoverHandler { id: hover; cursorShape: Qt.PointingHandCursor }
    TapHandler { onTapped: card.clicked() }
    FocusRing {}
}
