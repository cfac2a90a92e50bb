// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Tarnwell

Item {
    id: root
    width: 1060
    height: 200

    TopBar {
        id: bar
        width: parent.width
        hasTracks: false
    }

    SignalSpy { id: wordMark; target: bar; signalName: "wordMarkClicked" }
    SignalSpy { id: home; target: bar; signalName: "homeClicked" }
    SignalSpy { id: themeSpy; target: bar; signalName: "themeClicked" }
    SignalSpy { id: importSpy; target: bar; signalName: "importClicked" }
    SignalSpy { id: menu; target: bar; signalName: "menuClicked" }

    TestCase {
        name: "TopBar"
        when: windowShown

        function buttons() {
            let found = { home: null, theme: null, importButton: null, symbolOfHome: null }
            const stack = [bar]
            while (stack.length > 0) {
                const item = stack.pop()
                if (item.symbol === "house")
                    found.home = item
                if (item.Accessible && item.Accessible.name === "Theme")
                    found.theme = item
                if (item.Accessible && item.Accessible.name === "Import Music")
                    found.importButton = item
                for (let i = 0; i < item.children.length; ++i)
                    stack.push(item.children[i])
            }
            return found
        }

        function init() {
            bar.hasTracks = false
            for (const spy of [wordMark, home, themeSpy, importSpy, menu])
                spy.clear()
            mouseMove(root, 5, 190)
        }

        function test_withoutSongsOnlyTheWordMarkImportAndMenu() {
            const b = buttons()
            verify(!b.home.visible)
            verify(!b.theme.visible)
            verify(b.importButton.visible)
            verify(bar.menuButton.visible)
            bar.hasTracks = true
            verify(b.home.visible && b.theme.visible && b.importButton.visible)
        }

        function test_buttonsReportClicks() {
            bar.hasTracks = true
            waitForRendering(bar)
            const b = buttons()
            mouseClick(b.home)
            mouseClick(b.theme)
            mouseClick(b.importButton)
            mouseClick(bar.menuButton)
            mouseClick(bar, 40, 38)
            compare(home.count, 1)
            compare(themeSpy.count, 1)
            compare(importSpy.count, 1)
            compare(menu.count, 1)
            compare(wordMark.count, 1)
        }

    }
}
