// SPDX-License-Identifier: GPL-3.0-or-later
// The keys of the app menu's commands (the playback keys are the key
// filter's). Each key names its command; the window runs it.
import QtQuick

Item {
    id: keys

    property bool canCreatePlaylist: true
    // Escape closes the search or the theme popup; the panels close themselves
    // (the editor asks before losing changes).
    property bool canEscape: false
    signal triggered(string command)

    Shortcut { sequences: [StandardKey.Quit]; onActivated: Qt.quit() }
    // Ctrl+? comes with Shift on most layouts; a sequence spelled
    // "Ctrl+Shift+/" would stop the whole Shortcut.
    Shortcut { sequences: ["Ctrl+F", "/"]; onActivated: keys.triggered("search") }
    Shortcut { sequence: "Ctrl+O"; onActivated: keys.triggered("import") }
    Shortcut { sequence: "Ctrl+N"; enabled: keys.canCreatePlaylist; onActivated: keys.triggered("newPlaylist") }
    Shortcut { sequence: "Ctrl+1"; onActivated: keys.triggered("home") }
    Shortcut { sequence: "Ctrl+2"; onActivated: keys.triggered("artists") }
    Shortcut { sequence: "Ctrl+3"; onActivated: keys.triggered("songs") }
    Shortcut { sequence: "Ctrl+4"; onActivated: keys.triggered("untagged") }
    Shortcut { sequence: "Ctrl+E"; onActivated: keys.triggered("edit") }
    Shortcut { sequences: ["Ctrl+?", "Ctrl+Shift+?"]; onActivated: keys.triggered("shortcuts") }
    Shortcut { sequence: "Escape"; enabled: keys.canEscape; onActivated: keys.triggered("escape") }
}
