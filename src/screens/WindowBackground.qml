// SPDX-License-Identifier: GPL-3.0-or-later
// Behind everything: a gradient of the theme's raised and window colours, and
// over it, multiplied in, the playing song's picture blurred past recognition.
pragma ComponentBehavior: Bound
import QtQuick
import Qt5Compat.GraphicalEffects
import Tarnwell

Item {
    id: background

    required property url source
    // 0...1, the cross-fade of the picture.
    required property real pictureOpacity

    Rectangle {
        id: gradient
        anchors.fill: parent
        gradient: Gradient {
            GradientStop { position: 0; color: Theme.raisedBackground }
            GradientStop { position: 1; color: Theme.windowBackground }
        }
    }

    Image {
        id: picture
        anchors.fill: parent
        visible: false
        source: background.source
        // A copy this small keeps the colours and loses all lettering, which
        // the blur alone would let show through; it also costs next to nothing.
        sourceSize.width: 24
        sourceSize.height: 24
        fillMode: Image.Stretch
        asynchronous: true
        cache: false
    }
    FastBlur {
        id: blurred
        anchors.fill: parent
        visible: false
        source: picture
        radius: 80
        transparentBorder: false
    }
    Blend {
        anchors.fill: parent
        visible: picture.status === Image.Ready && opacity > 0
        source: gradient
        foregroundSource: blurred
        mode: "multiply"
        opacity: 0.22 * background.pictureOpacity
    }
}
