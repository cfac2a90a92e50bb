// SPDX-License-Identifier: GPL-3.0-or-later
#include "NowPlaying.h"

#include "BackgroundFade.h"
#include "PlaybackKeys.h"
#include "Preferences.h"
#include "artwork/ArtworkLoader.h"
#include "browse/SearchIndex.h"
#include "model/Log.h"
#include "model/TextUtil.h"
#include "playback/AudioPlayer.h"
#include "playback/MprisService.h"
#include "playback/PlaybackController.h"

#include <algorithm>

NowPlaying::NowPlaying(Services services, SongLookup lookup, QObject *parent)
    : QObject(parent)
    , m_services(services)
    , m_lookup(std::move(lookup))
{
    m_services.controller.setChangeListener([this](unsigned changes) { onPlaybackChanged(changes); });
    connect(&m_services.player, &AudioPlayer::finishTickChanged, this, &NowPlaying::next);
    connect(&m_services.player, &AudioPlayer::isPlayingChanged, this, [this] {
        Q_EMIT isPlayingChanged();
        m_services.mpris.updateNowPlaying();
    });
    connect(&m_services.artwork, &ArtworkLoader::imageChanged, this, &NowPlaying::onPictureChanged);
}

NowPlaying::~NowPlaying()
{
    m_services.controller.setChangeListener({});
}

QString NowPlaying::trackId() const
{
    return m_track ? trackjson::uuidText(m_track->id) : QString();
}

QString NowPlaying::trackName() const
{
    return m_track ? text::displayName(m_track->path()) : QString();
}

QUrl NowPlaying::pictureSource() const
{
    return QUrl(m_services.artwork.imageSource());
}

bool NowPlaying::isPlaying() const
{
    return m_services.player.isPlaying();
}

bool NowPlaying::isShuffled() const
{
    return m_services.controller.isShuffled();
}

void NowPlaying::play(const QString &trackId)
{
    if (const std::optional<Track> track = m_lookup(trackId))
        play(*track);
}

void NowPlaying::play(const Track &track)
{
    m_services.controller.playTrack(track);
}

void NowPlaying::togglePlayPause()
{
    m_services.controller.togglePlayPause();
}

void NowPlaying::next()
{
    m_services.controller.playNext();
}

void NowPlaying::previous()
{
    m_services.controller.playPrevious();
}

void NowPlaying::toggleShuffle()
{
    m_services.controller.toggleShuffle();
}

void NowPlaying::seek(double fraction)
{
    m_services.controller.seek(fraction);
}

void NowPlaying::seekBy(double seconds)
{
    const double length = m_services.player.duration();
    if (!m_track || length <= 0)
        return;
    // Forward stops short of the end, so that a seek never skips the song.
    const double to = std::clamp(m_services.player.currentTime() + seconds, 0.0, std::max(0.0, length - 0.5));
    m_services.controller.seek(to / length);
}

bool NowPlaying::handleKeyPress(const KeyPressFilter::KeyPress &press)
{
    const PlaybackKey key = playbackKeyFor(press);
    if (key.action == PlaybackKey::None)
        return false;
    // A held toggle is still taken, so that it does nothing else either.
    if (press.autoRepeat && key.isToggle())
        return true;
    switch (key.action) {
    case PlaybackKey::None:
        break;
    case PlaybackKey::TogglePlayPause:
        togglePlayPause();
        break;
    case PlaybackKey::Next:
        next();
        break;
    case PlaybackKey::Previous:
        previous();
        break;
    case PlaybackKey::ToggleShuffle:
        toggleShuffle();
        break;
    case PlaybackKey::SeekBy:
        seekBy(key.seconds);
        break;
    }
    return true;
}

void NowPlaying::onPlaybackChanged(unsigned changes)
{
    if (changes & PlaybackController::ShuffleChanged) {
        Q_EMIT isShuffledChanged();
        m_services.mpris.updateNowPlaying();
    }
    if (changes & PlaybackController::PlayingTrackChanged)
        setTrack(m_services.controller.playingTrack());
}

void NowPlaying::setTrack(const std::optional<Track> &track)
{
    if (track == m_track)
        return;
    m_track = track;
    qCDebug(lcApp).nospace() << "now playing: " << (m_track ? trackName() : QStringLiteral("nothing"));
    Q_EMIT trackChanged();
    m_services.mpris.updateNowPlaying();
    if (!m_track) {
        m_services.artwork.clear();
        return;
    }
    m_services.artwork.load(*m_track);
    if (const std::optional<QString> artist = m_services.searchIndex.artistForTrack(m_track->id))
        m_services.preferences.recordRecentArtist(*artist);
}

void NowPlaying::onPictureChanged()
{
    m_services.background.show(pictureSource());
    m_services.mpris.setArtwork(m_services.artwork.image().value_or(QImage()));
    Q_EMIT pictureChanged();
}
