// SPDX-License-Identifier: GPL-3.0-or-later
// The tag editor over a dimmed window: for one song (a row's pencil), or for
// the untagged screen's chosen songs (batch). A click beside it closes it,
// except while a batch is being written.
import QtQuick
import Tarnwell

DimLayer {
    id: editing
    objectName: "tagEditorLayer"

    required property TagEditorSession editor
    required property UntaggedSongs untagged
    // The untagged screen is shown: its editor, when open, is the batch one.
    required property bool onUntaggedScreen

    readonly property bool batch: untagged.showEditor && onUntaggedScreen
    readonly property bool open: editor.isOpen || batch
    function close() {
        if (batch)
            untagged.closeEditor()
        else
            editor.close()
    }

    shown: open
    dim: 0.3
    dismissable: !untagged.isSaving
    onDismissRequested: close()
    panel: TagEditorPanel {
        objectName: "tagEditorPanel"
        readonly property var values: editing.batch ? editing.untagged.initialValues : editing.editor.meta
        songCount: editing.batch ? editing.untagged.editingCount : 1
        fileName: editing.batch ? editing.untagged.editingFileName : editing.editor.fileName
        initialTitle: values.title || ""
        initialArtist: values.artist || ""
        initialAlbum: values.album || ""
        busy: editing.untagged.isSaving
        errorText: editing.batch ? editing.untagged.saveError : editing.editor.error
        busyText: "Saving " + editing.untagged.savedSoFar + " of " + editing.untagged.editingCount + "…"
        onSaveRequested: (title, artist, album) => {
            if (editing.batch)
                editing.untagged.saveBatch(title, artist, album)
            else
                editing.editor.save(title, artist, album)
        }
        onCancelRequested: editing.close()
    }
}
