// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Tarnwell

Item {
    id: root
    width: 1060
    height: 700

    property var stages: []

    Component {
        id: overlayComponent
        OnboardingOverlay {
            anchors.fill: parent
            onLogoVisibleChanged: root.stages.push("logo")
            onDividerVisibleChanged: root.stages.push("divider")
            onTaglineVisibleChanged: root.stages.push("tagline")
            onButtonVisibleChanged: root.stages.push("button")
        }
    }

    TestCase {
        name: "Onboarding"
        when: windowShown

        function show(url) {
            root.stages = []
            return createTemporaryObject(overlayComponent, root, { bgImageURL: url })
        }

        // Nothing listens on port 9: no photograph, and the reveal goes on regardless.
        function test_revealRunsInOrderWithoutNetwork() {
            const overlay = show("http://127.0.0.1:9/onboarding.jpg")
            verify(!overlay.logoVisible && !overlay.buttonVisible)
            tryVerify(() => overlay.buttonVisible, 30000)
            compare(root.stages, ["logo", "divider", "tagline", "button"])
            verify(!overlay.bgImageVisible)
            verify(!findChild(overlay, "onboardingBackdrop").visible)
        }

        function test_buttonAsksEveryTime() {
            const overlay = show("http://127.0.0.1:9/onboarding.jpg")
            const spy = createTemporaryObject(signalSpy, root, { target: overlay, signalName: "importRequested" })
            const button = findChild(overlay, "onboardingImportButton")
            // Hidden, the button takes no press.
            mouseClick(button)
            compare(spy.count, 0)
            tryVerify(() => overlay.buttonVisible, 30000)
            mouseClick(button)
            mouseClick(button)
            compare(spy.count, 2)
        }

        function test_photographFadesInOnItsOwn() {
            const overlay = show(Qt.resolvedUrl("../../data/icons/org.tarnwell.tarnwell.svg"))
            tryVerify(() => overlay.bgImageVisible, 30000)
            const backdrop = findChild(overlay, "onboardingBackdrop")
            tryVerify(() => backdrop.visible, 30000)
            tryCompare(backdrop, "opacity", 0.38, 30000)
        }

        Component { id: signalSpy; SignalSpy {} }
    }
}
