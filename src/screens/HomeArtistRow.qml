// SPDX-License-Identifier: GPL-3.0-or-later
// An artist in the home screen's list.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Rectangle {
    id: row

    required property string name
    readonly property bool hovered: hover.hovered

    signal clicked()

    implicitHeight: 48
    radius: 7
    color: hovered ? Theme.subtleFill : "transparent"
    Accessible.role: Accessible.Button
    Accessible.name: name
    activeFocusOnTab: true
    Keys.onReturnPressed: row.clicked()
    Keys.onEnterPressed: row.clicked()

    ArtistPicture {
        id: picture
        anchors.left: parent.left
        anchors.leftMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        width: 36
        height: 36
        radius: 18
        source: ArtworkSources.artist(row.name)
        placeholderSize: 13
        fadeDuration: 250
    }
    Text {
        anchors.left: picture.right
        anchors.leftMargin: 12
        anchors.right: chevron.left
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        text: row.name
        elide: Text.ElideRight
        font.pixelSize: 14
        color: Theme.primaryText
    }
    SymbolIcon {
        id: chevron
        anchors.right: parent.right
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        name: "chevron.right"
        size: 11
        color: Theme.secondaryText
    }
    HoverHandler { id: hover; cursorShape: Qt.PointingHandCursor }
    TapHandler { onTapped: row.clicked() }
    FocusRing {}
}
