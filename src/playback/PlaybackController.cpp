// SPDX-License-Identifier: GPL-3.0-or-later
#include "PlaybackController.h"

#include <QRandomGenerator>

#include <algorithm>
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
    if (!m_player.load(track.url))
        return false;
    if (!m_playingTrack || !(*m_playingTrack == track))
        m_pending |= PlayingTrackChanged;
    m_playingTrack = track;
    m_player.play();
    return true;
}

void PlaybackController::playNext()
{
    Batch batch(*this);
    const QList<Track> queue = currentQueue();
    if (queue.isEmpty())
        return;
    if (!m_isShuffled) {
        if (!m_playingTrack)
            return;
        const qsizetype i = indexOf(queue, *m_playingTrack);
        if (i < 0)
            return;
        playTrack(queue.at((i + 1) % queue.size()));
        return;
    }
    // Only the playing song is left out: songs heard a moment ago may come again.
    QList<Track> candidates;
    candidates.reserve(queue.size());
    for (const Track &t : queue) {
        if (!m_playingTrack || !(t == *m_playingTrack))
            candidates.append(t);
    }
    if (candidates.isEmpty())
        return;
    const qsizetype pick = m_random(candidates.size());
    playTrack(candidates.at(std::clamp<qsizetype>(pick, 0, candidates.size() - 1)));
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
}

void PlaybackController::seek(double fraction)
{
    m_player.seek(fraction * m_player.duration());
}
