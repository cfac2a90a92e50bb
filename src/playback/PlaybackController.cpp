// SPDX-License-Identifier: GPL-3.0-or-later
#include "PlaybackController.h"

#include <QRandomGenerator>

#include <algorithm>
#include <cmath>
#include <utility>

QList<Track> playbackQueue(const std::optional<QUuid> &selectedPlaylistId, const QList<Playlist> &playlists,
    const QList<Track> &library)
{
    if (!selectedPlaylistId)
        return library;
    for (const Playlist &p : playlists) {
        if (p.id == *selectedPlaylistId)
            return p.tracks;
    }
    return {};
}

PlaybackController::PlaybackController(PlayerControl &player, QueueSource queue, RandomIndex random)
    : m_player(player)
    , m_queue(std::move(queue))
    , m_random(std::move(random))
{
    if (!m_random)
        m_random
            = [](qsizetype count) { return qsizetype(QRandomGenerator::global()->bounded(quint64(count))); };
    m_player.setEndApproachingHandler([this] { onEndApproaching(); });
}

PlaybackController::~PlaybackController()
{
    m_player.setEndApproachingHandler({});
}

PlaybackController::Batch::~Batch()
{
    if (--m_c.m_depth > 0 || m_c.m_pending == 0)
        return;
    const unsigned changes = std::exchange(m_c.m_pending, 0u);
    if (m_c.m_listener)
        m_c.m_listener(changes);
}

QList<Track> PlaybackController::currentQueue() const
{
    return m_queue ? m_queue() : QList<Track>();
}

qsizetype PlaybackController::indexOf(const QList<Track> &queue, const Track &track)
{
    return queue.indexOf(track); // Track compares by id
}

void PlaybackController::playTrack(const Track &track)
{
    Batch batch(*this);
    if (m_playingTrack) {
        m_history.append(*m_playingTrack);
        m_pending |= HistoryChanged;
    }
    startPlayback(track);
}

bool PlaybackController::startPlayback(const Track &track)
{
    Batch batch(*this);
    // Loading withdraws whatever the player had queued.
    m_prepared.reset();
    if (!m_player.load(track.url))
        return false;
    m_endApproaching = false;
    if (!m_playingTrack || !(*m_playingTrack == track))
        m_pending |= PlayingTrackChanged;
    m_playingTrack = track;
    m_player.play();
    return true;
}

void PlaybackController::playNext()
{
    Batch batch(*this);
    const std::optional<QUrl> ended = m_player.takeSongEnd();
    const std::optional<Track> prepared = std::exchange(m_prepared, std::nullopt);
    if (ended && prepared && isStillNext(*prepared)) {
        if (*ended == prepared->url)
            adopt(*prepared);
        else // stopped at the end, or joined a file withdrawn too late
            playTrack(*prepared);
        return;
    }
    if (prepared)
        m_player.queueNext(QUrl());
    if (const std::optional<Track> next = chooseNext()) {
        playTrack(*next);
    } else if (ended && !ended->isEmpty() && m_playingTrack) {
        // The player went on to a song that is no longer wanted and nothing
        // follows: leave it as a song that ended.
        m_player.load(m_playingTrack->url);
        m_player.pause();
    }
}

std::optional<Track> PlaybackController::chooseNext()
{
    const QList<Track> queue = currentQueue();
    if (queue.isEmpty())
        return std::nullopt;
    if (!m_isShuffled) {
        if (!m_playingTrack)
            return std::nullopt;
        const qsizetype i = indexOf(queue, *m_playingTrack);
        if (i < 0)
            return std::nullopt;
        return queue.at((i + 1) % queue.size());
    }
    // Only the playing song is left out: songs heard a moment ago may come again.
    QList<Track> candidates;
    candidates.reserve(queue.size());
    for (const Track &t : queue) {
        if (!m_playingTrack || !(t == *m_playingTrack))
            candidates.append(t);
    }
    if (candidates.isEmpty())
        return std::nullopt;
    const qsizetype pick = m_random(candidates.size());
    return candidates.at(std::clamp<qsizetype>(pick, 0, candidates.size() - 1));
}

bool PlaybackController::isStillNext(const Track &track) const
{
    const QList<Track> queue = currentQueue();
    if (!m_playingTrack)
        return false;
    const qsizetype playing = indexOf(queue, *m_playingTrack);
    if (!m_isShuffled)
        return playing >= 0 && queue.at((playing + 1) % queue.size()) == track;
    return !(track == *m_playingTrack) && indexOf(queue, track) >= 0;
}

void PlaybackController::onEndApproaching()
{
    m_endApproaching = true;
    prepareNext();
}

void PlaybackController::prepareNext()
{
    if (!m_gapless || !m_endApproaching)
        return;
    m_prepared = chooseNext();
    // A file the player can't join stays the choice: it is loaded at the end.
    m_player.queueNext(m_prepared ? m_prepared->url : QUrl());
}

void PlaybackController::cancelPrepared()
{
    if (!m_prepared)
        return;
    m_prepared.reset();
    m_player.queueNext(QUrl());
}

void PlaybackController::adopt(const Track &track)
{
    if (m_playingTrack) {
        m_history.append(*m_playingTrack);
        m_pending |= HistoryChanged;
    }
    if (!m_playingTrack || !(*m_playingTrack == track))
        m_pending |= PlayingTrackChanged;
    m_playingTrack = track;
    m_endApproaching = false;
}

void PlaybackController::queueChanged()
{
    cancelPrepared();
    prepareNext();
}

void PlaybackController::setGapless(bool on)
{
    if (m_gapless == on)
        return;
    m_gapless = on;
    if (on)
        prepareNext();
    else
        cancelPrepared();
}

void PlaybackController::playPrevious()
{
    Batch batch(*this);
    if (!m_history.isEmpty()) {
        const Track previous = m_history.takeLast();
        m_pending |= HistoryChanged;
        // The song that was playing is not remembered: going back is not a new pick.
        startPlayback(previous);
        return;
    }
    if (!m_playingTrack)
        return;
    const QList<Track> queue = currentQueue();
    const qsizetype i = indexOf(queue, *m_playingTrack);
    if (i > 0)
        startPlayback(queue.at(i - 1));
}

void PlaybackController::togglePlayPause()
{
    if (m_player.isPlaying())
        m_player.pause();
    else
        m_player.play();
}

void PlaybackController::toggleShuffle()
{
    Batch batch(*this);
    m_isShuffled = !m_isShuffled;
    m_pending |= ShuffleChanged;
    // The song prepared under the other rule is not the one to play.
    cancelPrepared();
    prepareNext();
}

void PlaybackController::seek(double fraction)
{
    // With the length unknown, any share would mean the start of the song.
    if (!std::isfinite(fraction) || m_player.duration() <= 0)
        return;
    m_player.seek(fraction * m_player.duration());
}
