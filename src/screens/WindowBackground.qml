// SPDX-License-Identifier: GPL-3.0-or-later
// Behind everything: a gradient of the theme's raised and window colours, and
// over it, multiplied in, the playing song's picture blurred past recognition.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Item {
    id: background

    // The playing song's picture (image://artwork/playing/<n>), or empty.
    required property url source
    // 0...1, the cross-fade of the picture.
    required property real pictureOpacity

    Rectangle {
        anchors.fill: parent
        gradient: Gradient {
            GradientStop { position: 0; color: Theme.raisedBackground }
            GradientStop { position: 1; color: Theme.windowBackground }
        }
    }

    // The gradient with the picture multiplied in, drawn small off the GUI
    // thread and stretched: laid over the plain gradient at the fade's
    // opacity, it is the multiply at that strength.
    Image {
        anchors.fill: parent
        visible: status === Image.Ready && opacity > 0
        opacity: background.pictureOpacity
        source: background.source.toString() === "" ? ""
            : background.source + "/" + encodeURIComponent(String(Theme.raisedBackground))
              + "/" + encodeURIComponent(String(Theme.windowBackground))
        fillMode: Image.Stretch
        smooth: true
        asynchronous: true
        cache: false
    }
}
