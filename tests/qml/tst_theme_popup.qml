// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Tarnwell

Item {
    id: root
    width: 400
    height: 300

    ThemePopup {
        id: popup
        x: 20
        y: 20
        open: true
        selectedTheme: "noir"
    }

    SignalSpy { id: chosen; target: popup; signalName: "themeChosen" }

    TestCase {
        name: "ThemePopup"
        when: windowShown

        function checkedRows() {
            let rows = []
            for (let i = 0; i < 3; ++i) {
                const mark = findChild(findChild(popup, "themeRow" + i), "checkmark")
                if (mark.visible)
                    rows.push(i)
            }
            return rows
        }

        function init() {
            popup.open = true
            popup.selectedTheme = "noir"
            chosen.clear()
        }

        function test_checkmarkFollowsTheStoredValue_data() {
            return [
                { tag: "noir", stored: "noir", rows: [1] },
                { tag: "light", stored: "light", rows: [2] },
                { tag: "capitalised", stored: "Sunrise", rows: [] },
                { tag: "unknown", stored: "sepia", rows: [] },
            ]
        }

        function test_checkmarkFollowsTheStoredValue(data) {
            popup.selectedTheme = data.stored
            compare(checkedRows(), data.rows)
        }

        function test_clickingARowChoosesItsTheme() {
            const row = findChild(popup, "themeRow2")
            mouseClick(row)
            compare(chosen.count, 1)
            compare(chosen.signalArguments[0][0], 2)
        }

    }
}
