// SPDX-License-Identifier: GPL-3.0-or-later
// The library's folders between starts, the playing song's picture and a
// save that fails, on the main state.
import QtQuick
import QtTest
import Tarnwell
import TarnwellTest

TestCase {
    name: "LibraryFolders"

    function texts(urls) {
        return Array.from(urls, String)
    }

    function importOne(names, withImage) {
        const folder = Fixtures.folderOfSongs(names, withImage || false)
        const before = AppState.library.trackCount
        AppState.library.importFolder(folder)
        tryCompare(AppState.library, "trackCount", before + names.length, 20000)
        return folder
    }

    function test_foldersComeBackAtTheNextStartAndCanBeForgotten() {
        const kept = importOne(["one.wav", "two.wav"])
        const dropped = importOne(["three.wav"])
        compare(texts(AppState.preferences.libraryFolders), texts([kept, dropped]))

        AppState.forgetLibraryFolder(dropped)
        compare(AppState.library.trackCount, 2)
        compare(Fixtures.songAt(AppState.library, dropped + "/three.wav"), "")
        compare(texts(AppState.preferences.libraryFolders), texts([kept]))

        const next = Fixtures.secondLaunch()
        compare(next.library.trackCount, 0)
        next.importLibraryFolders()
        tryCompare(next.library, "trackCount", 2, 20000)
        tryCompare(next.library, "importing", false)
        // Songs found at start are no news.
        compare(next.banner.text, "")
        verify(Fixtures.songAt(next.library, kept + "/one.wav") !== "")
        AppState.forgetLibraryFolder(kept)
        compare(AppState.library.trackCount, 0)
    }

    function test_aSongWithoutAPictureShowsNone() {
        const pictured = importOne(["pictured.wav"], true)
        const bare = importOne(["bare.wav"])
        const nowPlaying = AppState.nowPlaying
        nowPlaying.play(Fixtures.songAt(AppState.library, pictured + "/pictured.wav"))
        tryVerify(() => nowPlaying.pictureSource.toString() !== "", 20000)
        nowPlaying.play(Fixtures.songAt(AppState.library, bare + "/bare.wav"))
        tryCompare(nowPlaying, "trackName", "bare")
        tryVerify(() => nowPlaying.pictureSource.toString() === "", 20000)
        nowPlaying.togglePlayPause()
        AppState.forgetLibraryFolder(pictured)
        AppState.forgetLibraryFolder(bare)
    }

    function test_aFailedSaveKeepsTheEditorAndSaysWhy() {
        const folder = importOne(["locked.wav"])
        verify(Fixtures.makeReadOnly(folder + "/locked.wav"))
        const editor = AppState.tagEditor
        editor.open(Fixtures.songAt(AppState.library, folder + "/locked.wav"))
        tryCompare(editor, "isOpen", true)
        editor.save("New Title", "", "")
        tryCompare(editor, "error", "Could not save 'locked.wav': the file is read-only", 20000)
        verify(editor.isOpen)
        editor.close()
        compare(editor.error, "")
        AppState.forgetLibraryFolder(folder)
    }
}
