// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Playback: what plays, and what plays next.
//
//   queue source ── the selected playlist's tracks, else the library (playbackQueue)
//        │
//   PlaybackController ── playingTrack, history, isShuffled; playTrack, playNext, ...
//        │  (PlayerControl: load, play, pause, seek)
//   AudioPlayer ── one PlaybinPipeline per load ── GStreamer playbin
//        │   │                                      ├─ LevellingStage: ReplayGain per stream
//        │   │                                      └─ CafSource: FFmpeg → appsrc for .caf
//        │   └─ end approaching ──→ the controller prepares the next song and
//        │                          queues its file, which the playbin joins
//        └─ finishTick ──→ the owner calls playNext, which takes the joined
//                          song as the playing one (or loads the next one)
//
//   MprisService ── observes the player and the controller; media keys and
//                   now-playing clients reach them over D-Bus
//   spaceBarTogglesPlayback ── the keyboard rule the window's key filter asks
//
// Everything here lives on the GUI thread; only GStreamer's own threads (and
// the CAF decoder inside them) run elsewhere, and they talk back through
// queued events.

#include "PlayerControl.h"
#include "model/Playlist.h"
#include "model/Track.h"

#include <QList>

#include <functional>
#include <optional>

// The songs next and previous walk through: the tracks of the selected
// playlist (none when no playlist has that id), else the whole library in
// library order.
QList<Track> playbackQueue(const std::optional<QUuid> &selectedPlaylistId, const QList<Playlist> &playlists,
    const QList<Track> &library);

// Decides which song plays: the one the user picks, the next one in order or at
// random, the previous one from the history or the queue. The queue is asked
// for anew on every use, so it always follows the current selection.
//
// Gapless: a few seconds before a song ends the controller chooses the next
// one by the same rules (for shuffle, the random draw is made then and kept)
// and hands its file to the player. When the song ends the owner calls
// playNext as always, and the prepared song is the one that plays: the player
// has joined it already, or it is loaded now. Anything the user does meanwhile
// (next, previous, a pick, shuffle, a change of the queue the owner reports
// with queueChanged) drops the prepared song; a queue change nobody reported
// is noticed at the end, and the queue's next song loaded instead.
//
// Plain C++ over PlayerControl so every rule can be checked without sound. The
// owner (the main state) reacts to the player's finishTick by calling playNext.
class PlaybackController
{
public:
    using QueueSource = std::function<QList<Track>()>;
    // A uniformly random index in 0..count-1 (count > 0).
    using RandomIndex = std::function<qsizetype(qsizetype count)>;

    enum Change : unsigned {
        PlayingTrackChanged = 1u << 0,
        HistoryChanged = 1u << 1,
        ShuffleChanged = 1u << 2,
    };
    // Called once at the end of each operation that changed something, with the
    // Change bits; the player has been told to play by then.
    using ChangeListener = std::function<void(unsigned changes)>;

    // random defaults to the system's random source.
    PlaybackController(PlayerControl &player, QueueSource queue, RandomIndex random = {});
    ~PlaybackController();
    PlaybackController(const PlaybackController &) = delete;
    PlaybackController &operator=(const PlaybackController &) = delete;

    void setChangeListener(ChangeListener listener) { m_listener = std::move(listener); }

    QList<Track> currentQueue() const;

    // Remembers the playing song in history (also when it is the same one),
    // then starts the track.
    void playTrack(const Track &track);
    // Loads and plays the track without touching history. When the file can't
    // be opened nothing else changes and false is returned.
    bool startPlayback(const Track &track);
    // The song after the playing one in the queue (the first after the last),
    // or with shuffle on a random other song of the queue. Right after a song
    // ended, the song prepared for that moment.
    void playNext();
    // The last song of history, else the one before the playing song in the
    // queue; nothing at the start of the queue.
    void playPrevious();
    void togglePlayPause();
    void toggleShuffle();
    // Jumps to that share (0..1) of the song's length; nothing while the
    // length is unknown or the share is not a number.
    void seek(double fraction);
    // The queue may have changed: the prepared song is chosen again.
    void queueChanged();
    // On (the default), songs follow each other without a gap. Off, nothing
    // is prepared: each song ends and the next is loaded afterwards.
    void setGapless(bool on);

    // The song chosen to follow the playing one, once its end approaches.
    const std::optional<Track> &preparedNext() const { return m_prepared; }

    const std::optional<Track> &playingTrack() const { return m_playingTrack; }
    // Oldest first; grows with every playTrack while something plays.
    const QList<Track> &history() const { return m_history; }
    bool isShuffled() const { return m_isShuffled; }

private:
    // Collects the changes of one operation and reports them when the
    // outermost operation returns.
    class Batch
    {
    public:
        explicit Batch(PlaybackController &c)
            : m_c(c)
        {
            ++m_c.m_depth;
        }
        ~Batch();
        Batch(const Batch &) = delete;
        Batch &operator=(const Batch &) = delete;

    private:
        PlaybackController &m_c;
    };

    static qsizetype indexOf(const QList<Track> &queue, const Track &track);
    // The song playNext would start now; for shuffle, a new draw.
    std::optional<Track> chooseNext();
    bool isStillNext(const Track &track) const;
    void onEndApproaching();
    void prepareNext();
    void cancelPrepared();
    // The player already plays the song: it becomes the playing one.
    void adopt(const Track &track);

    PlayerControl &m_player;
    QueueSource m_queue;
    RandomIndex m_random;
    ChangeListener m_listener;
    std::optional<Track> m_playingTrack;
    QList<Track> m_history;
    bool m_isShuffled = false;
    std::optional<Track> m_prepared;
    // The playing song's end approaches: a cancelled choice is made again.
    bool m_endApproaching = false;
    bool m_gapless = true;
    int m_depth = 0;
    unsigned m_pending = 0;
};
