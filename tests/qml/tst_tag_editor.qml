// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Tarnwell

Item {
    id: root
    width: 600
    height: 500

    Component {
        id: panelComponent
        TagEditorPanel {}
    }

    TestCase {
        name: "TagEditor"
        when: windowShown

        function makePanel(props) {
            const panel = createTemporaryObject(panelComponent, root, props)
            const cancels = createTemporaryObject(spyComponent, root, { target: panel, signalName: "cancelRequested" })
            const saves = createTemporaryObject(spyComponent, root, { target: panel, signalName: "saveRequested" })
            tryVerify(() => findChild(panel, "titleField").children[1].activeFocus)
            return { panel: panel, cancels: cancels, saves: saves }
        }

        Component {
            id: spyComponent
            SignalSpy {}
        }

        function test_escapeWithoutChangesCloses() {
            const t = makePanel({ initialTitle: "Intro" })
            keyClick(Qt.Key_Escape)
            compare(t.cancels.count, 1)
            verify(!t.panel.showDiscardAlert)
        }

        function test_escapeAfterTypingAsksFirst() {
            const t = makePanel({ initialTitle: "Intro" })
            keyClick("x")
            verify(t.panel.hasChanges)
            keyClick(Qt.Key_Escape)
            compare(t.cancels.count, 0)
            verify(t.panel.showDiscardAlert)
            verify(findChild(t.panel, "discardDim").visible)
            mouseClick(findChild(t.panel, "keepEditingButton"))
            verify(!t.panel.showDiscardAlert)
            verify(!findChild(t.panel, "discardDim").visible)
            compare(findChild(t.panel, "titleField").text, "Introx")

            // Typed back to what it was: nothing to lose.
            keyClick(Qt.Key_Backspace)
            verify(!t.panel.hasChanges)
            keyClick("y")
            keyClick(Qt.Key_Escape)
            mouseClick(findChild(t.panel, "discardButton"))
            compare(t.cancels.count, 1)
        }

        function test_saveSendsTheFieldsAsTyped() {
            const t = makePanel({ songCount: 3 })
            mouseClick(findChild(t.panel, "albumField").children[1])
            keyClick(" ")
            keyClick("B")
            mouseClick(findChild(t.panel, "saveButton"))
            compare(t.saves.count, 1)
            const args = t.saves.signalArguments[0]
            compare([args[0], args[1], args[2]], ["", "", " B"])
        }
    }
}
