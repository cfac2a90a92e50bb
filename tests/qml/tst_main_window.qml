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

    function test_windowSizes() {
        compare(window.width, 1060)
        compare(window.height, 700)
        compare(window.minimumWidth, 820)
        compare(window.minimumHeight, 540)
        compare(window.title, "Tarnwell")
    }

    function test_importAsksForOneFolder() {
        const dialog = findChild(window, "folderDialog")
        verify(dialog !== null)
        compare(dialog.acceptLabel, "Import Folder")
        window.importFolder()
        tryCompare(dialog, "visible", true)
        dialog.reject()
        tryCompare(dialog, "visible", false)
        compare(AppState.library.trackCount, 0)
    }

    function test_themeFollowsTheMainState() {
        AppState.selectTheme(2)
        compare(Theme.current, 2)
        AppState.selectTheme(1)
        compare(Theme.current, 1)
    }

    function test_aClickInTheContentClosesPopups() {
        const navigation = AppState.navigation
        navigation.searchActive = true
        navigation.searchText = "abc"
        navigation.toggleThemePicker()
        verify(navigation.showThemePicker)
        // The test set-up stored a finished onboarding, so no welcome screen
        // covers the content.
        verify(AppState.preferences.didCompleteOnboarding)
        mouseClick(window.contentItem, 500, 400)
        verify(!navigation.showThemePicker)
        verify(!navigation.searchActive)
        compare(navigation.searchText, "")
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
        AppState.selectTheme(1)
    }

    function test_theClickStillReachesTheContent() {
        window.sidebar = clickableSidebar
        const sidebar = findChild(window.contentItem, "clickable")
        verify(sidebar !== null)
        waitForRendering(window.contentItem)
        AppState.navigation.toggleThemePicker()
        verify(AppState.navigation.showThemePicker)
        // Below the popup, which hangs near the top.
        mouseClick(sidebar, 100, 500)
        compare(sidebar.clicks, 1)
        verify(!AppState.navigation.showThemePicker)
        window.sidebar = null
    }
}
