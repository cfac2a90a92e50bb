// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Tarnwell

TestCase {
    name: "Theme"

    function cleanup() {
        Theme.current = 1
    }

    function test_rolesFollowTheCurrentTheme_data() {
        return [
            { tag: "sunrise", theme: 0, accent: "#ab4e0d", primary: "#000000", onAccent: "#ffffff" },
            { tag: "noir", theme: 1, accent: "#e3f794", primary: "#f5f5f7", onAccent: "#111111" },
            { tag: "light", theme: 2, accent: "#0063d0", primary: "#000000", onAccent: "#ffffff" },
        ]
    }

    function test_rolesFollowTheCurrentTheme(data) {
        Theme.current = data.theme
        compare(Theme.current, data.theme)
        verify(Qt.colorEqual(Theme.accent, data.accent))
        verify(Qt.colorEqual(Theme.primaryText, data.primary))
        verify(Qt.colorEqual(Theme.onAccentText, data.onAccent))
    }

    function test_outOfRangeIsNoir() {
        Theme.current = 7
        compare(Theme.current, 1)
    }

    function test_parserIsAlphaFirst() {
        const c = Theme.color("#80ff0000")
        fuzzyCompare(c.a, 0x80 / 255, 0.002)
        compare(c.r, 1)
        compare(c.g, 0)
    }
}
