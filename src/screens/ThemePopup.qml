// SPDX-License-Identifier: GPL-3.0-or-later
// The small popup under the theme button: one row per theme, a checkmark on
// the stored one.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Item {
    id: popup

    required property bool open
    // The stored raw value; a value that names no theme checks no row.
    required property string selectedTheme

    signal themeChosen(int index)

    width: 140
    height: column.implicitHeight
    visible: opacity > 0
    opacity: open ? 1 : 0
    scale: open ? 1 : 0.97
    transformOrigin: Item.TopLeft
    Behavior on opacity { NumberAnimation { duration: Theme.popupDuration; easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeOut } }
    Behavior on scale { NumberAnimation { duration: Theme.popupDuration; easing.type: Easing.Bezier; easing.bezierCurve: Theme.easeOut } }

    Accessible.role: Accessible.PopupMenu
    Accessible.name: "Theme"

    Rectangle {
        id: background
        anchors.fill: parent
        radius: 12
        color: Theme.raisedBackground
        border.color: Theme.border
        border.width: 1
        CardShadow { radius: 12 }
    }
    // Clicks on the popup stay on the popup.
    MouseArea { anchors.fill: parent }

    Column {
        id: column
        width: parent.width
        topPadding: 4
        bottomPadding: 4

        Text {
            text: "Theme"
            leftPadding: 14
            rightPadding: 14
            topPadding: 10
            bottomPadding: 4
            color: Theme.secondaryText
            font.family: Theme.uiFont
            font.pixelSize: 11
            font.weight: Font.DemiBold
            font.letterSpacing: 1
        }

        Repeater {
            model: Theme.themeNames
            delegate: Item {
                id: row
                required property int index
                required property string modelData
                readonly property bool checked: Theme.themeRawValues[index] === popup.selectedTheme

                objectName: "themeRow" + index
                width: column.width
                height: name.implicitHeight + 18

                Accessible.role: Accessible.MenuItem
                Accessible.name: modelData
                Accessible.checkable: true
                Accessible.checked: checked
                Accessible.onPressAction: popup.themeChosen(index)
                activeFocusOnTab: true
                Keys.onReturnPressed: popup.themeChosen(index)
                Keys.onEnterPressed: popup.themeChosen(index)
                Keys.onUpPressed: row.nextItemInFocusChain(false).forceActiveFocus(Qt.TabFocusReason)
                Keys.onDownPressed: row.nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
                FocusRing { anchors.margins: 2 }

                Text {
                    id: name
                    anchors.left: parent.left
                    anchors.leftMargin: 14
                    anchors.verticalCenter: parent.verticalCenter
                    text: row.modelData
                    color: Theme.primaryText
                    font.family: Theme.uiFont
                    font.pixelSize: 13
                }
                SymbolIcon {
                    objectName: "checkmark"
                    anchors.right: parent.right
                    anchors.rightMargin: 14
                    anchors.verticalCenter: parent.verticalCenter
                    visible: row.checked
                    name: "checkmark"
                    size: 11
                    font.weight: Font.Medium
                    color: Theme.secondaryText
                }
                HoverHandler { cursorShape: Qt.PointingHandCursor }
                TapHandler {
                    gesturePolicy: TapHandler.ReleaseWithinBounds
                    onTapped: popup.themeChosen(row.index)
                }
            }
        }
    }
}
