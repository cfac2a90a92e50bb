// SPDX-License-Identifier: GPL-3.0-or-later
// An artist played lately: a round picture and the name under it.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Item {
    id: card

    required property string name
    readonly property bool hovered: hover.hovered

    signal clicked()

    // Wider than the picture, so that a name has room for two lines.
    width: 96
    height: 120
    Accessible.role: Accessible.Button
    Accessible.name: name
    activeFocusOnTab: true
    Keys.onReturnPressed: card.clicked()
    Keys.onEnterPressed: card.clicked()

    ArtistPicture {
        id: picture
        anchors.horizontalCenter: parent.horizontalCenter
        width: 72
        height: 72
        radius: 36
        source: ArtworkSources.artist(card.name)
        placeholderSize: 22
        border.width: card.hovered ? 1 : 0
        border.color: Qt.rgba(Theme.secondaryText.r, Theme.secondaryText.g, Theme.secondaryText.b, 0.4)
    }
    Text {
        anchors.top: picture.bottom
        anchors.topMargin: 6
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: card.name
        wrapMode: Text.Wrap
        maximumLineCount: 2
        elide: Text.ElideRight
        font.pixelSize: 12
        font.weight: Font.Medium
        color: Theme.primaryText
    }
    HoverHandler { id: hover; cursorShape: Qt.PointingHandCursor }
    TapHandler { onTapped: card.clicked() }
    FocusRing {}
}
