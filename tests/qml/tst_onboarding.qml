// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Tarnwell

Item {
    id: root
    width: 1060
    height: 700

    property var stages: []
    property real shownAt: 0

    Component {
        id: overlayComponent
        OnboardingOverlay {
            anchors.fill: parent
            onLogoVisibleChanged: root.stages.push(["logo", Date.now() - root.shownAt])
            onDividerVisibleChanged: root.stages.push(["divider", Date.now() - root.shownAt])
            onTaglineVisibleChanged: root.stages.push(["tagline", Date.now() - root.shownAt])
            onButtonVisibleChanged: root.stages.push(["button", Date.now() - root.shownAt])
        }
    }

    TestCase {
        name: "Onboarding"
        when: windowShown


        function show(url) {
            root.stages = []
            root.shownAt = Date.now()
            return createTemporaryObject(overlayComponent, root, { bgImageURL: url })
        }

        // Nothing listens on port 9: the photograph never comes, and the
        // reveal goes on regardless.
        function test_revealRunsInOrderWithoutNetwork() {
            const overlay = show("http://127.0.0.1:9/onboarding.jpg")
            verify(!overlay.logoVisible && !overlay.buttonVisible)
            tryVerify(() => overlay.buttonVisible, 30000)
            compare(root.stages.map(s => s[0]), ["logo", "divider", "tagline", "button"])
            // 1.3 s, 0.7 s and 0.8 s at least between the stages; a busy machine only adds to them.
            const at = root.stages.map(s => s[1])
            verify(at[1] - at[0] >= 1250, "divider after " + (at[1] - at[0]))
            verify(at[2] - at[1] >= 650, "tagline after " + (at[2] - at[1]))
            verify(at[3] - at[2] >= 750, "button after " + (at[3] - at[2]))
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
            verify(backdrop.visible)
            tryCompare(backdrop, "opacity", 0.38, 30000)
        }

        Component { id: signalSpy; SignalSpy {} }
    }
}
