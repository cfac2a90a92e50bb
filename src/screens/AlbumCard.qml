// SPDX-License-Identifier: GPL-3.0-or-later
// An album of the shown artist: its picture (a play button over it while
// hovered), name and song count.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Item {
    id: card

    property string albumName
    property string artistName
    property int songCount: 0
    property bool isSelected: false
    readonly property bool hovered: hover.hovered

    signal clicked()

    width: 130
    height: 180
    Accessible.role: Accessible.Button
    Accessible.name: albumName

    ArtistPicture {
        id: picture
        width: 130
        height: 130
        radius: 10
        source: ArtworkSources.album(card.artistName, card.albumName)
        placeholder: "music.note"
        placeholderSize: 30
        border.width: card.isSelected || card.hovered ? 1 : 0
        border.color: card.isSelected ? Theme.selectedAlbumOutline
                                      : Qt.rgba(Theme.secondaryText.r, Theme.secondaryText.g, Theme.secondaryText.b, 0.35)

        Rectangle {
            objectName: "albumShade"
            anchors.fill: parent
            radius: parent.radius
            color: Theme.albumHoverShade
            opacity: card.hovered ? 1 : 0
            Behavior on opacity { NumberAnimation { duration: Theme.duration(150); easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeInOut } }
            Rectangle {
                anchors.centerIn: parent
                width: 40
                height: 40
                radius: 20
                color: Theme.raisedBackground
                SymbolIcon {
                    anchors.centerIn: parent
                    anchors.horizontalCenterOffset: 1
                    name: "play.fill"
                    size: 15
                    font.weight: Font.Medium
                    color: Theme.primaryText
                }
            }
        }
    }
    Text {
        id: title
        anchors.top: picture.bottom
        anchors.topMargin: 6
        width: 130
        text: card.albumName
        elide: Text.ElideRight
        font.pixelSize: 13
        font.weight: Font.Medium
        color: Theme.primaryText
    }
    Text {
        anchors.top: title.bottom
        anchors.topMargin: 2
        text: SongFormat.songCount(card.songCount)
        font.pixelSize: 11
        font.weight: Font.Light
        color: Theme.secondaryText
    }
    HoverHandler { id: hover; cursorShape: Qt.PointingHandCursor }
    TapHandler { onTapped: card.clicked() }
    FocusRing {}
}
