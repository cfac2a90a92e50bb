// SPDX-License-Identifier: GPL-3.0-or-later
// The first-run welcome until the full onboarding screen takes its place: the
// name, what the program does, and the one thing to do first.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Item {
    id: welcome

    signal importClicked()

    // The window underneath takes no clicks while this covers it.
    MouseArea { anchors.fill: parent; acceptedButtons: Qt.AllButtons; hoverEnabled: true }

    Rectangle {
        anchors.fill: parent
        gradient: Gradient {
            GradientStop { position: 0; color: Theme.raisedBackground }
            GradientStop { position: 1; color: Theme.windowBackground }
        }
    }

    Column {
        anchors.centerIn: parent
        spacing: 0

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "YOUR MUSIC COLLECTION"
            color: Theme.brand
            opacity: 0.65
            font.family: Theme.uiFont
            font.pixelSize: 10
            font.weight: Font.Medium
            font.letterSpacing: 4
        }
        Item { width: 1; height: 18 }
        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "Tarnwell"
            color: Theme.brand
            font.family: Theme.wordMarkFont
            font.pixelSize: 76
            font.letterSpacing: 8
            Accessible.role: Accessible.Heading
        }
        Item { width: 1; height: 24 }
        Rectangle {
            anchors.horizontalCenter: parent.horizontalCenter
            width: 48
            height: 1
            color: Theme.brand
            opacity: 0.35
        }
        Item { width: 1; height: 24 }
        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "Tarnwell keeps your music close."
            color: Theme.primaryText
            font.family: Theme.uiFont
            font.pixelSize: 22
            font.weight: Font.Light
        }
        Item { width: 1; height: 8 }
        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            horizontalAlignment: Text.AlignHCenter
            text: "Import a local folder to get started.\nEverything stays on your device, offline."
            color: Theme.secondaryText
            lineHeight: 1.35
            font.family: Theme.uiFont
            font.pixelSize: 13
            font.weight: Font.Light
        }
        Item { width: 1; height: 40 }
        PillButton {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "Import Music Folder"
            symbol: "folder.badge.plus"
            fontSize: 14
            horizontalPadding: 28
            verticalPadding: 12
            onClicked: welcome.importClicked()
        }
    }
}
