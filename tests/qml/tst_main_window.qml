// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Tarnwell

TestCase {
    id: test
    name: "MainWindow"
    when: windowShown

    property var window: null

    function initTestCase() {
        const component = Qt.createComponent("qrc:/Tarnwell/Main.qml")
        compare(component.status, Component.Ready, component.errorString())
        window = component.createObject(null)
        verify(window !== null)
        tryCompare(window, "visible", true)
        waitForRendering(window.contentItem)
    }

    function cleanupTestCase() {
        window.destroy()
    }

    // Stands in for a sidebar: something clickable inside the content area.
    Component {
        id: clickableSidebar
        Rectangle {
            objectName: "clickable"
            implicitWidth: 200
            property int clicks: 0
            color: "transparent"
            MouseArea { anchors.fill: parent; onClicked: parent.clicks += 1 }
        }
    }

    function test_aClickOnThePopupKeepsItOpen() {
        AppState.navigation.toggleThemePicker()
        const popup = findChild(window.contentItem, "themePopup")
        tryCompare(popup, "opacity", 1)
        mouseClick(popup, 30, 12) // the header
        verify(AppState.navigation.showThemePicker)
        mouseClick(findChild(popup, "themeRow0"))
        verify(!AppState.navigation.showThemePicker)
        compare(AppState.preferences.selectedTheme, "sunrise")
        // The checkmark follows the stored value.
        const marked = [0, 1, 2].filter(i => findChild(findChild(popup, "themeRow" + i), "checkmark").visible)
        compare(marked, [0])
        AppState.selectTheme(1)
    }

    // A click outside an open popup only closes it; with nothing open (an
    // empty search field included) the click reaches what is under it.
    function test_aDismissingClickIsConsumed_data() {
        return [
            { tag: "theme popup", open: () => AppState.navigation.toggleThemePicker(),
              isOpen: () => AppState.navigation.showThemePicker, reaches: false },
            { tag: "search dropdown", open: () => { AppState.navigation.searchActive = true
                                                    AppState.navigation.searchText = "zzz" },
              isOpen: () => AppState.navigation.searchActive, reaches: false },
            { tag: "app menu", open: () => findChild(window, "appMenu").open(),
              isOpen: () => findChild(window, "appMenu").opened, reaches: false },
            { tag: "empty search field", open: () => { AppState.navigation.searchActive = true },
              isOpen: () => AppState.navigation.searchActive, reaches: true },
        ]
    }

    function test_aDismissingClickIsConsumed(data) {
        window.sidebar = clickableSidebar
        const sidebar = findChild(window.contentItem, "clickable")
        verify(sidebar !== null)
        waitForRendering(window.contentItem)
        data.open()
        tryVerify(data.isOpen)
        // Below the popups, which hang near the top.
        mouseClick(sidebar, 100, 400)
        tryVerify(() => !data.isOpen())
        compare(sidebar.clicks, data.reaches ? 1 : 0)
        mouseClick(sidebar, 100, 400)
        compare(sidebar.clicks, data.reaches ? 2 : 1)
        window.sidebar = null
    }
}
