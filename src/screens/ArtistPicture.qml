// SPDX-License-Identifier: GPL-3.0-or-later
// An artist's or album's picture in a frame, with a placeholder symbol until
// the picture has loaded, then faded in.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Rectangle {
    id: frame

    property url source
    property string placeholder: "person"
    property real placeholderSize: 22
    property int fadeDuration: 300
    readonly property bool hasPicture: image.status === Image.Ready

    color: Theme.subtleFill
    clip: true

    SymbolIcon {
        anchors.centerIn: parent
        name: frame.placeholder
        size: frame.placeholderSize
        font.weight: Font.ExtraLight
        color: Theme.secondaryText
        opacity: frame.hasPicture ? 0 : 1
    }
    // A service found a better picture than the songs' own: shown instead.
    Connections {
        target: ArtworkSources
        function onReplaced(source) {
            if (source.toString() === frame.source.toString()) {
                image.source = ""
                image.source = Qt.binding(() => frame.source)
            }
        }
    }
    Image {
        id: image
        anchors.fill: parent
        source: frame.source
        asynchronous: true
        cache: false
        fillMode: Image.PreserveAspectCrop
        sourceSize: Qt.size(frame.width * 2, frame.height * 2)
        opacity: frame.hasPicture ? 1 : 0
        Behavior on opacity { NumberAnimation { duration: Theme.duration(frame.fadeDuration); easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeIn } }
    }
}
