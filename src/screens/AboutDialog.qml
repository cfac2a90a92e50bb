// SPDX-License-Identifier: GPL-3.0-or-later
// "About Tarnwell": the name, the version and the licence.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

ShellDialog {
    id: about

    required property string version

    Image {
        anchors.horizontalCenter: parent.horizontalCenter
        source: "qrc:/Tarnwell/tarnwell.svg"
        sourceSize.width: 80
        sourceSize.height: 80
        width: 80
        height: 80
    }
    Item { width: 1; height: 14 }
    Text {
        anchors.horizontalCenter: parent.horizontalCenter
        text: "Tarnwell"
        color: Theme.brand
        font.family: Theme.wordMarkFont
        font.pixelSize: 28
        font.letterSpacing: 6
        font.weight: Font.Medium
        Accessible.role: Accessible.Heading
    }
    Item { width: 1; height: 4 }
    Text {
        anchors.horizontalCenter: parent.horizontalCenter
        text: "Version " + about.version
        color: Theme.secondaryText
        font.family: Theme.uiFont
        font.pixelSize: 12
    }
    Item { width: 1; height: 16 }
    Text {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        text: "A music player for the music in your own folders. Everything stays on your device."
        color: Theme.primaryText
        lineHeight: 1.25
        font.family: Theme.uiFont
        font.pixelSize: 13
    }
    Item { width: 1; height: 10 }
    Text {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        text: "Free software under the GNU GPL, version 3 or later."
        color: Theme.secondaryText
        font.family: Theme.uiFont
        font.pixelSize: 11
    }
    Item { width: 1; height: 22 }
    PillButton {
        anchors.horizontalCenter: parent.horizontalCenter
        text: "Close"
        onClicked: about.close()
    }
}
