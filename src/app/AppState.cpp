// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppState.h"

#include "model/Log.h"
#include "model/TextUtil.h"
#include "playback/SpaceBar.h"
#include "tags/TagReader.h"
#include "tags/TagWriter.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QQmlEngine>
#include <QTimer>
#include <QtConcurrent>

namespace {

AppState *s_instance = nullptr;

std::optional<QUuid> uuidFrom(const QString &text)
{
    return trackjson::parseUuid(text);
}

// A text field's value for a tag: empty means remove the tag.
std::optional<QString> tagValue(const QString &text)
{
    return text.isEmpty() ? std::nullopt : std::optional<QString>(text);
}

} // namespace

AppState::AppState(QObject *parent)
    : AppState(PlaylistStore::defaultSaveFile(), parent)
{
}

AppState::AppState(const QString &playlistFile, QObject *parent)
    : QObject(parent)
    , m_playlistStore(playlistFile)
    , m_keyPressFilter([this](const KeyPressFilter::KeyPress &press) { return handleKeyPress(press); })
    , m_controller(m_player, [this] { return currentQueue(); })
    , m_mpris(m_player, m_controller)
    , m_recentArtists(m_preferences.recentArtists())
{
    // Prefetch work yields to everything else: the GUI thread, the index build
    // and tag reads for what is on screen.
    m_backgroundPool.setThreadPriority(QThread::LowPriority);
    m_backgroundPool.setMaxThreadCount(std::max(1, QThread::idealThreadCount() - 1));
    connectServices();
}

AppState::~AppState()
{
    m_prefetchPictures.cancel();
    m_mpris.unregisterFromBus();
    cancelPrefetch();
    m_backgroundPool.clear();
    m_backgroundPool.waitForDone();
    if (s_instance == this)
        s_instance = nullptr;
}

AppState *AppState::create(QQmlEngine *engine, QJSEngine *)
{
    if (s_instance) {
        QQmlEngine::setObjectOwnership(s_instance, QQmlEngine::CppOwnership);
        return s_instance;
    }
    // An engine without a program around it (a Qt Quick test): it owns this one.
    return new AppState(engine);
}

void AppState::setInstance(AppState *state)
{
    s_instance = state;
}

QUrl AppState::onboardingImageUrl()
{
    const QByteArray fromEnv = qgetenv("TARNWELL_ONBOARDING_IMAGE_URL");
    if (!fromEnv.isEmpty())
        return QUrl(QString::fromUtf8(fromEnv));
    return QUrl(QStringLiteral(
        "https://images.unsplash.com/photo-1506905925346-21bda4d32df4?w=1920&q=80&fm=jpg"));
}

QString AppState::version()
{
    return QStringLiteral(TARNWELL_VERSION);
}

bool AppState::hasGlobalMenu()
{
    // Qt exports menus to a global menu bar through this registrar.
    static const bool available = [] {
        QDBusConnectionInterface *bus = QDBusConnection::sessionBus().interface();
        return bus && bus->isServiceRegistered(QStringLiteral("com.canonical.AppMenu.Registrar")).value();
    }();
    return available;
}

void AppState::connectServices()
{
    connect(&m_folderMonitor, &FolderMonitor::discoveredURLsChanged, this,
            [this] { addDiscoveredFiles(m_folderMonitor.discoveredURLs()); });
    connect(&m_background, &BackgroundFade::shownSourceChanged, this, &AppState::backgroundSourceChanged);
    connect(&m_background, &BackgroundFade::opacityChanged, this, &AppState::backgroundOpacityChanged);
    m_controller.setChangeListener([this](unsigned changes) { onPlaybackChanged(changes); });
    connect(&m_player, &AudioPlayer::finishTickChanged, this, &AppState::playNext);
    connect(&m_player, &AudioPlayer::isPlayingChanged, this, [this] {
        Q_EMIT isPlayingChanged();
        refreshNowPlaying();
    });
    connect(&m_artworkLoader, &ArtworkLoader::imageChanged, this, &AppState::onArtworkImageChanged);

    // The queue follows the library, the selection and the playlists.
    connect(this, &AppState::tracksChanged, this, &AppState::currentQueueChanged);
    connect(this, &AppState::selectedPlaylistIDChanged, this, &AppState::currentQueueChanged);
    connect(&m_playlistStore, &PlaylistStore::playlistsChanged, this, &AppState::currentQueueChanged);
    connect(&m_playlistStore, &PlaylistStore::playlistsChanged, this, &AppState::playlistsChanged);
    connect(this, &AppState::currentQueueChanged, this, [this] { m_queueModel.setTracks(currentQueue()); });

    // The artists screen groups the library anew each time it is opened.
    connect(this, &AppState::currentScreenChanged, this, [this] {
        if (m_currentScreen == Screen::Artists)
            m_artists.load(m_tracks);
        else if (m_currentScreen == Screen::Untagged)
            m_untagged.load(m_tracks);
    });
    connect(&m_artists, &ArtistListModel::loaded, this, &AppState::updateArtistDetail);
    connect(&m_artists, &ArtistListModel::isLoadingChanged, this, &AppState::showingArtistDetailChanged);
    connect(this, &AppState::selectedArtistNameChanged, this, &AppState::updateArtistDetail);
    connect(this, &AppState::selectedArtistAlbumChanged, this,
            [this] { m_artistDetail.setSelectedAlbum(m_selectedArtistAlbum); });
    connect(&m_artistDetail, &ArtistDetail::selectedAlbumChanged, this,
            [this] {
                // A load starts from no album; the selection kept here is put back when it ends.
                if (!m_artistDetail.isLoading())
                    setSelectedArtistAlbum(m_artistDetail.selectedAlbum());
            });
    connect(&m_artistDetail, &ArtistDetail::loaded, this,
            [this] { m_artistDetail.setSelectedAlbum(m_selectedArtistAlbum); });
    connect(&m_untagged, &UntaggedSongs::saveFinished, this, &AppState::forgetFileInfo);

    // Activating the search closes the theme popup.
    connect(this, &AppState::searchActiveChanged, this, [this] {
        if (m_searchActive)
            setShowThemePicker(false);
    });
}

// ---- Library ----------------------------------------------------------------

std::optional<Track> AppState::trackById(const QUuid &id) const
{
    const auto it = m_trackPositions.constFind(id);
    if (it != m_trackPositions.cend())
        return m_tracks.at(*it);
    for (const Playlist &p : m_playlistStore.playlists()) {
        for (const Track &t : p.tracks) {
            if (t.id == id)
                return t;
        }
    }
    return std::nullopt;
}

void AppState::appendTracks(const QList<QUrl> &urls)
{
    QList<Track> tracks;
    tracks.reserve(urls.size());
    for (const QUrl &url : urls)
        tracks.append(Track::create(url));
    appendTracks(std::move(tracks));
}

void AppState::appendTracks(QList<Track> tracks)
{
    if (tracks.isEmpty())
        return;
    const auto first = int(m_tracks.size());
    m_tracks.reserve(m_tracks.size() + tracks.size());
    m_trackPositions.reserve(m_tracks.size() + tracks.size());
    m_trackUrls.reserve(m_tracks.size() + tracks.size());
    ++m_trackUrlsGeneration;
    for (Track &track : tracks) {
        m_trackPositions.insert(track.id, m_tracks.size());
        m_trackUrls.insert(track.url);
        m_tracks.append(std::move(track));
    }
    Q_EMIT tracksAppended(first, int(tracks.size()));
    Q_EMIT tracksChanged();
}

void AppState::importFolder(const QUrl &folder)
{
    if (!folder.isLocalFile()) {
        qCWarning(lcApp) << "not a local folder, not imported:" << folder;
        return;
    }
    m_importQueue.append(folder);
    startNextImport();
}

void AppState::importFolders(const QList<QUrl> &folders)
{
    for (const QUrl &folder : folders)
        importFolder(folder);
}

void AppState::startNextImport()
{
    if (m_importRunning || m_importQueue.isEmpty())
        return;
    const QUrl folder = m_importQueue.takeFirst();
    m_importRunning = true;
    Q_EMIT importingChanged();
    // A large folder takes a while to list, and ten thousand new songs take a
    // while to sort out and name: the window stays responsive meanwhile.
    const quint64 knownGeneration = m_trackUrlsGeneration;
    QtConcurrent::run([folder, known = m_trackUrls] {
        ScannedFolder scanned;
        scanned.found = scanFolder(folder);
        const QList<QUrl> fresh = import::freshFiles(scanned.found, known);
        scanned.fresh.reserve(fresh.size());
        for (const QUrl &url : fresh)
            scanned.fresh.append(Track::create(url));
        return scanned;
    }).then(this, [this, folder, knownGeneration](ScannedFolder scanned) {
        // Songs the folder monitor added meanwhile are not added twice.
        if (knownGeneration != m_trackUrlsGeneration)
            scanned.fresh.removeIf([this](const Track &t) { return m_trackUrls.contains(t.url); });
        finishImport(folder, scanned.found.size(), std::move(scanned.fresh));
    });
}

void AppState::finishImport(const QUrl &folder, qsizetype found, QList<Track> fresh)
{
    const auto added = fresh.size();
    appendTracks(std::move(fresh));
    if (!m_tracks.isEmpty()) {
        if (!m_preferences.didCompleteOnboarding()) {
            m_preferences.setDidCompleteOnboarding(true);
            Q_EMIT didCompleteOnboardingChanged();
        }
        startArtworkPrefetch(m_tracks);
        rebuildSearchIndex();
    }
    m_folderMonitor.watch(folder, m_trackUrls);
    qCInfo(lcApp).nospace() << "imported " << folder.toLocalFile() << ": " << found << " audio files, " << added
                            << " new";

    m_importRunning = false;
    Q_EMIT folderImported(folder, int(added));
    if (m_importQueue.isEmpty())
        Q_EMIT importingChanged();
    else
        startNextImport();
}

void AppState::addDiscoveredFiles(const QList<QUrl> &urls)
{
    if (urls.isEmpty())
        return;
    const QList<QUrl> fresh = import::freshFiles(urls, m_trackUrls);
    if (fresh.isEmpty()) {
        m_folderMonitor.clearDiscoveredURLs();
        return;
    }
    const auto first = m_tracks.size();
    appendTracks(fresh);
    m_folderMonitor.setKnownURLs(m_trackUrls);
    m_folderMonitor.clearDiscoveredURLs();
    startArtworkPrefetch(m_tracks.mid(first));
    rebuildSearchIndex();
    showMessage(import::discoveredMessage(fresh.size()), MessageAnimation::Default, discoveredMessageMs);
}

void AppState::startArtworkPrefetch(const QList<Track> &songs)
{
    cancelPrefetch();
    QStringList paths;
    paths.reserve(songs.size());
    for (const Track &song : songs)
        paths.append(song.path());

    // A watcher rather than QFuture::then(): this Qt frees a mapped future's
    // state under a continuation that still refers to it.
    m_prefetch = new QFutureWatcher<PrefetchTags>(this);
    QFutureWatcher<PrefetchTags> *watcher = m_prefetch;
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher] {
        watcher->deleteLater();
        if (watcher != m_prefetch || watcher->isCanceled())
            return;
        m_prefetch = nullptr;
        import::PrefetchPlan plan;
        for (const PrefetchTags &tags : watcher->future().results())
            plan.add(tags.first, tags.second);
        qCDebug(lcApp).nospace() << "artwork prefetch: " << plan.artists().size() << " artists, "
                                 << plan.albums().size() << " albums";
        Q_EMIT prefetchPlanned(plan.artists(), int(plan.albums().size()));
        requestPrefetchPictures(plan);
    });
    watcher->setFuture(QtConcurrent::mapped(&m_backgroundPool, std::move(paths), [](const QString &path) {
        const TrackMetadata meta = readMetadata(path);
        return PrefetchTags{meta.artist, meta.album};
    }));
}

void AppState::cancelPrefetch()
{
    if (!m_prefetch)
        return;
    m_prefetch->cancel();
    m_prefetch->deleteLater();
    m_prefetch = nullptr;
}

// ---- Preferences --------------------------------------------------------------

void AppState::recordRecentArtist(const QString &artist)
{
    if (artist.isEmpty())
        return;
    QStringList updated = Preferences::withRecentArtist(m_recentArtists, artist);
    m_preferences.setRecentArtists(updated);
    if (updated == m_recentArtists)
        return;
    m_recentArtists = std::move(updated);
    Q_EMIT recentArtistsChanged();
}

void AppState::selectTheme(int themeIndex)
{
    const QList<AppTheme> themes = palette::allThemes();
    if (themeIndex < 0 || themeIndex >= themes.size())
        return;
    const QString raw = palette::rawValue(themes[themeIndex]);
    const bool changed = raw != m_preferences.selectedTheme();
    m_preferences.setSelectedTheme(raw);
    if (changed)
        Q_EMIT selectedThemeChanged();
    setShowThemePicker(false);
}

// ---- Navigation ---------------------------------------------------------------

QString AppState::selectedPlaylistID() const
{
    return m_selectedPlaylistID ? trackjson::uuidText(*m_selectedPlaylistID) : QString();
}

AppState::Screen AppState::currentScreen() const
{
    return m_currentScreen;
}

void AppState::updateCurrentScreen()
{
    const Screen screen = m_showingHome ? Screen::Home
        : m_showingUntagged             ? Screen::Untagged
        : m_showingArtists              ? Screen::Artists
                                        : Screen::Songs;
    if (screen == m_currentScreen)
        return;
    m_currentScreen = screen;
    qCDebug(lcApp) << "screen:" << screen;
    Q_EMIT currentScreenChanged();
}

void AppState::setShowingHome(bool on)
{
    if (assign(m_showingHome, on, &AppState::showingHomeChanged))
        updateCurrentScreen();
}

void AppState::setShowingArtists(bool on)
{
    if (assign(m_showingArtists, on, &AppState::showingArtistsChanged))
        updateCurrentScreen();
}

void AppState::setShowingUntagged(bool on)
{
    if (assign(m_showingUntagged, on, &AppState::showingUntaggedChanged))
        updateCurrentScreen();
}

void AppState::setShowingCreate(bool on)
{
    assign(m_showingCreate, on, &AppState::showingCreateChanged);
}

void AppState::setSelectedPlaylistID(const QString &id)
{
    const std::optional<QUuid> parsed = uuidFrom(id);
    if (!parsed && !id.isEmpty())
        qCWarning(lcApp) << "not a playlist identifier:" << id;
    if (parsed == m_selectedPlaylistID)
        return;
    m_selectedPlaylistID = parsed;
    Q_EMIT selectedPlaylistIDChanged();
}

void AppState::setSelectedArtistName(const QString &name)
{
    assign(m_selectedArtistName, name, &AppState::selectedArtistNameChanged);
}

void AppState::setSelectedArtistAlbum(const QString &album)
{
    assign(m_selectedArtistAlbum, album, &AppState::selectedArtistAlbumChanged);
}

void AppState::setShowThemePicker(bool on)
{
    assign(m_showThemePicker, on, &AppState::showThemePickerChanged);
}

void AppState::setSearchText(const QString &text)
{
    assign(m_searchText, text, &AppState::searchTextChanged);
}

void AppState::setSearchActive(bool on)
{
    assign(m_searchActive, on, &AppState::searchActiveChanged);
}

void AppState::goHome()
{
    goHomeFromWordMark();
    setShowThemePicker(false);
}

void AppState::goHomeFromWordMark()
{
    setShowingHome(true);
    setShowingArtists(false);
    setShowingUntagged(false);
    setSelectedPlaylistID({});
    setSelectedArtistName({});
    setSelectedArtistAlbum({});
}

void AppState::showAllArtists()
{
    setShowingHome(false);
    setShowingArtists(true);
    setShowingUntagged(false);
    setSelectedPlaylistID({});
    setSelectedArtistName({});
}

void AppState::openArtist(const QString &artist)
{
    dismissSearch();
    setShowingHome(false);
    setShowingArtists(true);
    setShowingUntagged(false);
    setSelectedPlaylistID({});
    setSelectedArtistName(artist);
    setSelectedArtistAlbum({});
}

void AppState::openAlbum(const QString &artist, const QString &album)
{
    dismissSearch();
    setShowingHome(false);
    setShowingArtists(true);
    setShowingUntagged(false);
    setSelectedPlaylistID({});
    setSelectedArtistName(artist);
    setSelectedArtistAlbum(album);
}

void AppState::dismissSearch()
{
    setSearchText(QString());
    setSearchActive(false);
}

void AppState::playFromSearch(const QString &trackId)
{
    dismissSearch();
    playTrack(trackId);
}

void AppState::dismissPopups()
{
    if (m_searchActive)
        dismissSearch();
    if (m_showThemePicker)
        setShowThemePicker(false);
}

void AppState::toggleThemePicker()
{
    setShowThemePicker(!m_showThemePicker);
}

// ---- Playlists ----------------------------------------------------------------

QString AppState::draggingTrackId() const
{
    return m_draggingTrack ? trackjson::uuidText(m_draggingTrack->id) : QString();
}

void AppState::beginDrag(const QString &trackId)
{
    const std::optional<QUuid> id = uuidFrom(trackId);
    if (!id)
        return;
    if (const std::optional<Track> track = trackById(*id))
        setDraggingTrack(track);
}

void AppState::setDraggingTrack(const std::optional<Track> &track)
{
    if (track == m_draggingTrack)
        return;
    m_draggingTrack = track;
    Q_EMIT draggingTrackChanged();
    // Never cancelled: it forgets whatever drag is current when it fires.
    if (track)
        QTimer::singleShot(dragResetMs, this, [this] { setDraggingTrack(std::nullopt); });
}

void AppState::dropOnPlaylist(const QString &trackId, const QString &playlistId)
{
    const std::optional<QUuid> tid = uuidFrom(trackId);
    const std::optional<QUuid> pid = uuidFrom(playlistId);
    const std::optional<Track> track = tid ? trackById(*tid) : std::nullopt;
    if (!track) {
        setDraggingTrack(std::nullopt);
        return;
    }
    dropOnPlaylist(*track, pid.value_or(QUuid()));
}

void AppState::dropOnPlaylist(const Track &track, const QUuid &playlistId)
{
    setDraggingTrack(std::nullopt);
    const bool added = m_playlistStore.addTrack(track, playlistId);
    const Playlist *playlist = m_playlistStore.playlist(playlistId);
    const QString name = playlist ? playlist->name : QStringLiteral("playlist");
    showMessage((added ? QStringLiteral("Added to ") : QStringLiteral("Already in ")) + name,
                MessageAnimation::Spring, playlistMessageMs);
}

void AppState::createPlaylistFromPanel(const QString &name)
{
    m_playlistStore.createPlaylist(name);
    setShowingCreate(false);
}

void AppState::cancelCreatePlaylist()
{
    setShowingCreate(false);
}

// ---- Tag editor ---------------------------------------------------------------

void AppState::openTagEditor(const QString &trackId)
{
    const std::optional<QUuid> id = uuidFrom(trackId);
    if (const std::optional<Track> track = id ? trackById(*id) : std::nullopt)
        openTagEditor(*track);
}

void AppState::openTagEditor(const Track &track)
{
    // The tags are read on the pool; only the latest request opens the editor.
    const quint64 request = ++m_tagEditorRequest;
    QtConcurrent::run([path = track.path()] { return readMetadata(path); })
        .then(this, [this, request, track](const TrackMetadata &meta) {
            if (request == m_tagEditorRequest)
                setTagEditor(track, meta);
        });
}

void AppState::closeTagEditor()
{
    ++m_tagEditorRequest;
    setTagEditor(std::nullopt, std::nullopt);
}

void AppState::setTagEditor(const std::optional<Track> &track, const std::optional<TrackMetadata> &meta)
{
    const bool same = track == m_tagEditorTrack && !meta && !m_tagEditorMeta;
    m_tagEditorTrack = track;
    m_tagEditorMeta = meta;
    if (!same)
        Q_EMIT tagEditorChanged();
}

void AppState::saveSingleTrackTags(const QString &title, const QString &artist, const QString &album,
                                   const QString &trackId)
{
    const std::optional<QUuid> id = uuidFrom(trackId);
    const std::optional<Track> track = id ? trackById(*id) : std::nullopt;
    if (!track) {
        closeTagEditor();
        return;
    }
    QtConcurrent::run(&AppState::writeTags, *track, tagValue(title), tagValue(artist), tagValue(album))
        .then(this, [this](bool written) {
            closeTagEditor();
            if (!written)
                return;
            showMessage(QStringLiteral("Tags saved"), MessageAnimation::Default, tagsSavedMessageMs);
            forgetFileInfo();
        });
}

void AppState::forgetFileInfo()
{
    m_queueModel.forgetFileInfo();
    m_artistDetail.tracks()->forgetFileInfo();
}

QString AppState::tagEditorTrackId() const
{
    return m_tagEditorTrack ? trackjson::uuidText(m_tagEditorTrack->id) : QString();
}

QString AppState::tagEditorFileName() const
{
    return m_tagEditorTrack ? text::displayName(m_tagEditorTrack->path()) : QString();
}

QVariantMap AppState::tagEditorMeta() const
{
    QVariantMap map;
    if (!m_tagEditorMeta)
        return map;
    const auto put = [&map](const char *key, const std::optional<QString> &value) {
        if (value)
            map.insert(QLatin1String(key), *value);
    };
    put("title", m_tagEditorMeta->title);
    put("artist", m_tagEditorMeta->artist);
    put("album", m_tagEditorMeta->album);
    put("genre", m_tagEditorMeta->genre);
    return map;
}

// ---- Banner -------------------------------------------------------------------

void AppState::showMessage(const QString &text, MessageAnimation animation, int clearAfterMs)
{
    qCDebug(lcApp) << "banner:" << text;
    setSuccessMessage(text, animation);
    // Never cancelled, and it clears whatever is shown when it fires.
    QTimer::singleShot(clearAfterMs, this, [this] { setSuccessMessage(QString(), MessageAnimation::Default); });
}

void AppState::setSuccessMessage(const QString &text, MessageAnimation animation)
{
    if (text == m_successMessage)
        return;
    m_successMessage = text;
    // A clearing keeps the animation the text came with.
    if (!text.isEmpty())
        m_messageAnimation = animation;
    Q_EMIT successMessageChanged();
}

// ---- Playback -----------------------------------------------------------------

void AppState::setPlayingTrack(const std::optional<Track> &track)
{
    if (track == m_playingTrack)
        return;
    m_playingTrack = track;
    Q_EMIT playingTrackChanged();
    onPlayingTrackChanged();
}

QString AppState::playingTrackId() const
{
    return m_playingTrack ? trackjson::uuidText(m_playingTrack->id) : QString();
}

QString AppState::playingTrackName() const
{
    return m_playingTrack ? text::displayName(m_playingTrack->path()) : QString();
}

QList<Track> AppState::currentQueue() const
{
    return playbackQueue(m_selectedPlaylistID, m_playlistStore.playlists(), m_tracks);
}

void AppState::playTrack(const QString &trackId)
{
    const std::optional<QUuid> id = uuidFrom(trackId);
    if (const std::optional<Track> track = id ? trackById(*id) : std::nullopt)
        playTrack(*track);
}

void AppState::playTrack(const Track &track)
{
    m_controller.playTrack(track);
}

void AppState::togglePlayPause()
{
    m_controller.togglePlayPause();
}

void AppState::playNext()
{
    m_controller.playNext();
}

void AppState::playPrevious()
{
    m_controller.playPrevious();
}

void AppState::toggleShuffle()
{
    m_controller.toggleShuffle();
}

void AppState::seek(double fraction)
{
    m_controller.seek(fraction);
}

bool AppState::registerMediaControls()
{
    return m_mpris.registerOnBus();
}

void AppState::onPlaybackChanged(unsigned changes)
{
    if (changes & PlaybackController::ShuffleChanged) {
        Q_EMIT isShuffledChanged();
        m_mpris.updateNowPlaying();
    }
    if (changes & PlaybackController::HistoryChanged)
        Q_EMIT historyChanged();
    if (changes & PlaybackController::PlayingTrackChanged)
        setPlayingTrack(m_controller.playingTrack());
}

void AppState::onPlayingTrackChanged()
{
    refreshNowPlaying();
    if (m_playingTrack) {
        m_artworkLoader.load(*m_playingTrack);
        if (const std::optional<QString> artist = artistForTrack(m_playingTrack->id))
            recordRecentArtist(*artist);
    } else {
        m_artworkLoader.clear();
    }
}

void AppState::refreshNowPlaying()
{
    m_mpris.updateNowPlaying();
}

bool AppState::handleKeyPress(const KeyPressFilter::KeyPress &press)
{
    if (!spaceBarTogglesPlayback(press.key, press.modifiers, press.textInputFocused))
        return false;
    // Holding the bar down toggles once.
    if (!press.autoRepeat)
        togglePlayPause();
    return true;
}

void AppState::onArtworkImageChanged()
{
    m_background.show(playingArtworkSource());
    m_mpris.setArtwork(m_artworkLoader.image().value_or(QImage()));
    Q_EMIT playingArtworkChanged();
}

// ---- Song list and sidebar ----------------------------------------------------

QString AppState::queueTitle() const
{
    const Playlist *playlist = m_selectedPlaylistID ? m_playlistStore.playlist(*m_selectedPlaylistID) : nullptr;
    return playlist ? playlist->name : QStringLiteral("All Songs");
}

bool AppState::showingPlaylist() const
{
    return m_selectedPlaylistID && m_playlistStore.playlist(*m_selectedPlaylistID);
}

QVariantList AppState::playlistList() const
{
    QVariantList list;
    for (const Playlist &p : m_playlistStore.playlists()) {
        list.append(QVariantMap{{QStringLiteral("id"), trackjson::uuidText(p.id)},
                                {QStringLiteral("name"), p.name},
                                {QStringLiteral("count"), int(p.tracks.size())}});
    }
    return list;
}

void AppState::showAllSongs()
{
    setSelectedPlaylistID({});
    setShowingArtists(false);
    setShowingUntagged(false);
    setShowingHome(false);
}

void AppState::showUntaggedSongs()
{
    setShowingUntagged(true);
    setShowingArtists(false);
    setShowingHome(false);
    setSelectedPlaylistID({});
}

void AppState::selectPlaylist(const QString &playlistId)
{
    const std::optional<QUuid> id = uuidFrom(playlistId);
    if (const Playlist *playlist = id ? m_playlistStore.playlist(*id) : nullptr)
        qCDebug(lcApp).nospace() << "playlist: " << playlist->name << ", " << playlist->tracks.size() << " songs";
    setSelectedPlaylistID(playlistId);
    setShowingArtists(false);
    setShowingUntagged(false);
    setShowingHome(false);
}

// ---- Artists ------------------------------------------------------------------

bool AppState::showingArtistDetail() const
{
    return !m_artists.isLoading() && m_artists.indexOf(m_selectedArtistName) >= 0;
}

void AppState::updateArtistDetail()
{
    Q_EMIT showingArtistDetailChanged();
    if (m_artists.isLoading() || m_artists.indexOf(m_selectedArtistName) < 0)
        return;
    qCDebug(lcApp).nospace() << "artist: " << m_selectedArtistName << ", album: " << m_selectedArtistAlbum;
    m_artistDetail.load(m_selectedArtistName, m_artists.tracksOf(m_selectedArtistName));
}

void AppState::selectAlbum(const QString &album)
{
    if (const std::optional<Track> first = m_artistDetail.selectAlbum(album))
        playTrack(*first);
}

void AppState::backToArtists()
{
    setSelectedArtistName({});
    setSelectedArtistAlbum({});
}

// ---- Pictures and search ------------------------------------------------------

void AppState::requestPrefetchPictures(const import::PrefetchPlan &plan)
{
    m_prefetchPictures.cancel();
    m_prefetchPictures = CancelToken::create();
    fetchPictures(plan, m_prefetchPictures);
}

QCoro::Task<> AppState::fetchPictures(import::PrefetchPlan plan, CancelToken cancel)
{
    // Every lookup of a phase is started at once; the loader's throttler sets
    // the pace of the network requests. The next phase waits for all of them.
    const QPointer<AppState> self(this);
    std::vector<QCoro::Task<std::optional<QImage>>> lookups;
    lookups.reserve(plan.artists().size());
    for (const QString &artist : plan.artists())
        lookups.push_back(m_artworkLoader.artistImage(artist, cancel));
    for (auto &lookup : lookups)
        co_await lookup;
    if (!self || cancel.isCancelled())
        co_return;
    lookups.clear();
    lookups.reserve(plan.albums().size());
    for (const import::PrefetchPlan::Album &album : plan.albums())
        lookups.push_back(m_artworkLoader.albumArt(album.artist, album.album, cancel));
    for (auto &lookup : lookups)
        co_await lookup;
}

void AppState::rebuildSearchIndex()
{
    m_searchIndex.rebuild(m_tracks);
}

std::optional<QString> AppState::artistForTrack(const QUuid &trackId) const
{
    return m_searchIndex.artistForTrack(trackId);
}

bool AppState::writeTags(const Track &track, const std::optional<QString> &title,
                         const std::optional<QString> &artist, const std::optional<QString> &album)
{
    return saveTags(track.path(), title, artist, album);
}
