// SPDX-License-Identifier: GPL-3.0-or-later
// The first-run welcome: the name, what the program is for, and the one thing
// to do first, revealed one after another over a dimmed landscape.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Shapes
import Tarnwell

Item {
    id: overlay

    // The landscape behind the words; nothing is drawn while it loads or when
    // it cannot be had.
    property url bgImageURL
    // The stages of the reveal. They start false and only ever turn true.
    property bool logoVisible: false
    property bool dividerVisible: false
    property bool taglineVisible: false
    property bool buttonVisible: false
    property bool bgImageVisible: false

    // Every press asks again; the button never disables itself.
    signal importRequested()

    // The window underneath takes no clicks while this covers it.
    MouseArea { anchors.fill: parent; acceptedButtons: Qt.AllButtons; hoverEnabled: true }

    // The window's own background, covering the window underneath.
    Rectangle {
        anchors.fill: parent
        gradient: Gradient {
            GradientStop { position: 0; color: Theme.raisedBackground }
            GradientStop { position: 1; color: Theme.windowBackground }
        }
    }

    // Runs once, to its end, from the moment the overlay exists.
    SequentialAnimation {
        id: reveal
        running: true
        PauseAnimation { duration: Theme.duration(50) }
        ScriptAction { script: overlay.logoVisible = true }
        PauseAnimation { duration: Theme.duration(1300) }
        ScriptAction { script: overlay.dividerVisible = true }
        PauseAnimation { duration: Theme.duration(700) }
        ScriptAction { script: overlay.taglineVisible = true }
        PauseAnimation { duration: Theme.duration(800) }
        ScriptAction { script: overlay.buttonVisible = true }
    }

    Item {
        id: backdrop
        objectName: "onboardingBackdrop"
        anchors.fill: parent
        visible: photo.status === Image.Ready && opacity > 0
        opacity: overlay.bgImageVisible ? 0.38 : 0
        Behavior on opacity { NumberAnimation { duration: Theme.duration(2000); easing.type: Easing.InOutQuad } }
        // The photograph and its shade fade as one picture.
        layer.enabled: visible && opacity < 1

        Image {
            id: photo
            anchors.fill: parent
            source: overlay.bgImageURL
            asynchronous: true
            cache: false
            fillMode: Image.PreserveAspectCrop
            onStatusChanged: if (status === Image.Ready) overlay.bgImageVisible = true
        }
        // Clear in the top-left corner, darkest two thirds of the way down.
        // Black laid over the picture darkens it exactly as multiplying would.
        Shape {
            anchors.fill: parent
            ShapePath {
                strokeWidth: -1
                strokeColor: "transparent"
                startX: 0; startY: 0
                PathLine { x: backdrop.width; y: 0 }
                PathLine { x: backdrop.width; y: backdrop.height }
                PathLine { x: 0; y: backdrop.height }
                PathLine { x: 0; y: 0 }
                fillGradient: LinearGradient {
                    x1: 0; y1: 0
                    x2: backdrop.width; y2: backdrop.height
                    GradientStop { position: 0; color: Qt.rgba(0, 0, 0, 0) }
                    GradientStop { position: 0.2; color: Qt.rgba(0, 0, 0, 0) }
                    GradientStop { position: 0.55; color: Qt.rgba(0, 0, 0, 0.6) }
                    GradientStop { position: 0.75; color: Qt.rgba(0, 0, 0, 1) }
                    GradientStop { position: 1; color: Qt.rgba(0, 0, 0, 0.4) }
                }
            }
        }
    }

    // Under the words while the photograph shows, so that they stay as
    // legible as on the plain background.
    Rectangle {
        objectName: "onboardingScrim"
        anchors.centerIn: welcome
        width: welcome.width + 96
        height: welcome.height + 72
        radius: 28
        color: Theme.windowBackground
        opacity: backdrop.visible ? 0.8 * backdrop.opacity / 0.38 : 0
    }

    Column {
        id: welcome
        anchors.centerIn: parent
        spacing: 0

        Text {
            objectName: "onboardingCaption"
            anchors.horizontalCenter: parent.horizontalCenter
            text: "YOUR MUSIC COLLECTION"
            color: Theme.brand
            // Fully opaque: the small caption needs the brand colour's whole contrast.
            opacity: overlay.logoVisible ? 1 : 0
            transform: Translate { y: overlay.logoVisible ? 0 : 6; Behavior on y { NumberAnimation { duration: Theme.duration(1400); easing.type: Easing.InOutQuad } } }
            Behavior on opacity { NumberAnimation { duration: Theme.duration(1400); easing.type: Easing.InOutQuad } }
            font.family: Theme.uiFont
            font.pixelSize: 10
            font.weight: Font.Medium
            font.letterSpacing: 4
        }
        Item { width: 1; height: 18 }
        Text {
            objectName: "onboardingWordMark"
            anchors.horizontalCenter: parent.horizontalCenter
            text: "Tarnwell"
            color: Theme.brand
            opacity: overlay.logoVisible ? 1 : 0
            transform: Translate { y: overlay.logoVisible ? 0 : 10; Behavior on y { NumberAnimation { duration: Theme.duration(1400); easing.type: Easing.InOutQuad } } }
            Behavior on opacity { NumberAnimation { duration: Theme.duration(1400); easing.type: Easing.InOutQuad } }
            font.family: Theme.wordMarkFont
            font.pixelSize: 76
            font.letterSpacing: 8
            Accessible.role: Accessible.Heading
        }
        Item { width: 1; height: 24 }
        Item {
            anchors.horizontalCenter: parent.horizontalCenter
            width: 48
            height: 1
            Rectangle {
                objectName: "onboardingDivider"
                anchors.centerIn: parent
                width: overlay.dividerVisible ? 48 : 0
                height: 1
                color: Theme.brand
                opacity: 0.35
                Behavior on width { NumberAnimation { duration: Theme.duration(600); easing.type: Easing.InOutQuad } }
            }
        }
        Item { width: 1; height: 24 }
        Column {
            objectName: "onboardingTagline"
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 8
            opacity: overlay.taglineVisible ? 1 : 0
            transform: Translate { y: overlay.taglineVisible ? 0 : 10; Behavior on y { NumberAnimation { duration: Theme.duration(750); easing.type: Easing.Bezier; easing.bezierCurve: Theme.spring } } }
            Behavior on opacity { NumberAnimation { duration: Theme.duration(750); easing.type: Easing.Bezier; easing.bezierCurve: Theme.spring } }

            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                text: "Every song you own, well kept in Tarnwell."
                color: Theme.primaryText
                font.family: Theme.uiFont
                font.pixelSize: 22
                font.weight: Font.Light
            }
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                horizontalAlignment: Text.AlignHCenter
                text: "Import a local folder to get started.\nEverything stays on your device, offline."
                color: Theme.secondaryText
                lineHeightMode: Text.FixedHeight
                lineHeight: fontMetrics.height + 5
                font.family: Theme.uiFont
                font.pixelSize: 13
                font.weight: Font.Light
                FontMetrics { id: fontMetrics; font.family: Theme.uiFont; font.pixelSize: 13; font.weight: Font.Light }
            }
        }
        Item { width: 1; height: 40 }
        PillButton {
            objectName: "onboardingImportButton"
            anchors.horizontalCenter: parent.horizontalCenter
            text: "Import Music Folder"
            symbol: "folder.badge.plus"
            symbolSize: 13
            fontSize: 14
            horizontalPadding: 28
            verticalPadding: 12
            enabled: overlay.buttonVisible
            opacity: overlay.buttonVisible ? 1 : 0
            transform: Translate { y: overlay.buttonVisible ? 0 : 10; Behavior on y { NumberAnimation { duration: Theme.duration(750); easing.type: Easing.Bezier; easing.bezierCurve: Theme.spring } } }
            Behavior on opacity { NumberAnimation { duration: Theme.duration(750); easing.type: Easing.Bezier; easing.bezierCurve: Theme.spring } }
            onClicked: overlay.importRequested()
        }
    }
}
