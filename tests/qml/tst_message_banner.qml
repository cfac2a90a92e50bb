// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Tarnwell

Item {
    id: root
    width: 600
    height: 400

    MessageBanner {
        id: banner
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: banner.bottomMargin
        text: ""
        raised: false
    }

    TestCase {
        name: "MessageBanner"
        when: windowShown

        function test_showsAndHidesTheText() {
            verify(!banner.visible)
            banner.text = "3 new songs added"
            tryCompare(banner, "opacity", 1)
            compare(findChild(banner, "bannerText").text, "3 new songs added")
            banner.text = ""
            // The text stays while the banner leaves.
            compare(findChild(banner, "bannerText").text, "3 new songs added")
            tryCompare(banner, "visible", false)
        }

        function test_sitsAboveTheNowPlayingBar() {
            banner.raised = false
            compare(banner.bottomMargin, 16)
            banner.raised = true
            compare(banner.bottomMargin, 100)
            banner.raised = false
        }

        function test_usesTheAccentColours() {
            banner.text = "Tags saved"
            tryCompare(banner, "opacity", 1)
            compare(findChild(banner, "bannerText").color, Theme.onAccentText)
            banner.text = ""
        }
    }
}
