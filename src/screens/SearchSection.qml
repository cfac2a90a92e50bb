// SPDX-License-Identifier: GPL-3.0-or-later
// A section of the search dropdown: a divider after the one before it, the
// upper-case heading, then its rows.
pragma ComponentBehavior: Bound
import QtQuick
import Tarnwell

Column {
    id: section

    property string title
    // The first section shown has no divider above it.
    property bool first: false
    default property alias rows: rowColumn.data

    Item {
        objectName: "sectionDivider"
        width: section.width
        height: 9
        visible: !section.first
        Rectangle {
            x: 12
            y: 4
            width: parent.width - 24
            height: 1
            color: Theme.border
        }
    }
    Text {
        x: 14
        topPadding: 4
        bottomPadding: 4
        text: section.title.toUpperCase()
        font.pixelSize: 10
        font.weight: Font.DemiBold
        font.letterSpacing: 1
        color: Theme.secondaryText
    }
    Column {
        id: rowColumn
        width: section.width
    }
}
