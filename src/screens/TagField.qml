// SPDX-License-Identifier: GPL-3.0-or-later
// A label above a text field, for the tag editor.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls
import Tarnwell

Column {
    id: tagField

    property string label
    property string placeholder
    property string initial
    property alias text: field.text

    spacing: 5

    function forceActiveFocus() { field.forceActiveFocus() }

    Text {
        text: tagField.label
        font.pixelSize: 12
        font.weight: Font.Medium
        color: Theme.secondaryText
    }
    TextField {
        id: field
        width: tagField.width
        text: tagField.initial
        placeholderText: tagField.placeholder
        font.pixelSize: 13
        color: Theme.primaryText
        placeholderTextColor: Theme.secondaryText
        selectByMouse: true
        background: Rectangle {
            radius: 6
            color: Theme.windowBackground
            border.color: field.activeFocus ? Theme.brand : Theme.border
            border.width: 1
        }
        Accessible.name: tagField.label
    }
}
