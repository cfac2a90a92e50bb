// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The main state of the window: it owns the services and the rooms below,
// wires them to each other, and is what Main.qml reads as the AppState
// singleton. Each room does one job and works without a window.
//
//   library ── songs in import order; imports, watched folders
//     ├─ tracksAppended ─► indexing (tags read once, search index, pictures)
//     │     └─ songsIndexed ─► the artists screen, when shown, groups again
//     ├─ folderImported / folderForgotten ─► preferences (library folders)
//     └─ filesDiscovered ─► banner "N new songs added"
//   navigation ── the one screen ─► artistBrowser.load or untagged.load
//   queue ── the selected playlist's songs, else the library ─► song list
//   nowPlaying ── controller ◄─► player; MPRIS; picture ─► background
//   playlists, tagEditor, untagged ── each with its banner; a save makes
//     the saved songs' tags be read again
//
// Screens never see this object: Main.qml hands them values and rooms and
// turns their signals into calls. Everything here lives on the GUI thread;
// file work runs on thread pools and comes back through continuations.

#include "ArtistBrowser.h"
#include "BackgroundFade.h"
#include "Banner.h"
#include "CurrentQueue.h"
#include "KeyPressFilter.h"
#include "Library.h"
#include "Navigation.h"
#include "NowPlaying.h"
#include "Playlists.h"
#include "Preferences.h"
#include "SongIndexing.h"
#include "TagEditorSession.h"
#include "UntaggedSongs.h"
#include "UpdateChecker.h"
#include "artwork/ArtworkLoader.h"
#include "library/FolderMonitor.h"
#include "model/PlaylistStore.h"
#include "playback/AudioPlayer.h"
#include "playback/MprisService.h"
#include "playback/PlaybackController.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

class AppState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

    Q_PROPERTY(Library *library READ library CONSTANT)
    Q_PROPERTY(Navigation *navigation READ navigation CONSTANT)
    Q_PROPERTY(CurrentQueue *queue READ queue CONSTANT)
    Q_PROPERTY(NowPlaying *nowPlaying READ nowPlaying CONSTANT)
    Q_PROPERTY(Playlists *playlists READ playlists CONSTANT)
    Q_PROPERTY(TagEditorSession *tagEditor READ tagEditor CONSTANT)
    Q_PROPERTY(UntaggedSongs *untagged READ untagged CONSTANT)
    Q_PROPERTY(ArtistBrowser *artistBrowser READ artistBrowser CONSTANT)
    Q_PROPERTY(Preferences *preferences READ preferences CONSTANT)
    Q_PROPERTY(Banner *banner READ banner CONSTANT)
    Q_PROPERTY(SearchIndex *searchIndex READ searchIndex CONSTANT)
    Q_PROPERTY(UpdateChecker *updateChecker READ updateChecker CONSTANT)

public:
    // How long "N new songs added" stays, in milliseconds.
    static constexpr int discoveredMessageMs = 3000;

    // Not default-constructible, so that QML asks create() for the instance.
    explicit AppState(QObject *parent);
    // With the playlist store at an explicit file (tests).
    explicit AppState(const QString &playlistFile, QObject *parent = nullptr);
    ~AppState() override;

    // The QML singleton: the instance main() made, or a new one for an engine
    // that has none (Qt Quick tests).
    static AppState *create(QQmlEngine *engine, QJSEngine *);
    static void setInstance(AppState *state);

    Library *library() { return &m_library; }
    Navigation *navigation() { return &m_navigation; }
    CurrentQueue *queue() { return &m_queue; }
    NowPlaying *nowPlaying() { return &m_nowPlaying; }
    Playlists *playlists() { return &m_playlists; }
    TagEditorSession *tagEditor() { return &m_tagEditor; }
    UntaggedSongs *untagged() { return &m_untagged; }
    ArtistBrowser *artistBrowser() { return &m_artistBrowser; }
    Preferences *preferences() { return &m_preferences; }
    Banner *banner() { return &m_banner; }
    SearchIndex *searchIndex() { return m_indexing.searchIndex(); }
    UpdateChecker *updateChecker() { return &m_updateChecker; }
    ArtworkPrefetch &artworkPrefetch() { return m_indexing.prefetch(); }
    ArtworkLoader &artworkLoader() { return m_artworkLoader; }
    PlaylistStore &playlistStore() { return m_playlistStore; }
    FolderMonitor &folderMonitor() { return m_folderMonitor; }
    PlaybackController &controller() { return m_controller; }
    MprisService &mpris() { return m_mpris; }
    // The key presses of the program's windows pass through this filter
    // (installed on the application by main()).
    KeyPressFilter *keyPressFilter() { return &m_keyPressFilter; }

    // A song of the library, or else a copy kept in a playlist.
    std::optional<Track> findSong(const QString &trackId) const;

    // A song chosen in the search dropdown: the search closes, the song plays
    // and the one that played goes to history.
    Q_INVOKABLE void playFromSearch(const QString &trackId);
    // A row of the theme popup: stored, and the popup closes.
    Q_INVOKABLE void selectTheme(int themeIndex);

    // At start: the folders of the library imported again, quietly.
    Q_INVOKABLE void importLibraryFolders();
    // "Music Folders…": the folder leaves the library and is not imported again.
    Q_INVOKABLE void forgetLibraryFolder(const QUrl &folder);

private:
    void connectRooms();
    void groupShownScreen();

    // Services
    PlaylistStore m_playlistStore;
    FolderMonitor m_folderMonitor;
    UpdateChecker m_updateChecker;
    BackgroundFade m_background;
    AudioPlayer m_player;
    PlaybackController m_controller;
    MprisService m_mpris;
    ArtworkLoader m_artworkLoader;
    SongIndexing m_indexing;

    // Rooms
    Preferences m_preferences;
    Banner m_banner;
    Library m_library;
    Navigation m_navigation;
    CurrentQueue m_queue;
    NowPlaying m_nowPlaying;
    Playlists m_playlists;
    TagEditorSession m_tagEditor;
    UntaggedSongs m_untagged;
    ArtistBrowser m_artistBrowser;
    KeyPressFilter m_keyPressFilter;
};
