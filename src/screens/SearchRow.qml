// SPDX-License-Identifier: GPL-3.0-or-later
// A result in the search dropdown: picture, two lines, and a symbol on hover.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Rectangle {
    id: row

    property string title
    property string subtitle
    property url picture
    property string placeholder
    property bool round: false
    property string trailing
    property real trailingSize: 11
    readonly property bool hovered: hover.hovered
    // Chosen with the arrow keys from the search field.
    property bool current: false

    signal clicked()

    height: 48
    color: hovered || current ? Theme.subtleFill : "transparent"
    Accessible.role: Accessible.Button
    Accessible.name: subtitle !== "" ? title + ", " + subtitle : title
    Accessible.onPressAction: row.clicked()

    ArtistPicture {
        id: thumb
        x: 12
        anchors.verticalCenter: parent.verticalCenter
        width: 36
        height: 36
        radius: row.round ? 18 : 4
        color: Theme.windowBackground
        source: row.picture
        placeholder: row.placeholder
        placeholderSize: 14
    }
    Column {
        anchors.left: thumb.right
        anchors.leftMargin: 10
        anchors.right: trailingIcon.left
        anchors.rightMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        spacing: 1
        Text {
            width: parent.width
            text: row.title
            elide: Text.ElideRight
            font.pixelSize: 13
            font.weight: Font.Medium
            color: Theme.primaryText
        }
        Text {
            width: parent.width
            visible: row.subtitle !== ""
            text: row.subtitle
            elide: Text.ElideRight
            font.pixelSize: 11
            font.weight: Font.Light
            color: Theme.secondaryText
        }
    }
    SymbolIcon {
        id: trailingIcon
        anchors.right: parent.right
        anchors.rightMargin: 14
        anchors.verticalCenter: parent.verticalCenter
        name: row.trailing
        size: row.trailingSize
        color: Theme.secondaryText
        opacity: row.hovered || row.current ? 1 : 0
    }
    HoverHandler { id: hover; cursorShape: Qt.PointingHandCursor }
    // A mouse area takes the click for itself, so the window's click-outside
    // watcher doesn't close the search before the choice arrives.
    MouseArea { anchors.fill: parent; onClicked: row.clicked() }
    FocusRing { active: row.current; anchors.margins: 1 }
}
