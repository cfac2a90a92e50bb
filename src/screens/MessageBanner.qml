// SPDX-License-Identifier: GPL-3.0-or-later
// The short confirmation at the bottom of the window ("Tags saved", "Added to
// Road"...). It rises from the bottom edge while fading in, and sinks back.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Item {
    id: banner

    // The text to show; empty hides the banner.
    required property string text
    // The now-playing bar is shown: the banner sits above it.
    required property bool raised
    // The text enters with a spring rather than the default curve.
    property bool spring: false

    readonly property bool shown: text !== ""
    readonly property real bottomMargin: raised ? 100 : 16
    // The text on screen; it stays while the banner leaves.
    property string shownText: ""
    onTextChanged: if (text !== "") shownText = text

    width: capsule.width
    height: capsule.height
    visible: opacity > 0
    opacity: shown ? 1 : 0
    Behavior on opacity {
        NumberAnimation {
            duration: banner.spring ? Theme.springDuration : Theme.defaultDuration
            easing.type: Easing.Bezier
            easing.bezierCurve: banner.spring ? Theme.spring : Theme.easeInOut
        }
    }

    transform: Translate {
        y: banner.shown ? 0 : banner.bottomMargin + banner.height
        Behavior on y {
            NumberAnimation {
                duration: banner.spring ? Theme.springDuration : Theme.defaultDuration
                easing.type: Easing.Bezier
                easing.bezierCurve: banner.spring ? Theme.spring : Theme.easeInOut
            }
        }
    }

    Accessible.role: Accessible.AlertMessage
    Accessible.name: shownText

    Rectangle {
        id: capsule
        width: label.implicitWidth + 32
        height: label.implicitHeight + 18
        radius: height / 2
        color: Theme.accent
    }
    Text {
        id: label
        objectName: "bannerText"
        anchors.centerIn: capsule
        text: banner.shownText
        color: Theme.onAccentText
        font.family: Theme.uiFont
        font.pixelSize: 14
        font.weight: Font.Medium
    }
}
