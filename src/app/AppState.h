// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The main state of the window, and the one object QML gets from C++.
//
//   AppState
//     ├── tracks ── the library, in import order; grows only at its end
//     │     ▲ importFolder: scanFolder on the pool ─► fresh files become Tracks
//     │     ▲ FolderMonitor.discoveredURLs ─► addDiscoveredFiles ─► banner "N new songs added"
//     │     └─► startArtworkPrefetch (tags on a low-priority pool ─► PrefetchPlan)
//     │         and rebuildSearchIndex
//     ├── Preferences ── didCompleteOnboarding, selectedTheme, recentArtists (QSettings)
//     ├── navigation ── showingHome / Untagged / Artists, selected playlist, artist, album
//     │                 ─► currentScreen; theme popup; search text and activity
//     ├── successMessage ── the banner; every text clears itself after 2-3 s
//     ├── PlaylistStore, FolderMonitor, UpdateChecker, BackgroundFade
//     ├── AudioPlayer ◄── PlaybackController (queue: currentQueue) ──► playingTrack
//     │     finishTick ─► playNext; MprisService follows both (media keys)
//     ├── ArtworkLoader ── picture of the playing song ─► BackgroundFade, MPRIS
//     └── SearchIndex ── rebuilt after every import; artistForTrack
//
// Screens never see this object: Main.qml reads it and hands values and
// callbacks to them. Everything here lives on the GUI thread; file work runs on
// thread pools and comes back through QFuture continuations.

#include "BackgroundFade.h"
#include "KeyPressFilter.h"
#include "LibraryImport.h"
#include "Palette.h"
#include "Preferences.h"
#include "UntaggedSongs.h"
#include "UpdateChecker.h"
#include "library/FolderMonitor.h"
#include "model/PlaylistStore.h"
#include "model/Track.h"
#include "model/TrackMetadata.h"
#include "artwork/ArtworkLoader.h"
#include "artwork/CancelToken.h"
#include "browse/ArtistDetail.h"
#include "browse/ArtistListModel.h"
#include "browse/SearchIndex.h"
#include "browse/SongListModel.h"
#include "playback/AudioPlayer.h"
#include "playback/MprisService.h"
#include "playback/PlaybackController.h"

#include <QFuture>
#include <QFutureWatcher>
#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QThreadPool>
#include <QUrl>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <QCoro/QCoroTask>

#include <optional>

class QJSEngine;
class QQmlEngine;

class AppState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

    // Library
    Q_PROPERTY(int trackCount READ trackCount NOTIFY tracksChanged)
    Q_PROPERTY(bool importing READ isImporting NOTIFY importingChanged)

    // Stored preferences
    Q_PROPERTY(bool didCompleteOnboarding READ didCompleteOnboarding NOTIFY didCompleteOnboardingChanged)
    Q_PROPERTY(QString selectedTheme READ selectedTheme NOTIFY selectedThemeChanged)
    Q_PROPERTY(int currentTheme READ currentThemeIndex NOTIFY selectedThemeChanged)
    Q_PROPERTY(QStringList recentArtists READ recentArtists NOTIFY recentArtistsChanged)

    // Navigation. Strings are empty when nothing is selected.
    Q_PROPERTY(bool showingHome READ showingHome WRITE setShowingHome NOTIFY showingHomeChanged)
    Q_PROPERTY(bool showingArtists READ showingArtists WRITE setShowingArtists NOTIFY showingArtistsChanged)
    Q_PROPERTY(bool showingUntagged READ showingUntagged WRITE setShowingUntagged NOTIFY showingUntaggedChanged)
    Q_PROPERTY(bool showingCreate READ showingCreate WRITE setShowingCreate NOTIFY showingCreateChanged)
    Q_PROPERTY(QString selectedPlaylistID READ selectedPlaylistID WRITE setSelectedPlaylistID NOTIFY
                   selectedPlaylistIDChanged)
    Q_PROPERTY(QString selectedArtistName READ selectedArtistName WRITE setSelectedArtistName NOTIFY
                   selectedArtistNameChanged)
    Q_PROPERTY(QString selectedArtistAlbum READ selectedArtistAlbum WRITE setSelectedArtistAlbum NOTIFY
                   selectedArtistAlbumChanged)
    Q_PROPERTY(Screen currentScreen READ currentScreen NOTIFY currentScreenChanged)
    Q_PROPERTY(bool showThemePicker READ showThemePicker WRITE setShowThemePicker NOTIFY showThemePickerChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    Q_PROPERTY(bool searchActive READ searchActive WRITE setSearchActive NOTIFY searchActiveChanged)

    // The message banner
    Q_PROPERTY(QString successMessage READ successMessage NOTIFY successMessageChanged)
    Q_PROPERTY(MessageAnimation successMessageAnimation READ successMessageAnimation NOTIFY successMessageChanged)

    // Drag of a song towards a playlist; empty when none.
    Q_PROPERTY(QString draggingTrackId READ draggingTrackId NOTIFY draggingTrackChanged)

    // The single-song tag editor: open while a song is set; the tags read for
    // it as {title, artist, album, genre}, absent tags left out.
    Q_PROPERTY(bool tagEditorOpen READ tagEditorOpen NOTIFY tagEditorChanged)
    Q_PROPERTY(QString tagEditorTrackId READ tagEditorTrackId NOTIFY tagEditorChanged)
    Q_PROPERTY(QString tagEditorFileName READ tagEditorFileName NOTIFY tagEditorChanged)
    Q_PROPERTY(QVariantMap tagEditorMeta READ tagEditorMeta NOTIFY tagEditorChanged)

    // Playback, as far as the shell needs it (the banner sits higher while the
    // now-playing bar is shown).
    Q_PROPERTY(bool hasPlayingTrack READ hasPlayingTrack NOTIFY playingTrackChanged)
    Q_PROPERTY(QString playingTrackId READ playingTrackId NOTIFY playingTrackChanged)
    // The file name without its extension.
    Q_PROPERTY(QString playingTrackName READ playingTrackName NOTIFY playingTrackChanged)
    // The picture of the playing song (image://artwork/playing/<n>); empty while none.
    Q_PROPERTY(QUrl playingArtworkSource READ playingArtworkSource NOTIFY playingArtworkChanged)
    Q_PROPERTY(bool isPlaying READ isPlaying NOTIFY isPlayingChanged)
    Q_PROPERTY(bool isShuffled READ isShuffled NOTIFY isShuffledChanged)
    // currentTime and duration, in seconds.
    Q_PROPERTY(AudioPlayer *player READ player CONSTANT)
    Q_PROPERTY(SearchIndex *searchIndex READ searchIndex CONSTANT)

    // The song list: the current queue, its heading and whether it is a playlist.
    Q_PROPERTY(SongListModel *queueModel READ queueModel CONSTANT)
    Q_PROPERTY(QString queueTitle READ queueTitle NOTIFY currentQueueChanged)
    Q_PROPERTY(bool showingPlaylist READ showingPlaylist NOTIFY currentQueueChanged)
    // The artists screen: the grid, and the detail of the selected artist
    // when the grid has that artist.
    Q_PROPERTY(ArtistListModel *artists READ artists CONSTANT)
    Q_PROPERTY(ArtistDetail *artistDetail READ artistDetail CONSTANT)
    Q_PROPERTY(bool showingArtistDetail READ showingArtistDetail NOTIFY showingArtistDetailChanged)
    // The untagged-songs screen, read anew each time it is shown.
    Q_PROPERTY(UntaggedSongs *untagged READ untagged CONSTANT)
    // The sidebar's playlists, in the store's order: [{id, name, count}].
    Q_PROPERTY(QVariantList playlists READ playlistList NOTIFY playlistsChanged)

    // The window background picture and its opacity (0...1).
    Q_PROPERTY(QUrl backgroundSource READ backgroundSource NOTIFY backgroundSourceChanged)
    Q_PROPERTY(double backgroundOpacity READ backgroundOpacity NOTIFY backgroundOpacityChanged)

    Q_PROPERTY(UpdateChecker *updateChecker READ updateChecker CONSTANT)
    Q_PROPERTY(QString version READ version CONSTANT)
    // The landscape behind the first-run welcome: TARNWELL_ONBOARDING_IMAGE_URL
    // or the built-in address.
    Q_PROPERTY(QUrl onboardingImageUrl READ onboardingImageUrl CONSTANT)
    // The desktop shows application menus in a global menu bar.
    Q_PROPERTY(bool hasGlobalMenu READ hasGlobalMenu CONSTANT)

public:
    // What the main area shows, in order of precedence.
    enum class Screen { Home, Untagged, Artists, Songs };
    Q_ENUM(Screen)

    // How the banner's text enters.
    enum class MessageAnimation { Default, Spring };
    Q_ENUM(MessageAnimation)

    // How long each banner text stays, in milliseconds.
    static constexpr int discoveredMessageMs = 3000;
    static constexpr int playlistMessageMs = 2000;
    static constexpr int tagsSavedMessageMs = 2500;
    // A drag that was not dropped is forgotten after this long.
    static constexpr int dragResetMs = 5000;

    // Not default-constructible, so that QML asks create() for the instance.
    explicit AppState(QObject *parent);
    // With the playlist store at an explicit file (tests).
    explicit AppState(const QString &playlistFile, QObject *parent = nullptr);
    ~AppState() override;

    // The QML singleton: the instance main() made, or a new one for an engine
    // that has none (Qt Quick tests).
    static AppState *create(QQmlEngine *engine, QJSEngine *);
    static void setInstance(AppState *state);

    // Library ------------------------------------------------------------
    const QList<Track> &tracks() const { return m_tracks; }
    int trackCount() const { return int(m_tracks.size()); }
    bool isImporting() const { return m_importRunning; }
    // A song of the library, or else a copy kept in a playlist.
    std::optional<Track> trackById(const QUuid &id) const;

    PlaylistStore &playlistStore() { return m_playlistStore; }
    FolderMonitor &folderMonitor() { return m_folderMonitor; }
    UpdateChecker *updateChecker() { return &m_updateChecker; }
    static QString version();
    static QUrl onboardingImageUrl();
    static bool hasGlobalMenu();

    // Imports a chosen folder: lists its audio files off the GUI thread, then
    // appends the new ones. Imports run one after another in the order asked.
    Q_INVOKABLE void importFolder(const QUrl &folder);
    void importFolders(const QList<QUrl> &folders);
    // The folder monitor found new files.
    void addDiscoveredFiles(const QList<QUrl> &urls);

    // Preferences --------------------------------------------------------
    bool didCompleteOnboarding() const { return m_preferences.didCompleteOnboarding(); }
    QString selectedTheme() const { return m_preferences.selectedTheme(); }
    // Read from the store at every call, so the stored value always decides.
    AppTheme currentTheme() const { return palette::fromRawValue(selectedTheme()); }
    int currentThemeIndex() const { return int(currentTheme()); }
    QStringList recentArtists() const { return m_recentArtists; }
    // A song by this artist started: it moves to the front of recentArtists.
    void recordRecentArtist(const QString &artist);

    // Navigation ---------------------------------------------------------
    bool showingHome() const { return m_showingHome; }
    bool showingArtists() const { return m_showingArtists; }
    bool showingUntagged() const { return m_showingUntagged; }
    bool showingCreate() const { return m_showingCreate; }
    QString selectedPlaylistID() const;
    QString selectedArtistName() const { return m_selectedArtistName; }
    QString selectedArtistAlbum() const { return m_selectedArtistAlbum; }
    Screen currentScreen() const;
    bool showThemePicker() const { return m_showThemePicker; }
    QString searchText() const { return m_searchText; }
    bool searchActive() const { return m_searchActive; }

    void setShowingHome(bool on);
    void setShowingArtists(bool on);
    void setShowingUntagged(bool on);
    void setShowingCreate(bool on);
    void setSelectedPlaylistID(const QString &id);
    void setSelectedArtistName(const QString &name);
    void setSelectedArtistAlbum(const QString &album);
    void setShowThemePicker(bool on);
    void setSearchText(const QString &text);
    void setSearchActive(bool on);

    Q_INVOKABLE void goHome();
    Q_INVOKABLE void goHomeFromWordMark();
    Q_INVOKABLE void showAllArtists();
    Q_INVOKABLE void openArtist(const QString &artist);
    Q_INVOKABLE void openAlbum(const QString &artist, const QString &album);
    Q_INVOKABLE void dismissSearch();
    // A song chosen in the search dropdown: the search closes, the song plays
    // and the one that played goes to history.
    Q_INVOKABLE void playFromSearch(const QString &trackId);
    // A click anywhere in the content: closes the search, then the theme popup.
    Q_INVOKABLE void dismissPopups();
    Q_INVOKABLE void toggleThemePicker();
    Q_INVOKABLE void selectTheme(int themeIndex);

    // Playlists ----------------------------------------------------------
    Q_INVOKABLE void beginDrag(const QString &trackId);
    void setDraggingTrack(const std::optional<Track> &track);
    QString draggingTrackId() const;
    // Adds the song to the playlist and says so in the banner.
    Q_INVOKABLE void dropOnPlaylist(const QString &trackId, const QString &playlistId);
    void dropOnPlaylist(const Track &track, const QUuid &playlistId);
    Q_INVOKABLE void createPlaylistFromPanel(const QString &name);
    Q_INVOKABLE void cancelCreatePlaylist();

    // Tag editor ---------------------------------------------------------
    Q_INVOKABLE void openTagEditor(const QString &trackId);
    void openTagEditor(const Track &track);
    Q_INVOKABLE void closeTagEditor();
    Q_INVOKABLE void saveSingleTrackTags(const QString &title, const QString &artist, const QString &album,
                                         const QString &trackId);
    bool tagEditorOpen() const { return m_tagEditorTrack.has_value(); }
    QString tagEditorTrackId() const;
    QString tagEditorFileName() const;
    QVariantMap tagEditorMeta() const;

    // Banner -------------------------------------------------------------
    QString successMessage() const { return m_successMessage; }
    MessageAnimation successMessageAnimation() const { return m_messageAnimation; }
    // Shows a text, replacing any other; after `clearAfterMs` whatever text is
    // shown then is cleared (so a newer text can be cut short).
    void showMessage(const QString &text, MessageAnimation animation, int clearAfterMs);

    // Playback -----------------------------------------------------------
    bool hasPlayingTrack() const { return m_playingTrack.has_value(); }
    const std::optional<Track> &playingTrack() const { return m_playingTrack; }
    QString playingTrackId() const;
    QString playingTrackName() const;
    QUrl playingArtworkSource() const { return QUrl(m_artworkLoader.imageSource()); }
    bool isPlaying() const { return m_player.isPlaying(); }
    bool isShuffled() const { return m_controller.isShuffled(); }
    AudioPlayer *player() { return &m_player; }
    PlaybackController &controller() { return m_controller; }
    // The songs next and previous walk through: the selected playlist's, else
    // the library.
    QList<Track> currentQueue() const;

    // A song of the library or of a playlist (by id) starts from the top.
    Q_INVOKABLE void playTrack(const QString &trackId);
    void playTrack(const Track &track);
    Q_INVOKABLE void togglePlayPause();
    Q_INVOKABLE void playNext();
    Q_INVOKABLE void playPrevious();
    Q_INVOKABLE void toggleShuffle();
    // Jumps to that share (0...1) of the song.
    Q_INVOKABLE void seek(double fraction);

    // Media keys and now-playing clients on the session bus (the program
    // calls it; tests without a bus don't).
    bool registerMediaControls();
    MprisService &mpris() { return m_mpris; }

    // Song list and sidebar ---------------------------------------------------
    SongListModel *queueModel() { return &m_queueModel; }
    // The selected playlist's name, else "All Songs".
    QString queueTitle() const;
    bool showingPlaylist() const;
    QVariantList playlistList() const;
    // The sidebar's entries.
    Q_INVOKABLE void showAllSongs();
    Q_INVOKABLE void showUntaggedSongs();
    Q_INVOKABLE void selectPlaylist(const QString &playlistId);

    // Artists -------------------------------------------------------------------
    UntaggedSongs *untagged() { return &m_untagged; }
    ArtistListModel *artists() { return &m_artists; }
    ArtistDetail *artistDetail() { return &m_artistDetail; }
    bool showingArtistDetail() const;
    // Selects an album of the shown artist and plays its first song.
    Q_INVOKABLE void selectAlbum(const QString &album);
    // From an artist back to the grid.
    Q_INVOKABLE void backToArtists();

    // Pictures and search ----------------------------------------------------
    ArtworkLoader &artworkLoader() { return m_artworkLoader; }
    SearchIndex *searchIndex() { return &m_searchIndex; }

    // Background ---------------------------------------------------------
    QUrl backgroundSource() const { return m_background.shownSource(); }
    double backgroundOpacity() const { return m_background.opacity(); }
    BackgroundFade &background() { return m_background; }

    // The key presses of the program's windows pass through this filter
    // (installed on the application by main()).
    KeyPressFilter *keyPressFilter() { return &m_keyPressFilter; }

Q_SIGNALS:
    void tracksChanged();
    // Songs [first, first + count) were appended to tracks.
    void tracksAppended(int first, int count);
    void importingChanged();
    // One import finished; `added` songs were new.
    void folderImported(const QUrl &folder, int added);
    // The tag phase of an artwork prefetch finished with these requests.
    void prefetchPlanned(const QStringList &artists, int albumCount);

    void didCompleteOnboardingChanged();
    void selectedThemeChanged();
    void recentArtistsChanged();

    void showingHomeChanged();
    void showingArtistsChanged();
    void showingUntaggedChanged();
    void showingCreateChanged();
    void selectedPlaylistIDChanged();
    void selectedArtistNameChanged();
    void selectedArtistAlbumChanged();
    void currentScreenChanged();
    void showThemePickerChanged();
    void searchTextChanged();
    void searchActiveChanged();

    void successMessageChanged();
    void draggingTrackChanged();
    void tagEditorChanged();
    void playingTrackChanged();
    void playingArtworkChanged();
    void isPlayingChanged();
    void isShuffledChanged();
    void historyChanged();
    void currentQueueChanged();
    void playlistsChanged();
    void showingArtistDetailChanged();
    void backgroundSourceChanged();
    void backgroundOpacityChanged();

private:
    void connectServices();
    struct ScannedFolder
    {
        QList<QUrl> found;
        // The songs of `found` not in the library when the scan began.
        QList<Track> fresh;
    };
    void appendTracks(const QList<QUrl> &urls);
    void appendTracks(QList<Track> tracks);
    void startNextImport();
    void finishImport(const QUrl &folder, qsizetype found, QList<Track> fresh);
    void startArtworkPrefetch(const QList<Track> &songs);
    void cancelPrefetch();
    void setSuccessMessage(const QString &text, MessageAnimation animation);
    void setPlayingTrack(const std::optional<Track> &track);
    void updateCurrentScreen();
    // Sets a field and signals the change; false when it had that value.
    template<typename T>
    bool assign(T &field, const T &value, void (AppState::*changed)())
    {
        if (field == value)
            return false;
        field = value;
        Q_EMIT(this->*changed)();
        return true;
    }
    void setTagEditor(const std::optional<Track> &track, const std::optional<TrackMetadata> &meta);
    // Song lists show tags read from the files: after a save they read again.
    void forgetFileInfo();

    // The controller reports what one of its operations changed.
    void onPlaybackChanged(unsigned changes);
    void onPlayingTrackChanged();
    void refreshNowPlaying();
    // The space bar toggles playback unless the user is typing; true when the
    // key press was handled.
    bool handleKeyPress(const KeyPressFilter::KeyPress &press);

    void onArtworkImageChanged();
    // Artists first, then albums; the next prefetch cancels these.
    void requestPrefetchPictures(const import::PrefetchPlan &plan);
    QCoro::Task<> fetchPictures(import::PrefetchPlan plan, CancelToken cancel);

    void rebuildSearchIndex();
    // The artist detail follows the selected artist once the grid has loaded.
    void updateArtistDetail();

public:
    std::optional<QString> artistForTrack(const QUuid &trackId) const;
    // Writes title, artist and album into the song's file (absent = remove);
    // true when the file was written. Any thread.
    static bool writeTags(const Track &track, const std::optional<QString> &title,
                          const std::optional<QString> &artist, const std::optional<QString> &album);

private:

    // Services
    Preferences m_preferences;
    PlaylistStore m_playlistStore;
    FolderMonitor m_folderMonitor;
    UpdateChecker m_updateChecker;
    BackgroundFade m_background;
    KeyPressFilter m_keyPressFilter;
    AudioPlayer m_player;
    PlaybackController m_controller;
    MprisService m_mpris;
    ArtworkLoader m_artworkLoader;
    SearchIndex m_searchIndex;
    SongListModel m_queueModel;
    ArtistListModel m_artists;
    ArtistDetail m_artistDetail;
    UntaggedSongs m_untagged;
    CancelToken m_prefetchPictures;

    // Library
    QList<Track> m_tracks;
    QSet<QUrl> m_trackUrls;
    // Counts the appends, so a scan knows whether its view of m_trackUrls is old.
    quint64 m_trackUrlsGeneration = 0;
    QHash<QUuid, qsizetype> m_trackPositions;
    QList<QUrl> m_importQueue;
    bool m_importRunning = false;

    // Artwork prefetch: low-priority threads, at most one prefetch current.
    QThreadPool m_backgroundPool;
    using PrefetchTags = std::pair<std::optional<QString>, std::optional<QString>>;
    QFutureWatcher<PrefetchTags> *m_prefetch = nullptr;

    // Preferences mirrored in memory
    QStringList m_recentArtists;

    // Navigation
    bool m_showingHome = true;
    bool m_showingArtists = false;
    bool m_showingUntagged = false;
    bool m_showingCreate = false;
    std::optional<QUuid> m_selectedPlaylistID;
    QString m_selectedArtistName;
    QString m_selectedArtistAlbum;
    Screen m_currentScreen = Screen::Home;
    bool m_showThemePicker = false;
    QString m_searchText;
    bool m_searchActive = false;

    // Banner, drag, tag editor
    QString m_successMessage;
    MessageAnimation m_messageAnimation = MessageAnimation::Default;
    std::optional<Track> m_draggingTrack;
    std::optional<Track> m_tagEditorTrack;
    std::optional<TrackMetadata> m_tagEditorMeta;
    quint64 m_tagEditorRequest = 0;

    // Playback
    std::optional<Track> m_playingTrack;
};
