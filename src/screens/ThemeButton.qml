// SPDX-License-Identifier: GPL-3.0-or-later
// Three dots that open the theme popup.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Item {
    id: button

    signal clicked()

    implicitWidth: 36
    implicitHeight: 36

    Accessible.role: Accessible.Button
    Accessible.name: "Theme"
    Accessible.onPressAction: button.clicked()
    activeFocusOnTab: true
    Keys.onReturnPressed: button.clicked()
    Keys.onEnterPressed: button.clicked()

    Row {
        anchors.centerIn: parent
        spacing: 4
        Repeater {
            model: 3
            Rectangle {
                width: 7
                height: 7
                radius: 3.5
                color: Theme.secondaryText
            }
        }
    }

    HoverHandler { cursorShape: Qt.PointingHandCursor }
    TapHandler { onTapped: button.clicked() }
    FocusRing {}
}
