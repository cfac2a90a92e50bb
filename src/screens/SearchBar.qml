// SPDX-License-Identifier: GPL-3.0-or-later
// The search field of the top bar: a magnifying glass that opens into a text
// field. Escape, or leaving the field for 0.2 s, clears and closes it.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

Rectangle {
    id: bar

    property string text: ""
    property bool isActive: false
    readonly property bool focused: field.activeFocus

    signal textEdited(string text)
    signal activeChangeRequested(bool active)
    // ↓ / ↑ and Enter in the field choose among the results.
    signal moveRequested(int step)
    signal acceptRequested()

    // Puts the caret in the field once it has opened.
    function focusField() {
        focusTimer.restart()
    }

    function close() {
        bar.textEdited("")
        bar.activeChangeRequested(false)
    }

    implicitWidth: isActive ? 240 : 30
    implicitHeight: 30
    radius: 8
    color: isActive ? Theme.subtleFill : Theme.panelBackground
    Behavior on implicitWidth { enabled: !Theme.reduceMotion; SpringAnimation { spring: 4; damping: 0.85; epsilon: 0.5 } }
    Behavior on color { ColorAnimation { duration: Theme.duration(300) } }
    clip: true
    Accessible.role: Accessible.EditableText
    Accessible.name: "Search"
    // Closed, the bar is a button that Tab reaches.
    activeFocusOnTab: !isActive || activeFocus
    Keys.onReturnPressed: { bar.activeChangeRequested(true); bar.focusField() }
    Keys.onEnterPressed: { bar.activeChangeRequested(true); bar.focusField() }

    SymbolIcon {
        id: glass
        x: 8
        anchors.verticalCenter: parent.verticalCenter
        name: "magnifyingglass"
        size: 13
        color: Theme.secondaryText
    }
    TextField {
        id: field
        objectName: "searchField"
        anchors.left: glass.right
        anchors.leftMargin: 4
        anchors.verticalCenter: parent.verticalCenter
        width: 186
        visible: bar.isActive
        text: bar.text
        placeholderText: "Search..."
        Accessible.name: "Search"
        placeholderTextColor: Theme.secondaryText
        font.pixelSize: 13
        color: Theme.primaryText
        background: null
        padding: 2
        onTextEdited: bar.textEdited(text)
        Keys.onDownPressed: bar.moveRequested(1)
        Keys.onUpPressed: bar.moveRequested(-1)
        Keys.onReturnPressed: bar.acceptRequested()
        Keys.onEnterPressed: bar.acceptRequested()
        Keys.onEscapePressed: (event) => {
            bar.close()
            event.accepted = true
        }
        onActiveFocusChanged: {
            if (!activeFocus && bar.isActive)
                graceTimer.restart()
        }
    }
    SymbolIcon {
        objectName: "clearSearch"
        anchors.right: parent.right
        anchors.rightMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        name: "xmark.circle.fill"
        size: 12
        color: Theme.secondaryText
        visible: opacity > 0
        opacity: bar.isActive && bar.text !== "" ? 1 : 0
        Behavior on opacity { NumberAnimation { duration: Theme.duration(150) } }
        MouseArea { anchors.fill: parent; anchors.margins: -4; onClicked: bar.textEdited("") }
    }

    // A click on the closed bar opens it and puts the caret in the field.
    MouseArea {
        anchors.fill: parent
        enabled: !bar.isActive
        cursorShape: Qt.PointingHandCursor
        onClicked: {
            bar.activeChangeRequested(true)
            focusTimer.restart()
        }
    }
    Timer {
        id: focusTimer
        interval: 50
        onTriggered: field.forceActiveFocus()
    }
    // Focus that comes back within 0.2 s keeps the search open.
    Timer {
        id: graceTimer
        interval: 200
        onTriggered: {
            if (!field.activeFocus && bar.isActive)
                bar.close()
        }
    }
    FocusRing { radius: bar.radius + 2 }
}
