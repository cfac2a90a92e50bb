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

    TestCase {
        name: "TopBar"
        when: windowShown

        // The buttons by their accessible names, the word mark's included.
        function buttons() {
            const found = {}
            const stack = [bar]
            while (stack.length > 0) {
                const item = stack.pop()
                if (item.Accessible && item.Accessible.name)
                    found[item.Accessible.name] = item
                for (let i = 0; i < item.children.length; ++i)
                    stack.push(item.children[i])
            }
            return found
        }

        // Without songs only the word mark, Import and the menu show; each button reports its click.
        function test_buttonsShowAndReportClicks() {
            const b = buttons()
            verify(!b["Home"].visible && !b["Theme"].visible)
            verify(b["Import Music"].visible && bar.menuButton.visible)
            bar.hasTracks = true
            waitForRendering(bar)
            const signals = { "Home": "homeClicked", "Theme": "themeClicked", "Import Music": "importClicked",
                              "Tarnwell, home": "wordMarkClicked" }
            for (const name in signals) {
                let clicks = 0
                const count = () => ++clicks
                bar[signals[name]].connect(count)
                mouseClick(b[name])
                bar[signals[name]].disconnect(count)
                compare(clicks, 1, name)
            }
        }
    }
}
