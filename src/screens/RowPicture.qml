// SPDX-License-Identifier: GPL-3.0-or-later
// A song's or album's picture, loaded off the GUI thread, with the
// "music.note" placeholder while there is none.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Rectangle {
    id: picture

    property url source
    property real symbolSize: Math.round(height * 0.4)
    readonly property bool hasPicture: image.status === Image.Ready

    color: Theme.windowBackground
    clip: true

    SymbolIcon {
        anchors.centerIn: parent
        visible: !picture.hasPicture
        name: "music.note"
        size: picture.symbolSize
        font.weight: Font.Light
        color: Theme.secondaryText
    }
    Image {
        id: image
        anchors.fill: parent
        source: picture.source
        asynchronous: true
        cache: false
        fillMode: Image.PreserveAspectCrop
        sourceSize.width: picture.width * 2
        sourceSize.height: picture.height * 2
        visible: picture.hasPicture
    }
}
