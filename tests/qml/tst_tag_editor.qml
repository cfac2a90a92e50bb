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

        function find(item, objectName) {
            const stack = [item]
            while (stack.length > 0) {
                const it = stack.pop()
                if (it.objectName === objectName)
                    return it
                for (let i = 0; i < it.children.length; ++i)
                    stack.push(it.children[i])
            }
            return null
        }

        function makePanel(props) {
            const panel = createTemporaryObject(panelComponent, root, props)
            const cancels = createTemporaryObject(spyComponent, root, { target: panel, signalName: "cancelRequested" })
            const saves = createTemporaryObject(spyComponent, root, { target: panel, signalName: "saveRequested" })
            tryVerify(() => find(panel, "titleField").children[1].activeFocus)
            return { panel: panel, cancels: cancels, saves: saves }
        }

        Component {
            id: spyComponent
            SignalSpy {}
        }

        function test_texts_data() {
            return [
                { tag: "one song", count: 1, heading: "Edit Tags", line: "Demo take 1", placeholder: "Track title" },
                { tag: "three songs", count: 3, heading: "Edit 3 Tracks",
                  line: "Leave a field empty to keep each track's existing value.",
                  placeholder: "Leave empty to keep original" },
            ]
        }

        function test_texts(data) {
            const p = makePanel({ songCount: data.count, fileName: "Demo take 1" }).panel
            compare(find(p, "editorHeading").text, data.heading)
            compare(find(p, "editorLine").text, data.line)
            compare(find(p, "titleField").placeholder, data.placeholder)
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
            verify(find(t.panel, "discardDim").visible)
            mouseClick(find(t.panel, "keepEditingButton"))
            verify(!t.panel.showDiscardAlert)
            verify(!find(t.panel, "discardDim").visible)
            compare(find(t.panel, "titleField").text, "Introx")

            // Typed back to what it was: nothing to lose.
            keyClick(Qt.Key_Backspace)
            verify(!t.panel.hasChanges)
            keyClick("y")
            keyClick(Qt.Key_Escape)
            mouseClick(find(t.panel, "discardButton"))
            compare(t.cancels.count, 1)
        }

        function test_saveSendsTheFieldsAsTyped() {
            const t = makePanel({ songCount: 3 })
            mouseClick(find(t.panel, "albumField").children[1])
            keyClick(" ")
            keyClick("B")
            mouseClick(find(t.panel, "saveButton"))
            compare(t.saves.count, 1)
            const args = t.saves.signalArguments[0]
            compare([args[0], args[1], args[2]], ["", "", " B"])
        }
    }
}
