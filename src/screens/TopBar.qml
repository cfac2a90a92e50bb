// SPDX-License-Identifier: GPL-3.0-or-later
// The bar across the top of the window: the word mark, and while the library
// has songs the search field, home, theme and import buttons; the menu button
// is always there.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Tarnwell

Item {
    id: bar

    required property bool hasTracks
    // The search field, when there is one to show.
    property Component searchBar: null
    // Where the theme popup hangs from.
    readonly property Item themeButton: themeButton
    readonly property Item menuButton: menuButton

    signal wordMarkClicked()
    signal homeClicked()
    signal themeClicked()
    signal importClicked()
    signal menuClicked()
    // A right click on the bar, at this point of the bar.
    signal contextMenuRequested(point position)

    implicitHeight: row.implicitHeight + 20 + 14

    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: (eventPoint) => bar.contextMenuRequested(eventPoint.position)
    }

    RowLayout {
        id: row
        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            leftMargin: 20
            rightMargin: 20
            topMargin: 20
        }
        spacing: 8

        Text {
            id: wordMark
            text: "Tarnwell"
            color: Theme.brand
            font.family: Theme.wordMarkFont
            font.pixelSize: 28
            font.letterSpacing: 6
            font.weight: Font.Medium
            Accessible.role: Accessible.Button
            Accessible.name: "Tarnwell, home"
            Accessible.onPressAction: bar.wordMarkClicked()
            activeFocusOnTab: true
            Keys.onReturnPressed: bar.wordMarkClicked()
            Keys.onEnterPressed: bar.wordMarkClicked()
            FocusRing {}
            TapHandler { onTapped: bar.wordMarkClicked() }
        }

        Item { Layout.fillWidth: true }

        Loader {
            Layout.alignment: Qt.AlignVCenter
            active: bar.hasTracks && bar.searchBar !== null
            visible: active
            sourceComponent: bar.searchBar
        }
        IconButton {
            visible: bar.hasTracks
            symbol: "house"
            symbolSize: 20
            accessibleName: "Home"
            onClicked: bar.homeClicked()
        }
        ThemeButton {
            id: themeButton
            visible: bar.hasTracks
            onClicked: bar.themeClicked()
        }
        // Shown with an empty library too: the way back after the welcome.
        ImportButton {
            objectName: "importButton"
            Layout.leftMargin: 4
            onClicked: bar.importClicked()
        }
        IconButton {
            id: menuButton
            symbol: "ellipsis"
            symbolSize: 18
            accessibleName: "Menu"
            onClicked: bar.menuClicked()
        }
    }
}
