// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PlaybinPipeline.h"
#include "PlayerControl.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

// Plays one file at a time and publishes what the screens and the playback
// controller watch: whether it plays, the position, the length of the file and
// a counter of finished songs. It knows nothing of queues; the controller
// decides what to load and advances when finishTick changes.
//
// Gapless: a few seconds before the end it asks for the next file (the end
// approaching handler); a file queued then follows the last sample of this one
// through the same sink. finishTick, the length and the position change when
// the queued file's first sample plays, and isPlaying stays true across the
// join. Volume levelling applies each song's ReplayGain track gain.
//
// Lives on the GUI thread. Getters return cached values and never wait on
// GStreamer; bus messages arrive as queued events. Only load waits, for the new
// file to preroll (bounded), so that it can fail cleanly and know the length.
class AudioPlayer : public QObject, public PlayerControl
{
    Q_OBJECT
    Q_PROPERTY(bool isPlaying READ isPlaying NOTIFY isPlayingChanged)
    Q_PROPERTY(double currentTime READ currentTime NOTIFY currentTimeChanged)
    Q_PROPERTY(double duration READ duration NOTIFY durationChanged)
    Q_PROPERTY(qint64 finishTick READ finishTick NOTIFY finishTickChanged)
    Q_PROPERTY(
        bool volumeLevelling READ volumeLevelling WRITE setVolumeLevelling NOTIFY volumeLevellingChanged)

public:
    explicit AudioPlayer(QObject *parent = nullptr);
    ~AudioPlayer() override;

    // Stops the sound at once, then opens and prepares the file without
    // playing it: duration becomes its length (0 while unknown) and
    // currentTime 0. isPlaying is left alone. When the file can't be opened the
    // old file stays loaded, stopped, and nothing published changes.
    bool load(const QUrl &url) override;
    // Starts or resumes (from the start after the end of the file) and starts
    // the position updates, four a second. Without a file only isPlaying changes.
    Q_INVOKABLE void play() override;
    // Pauses and stops the position updates.
    Q_INVOKABLE void pause() override;
    // Jumps to the position; currentTime takes it at once, before the next
    // update. A position that is not a number is ignored.
    Q_INVOKABLE void seek(double seconds) override;

    void setEndApproachingHandler(std::function<void()> handler) override;
    bool queueNext(const QUrl &url) override;
    std::optional<QUrl> takeSongEnd() override;

    // Stored as the preference "volumeLevelling", on unless the user turned it
    // off. Changing it takes effect at once and is remembered.
    bool volumeLevelling() const { return m_volumeLevelling; }
    void setVolumeLevelling(bool on);
    // For this run only, leaving the stored preference alone.
    void overrideVolumeLevelling(bool on);
    static inline const QString volumeLevellingKey = QStringLiteral("volumeLevelling");

    bool isPlaying() const override { return m_isPlaying; }
    double currentTime() const { return m_currentTime; }
    double duration() const override { return m_duration; }
    qint64 finishTick() const { return m_finishTick; }

    bool hasFile() const { return m_pipeline != nullptr; }
    // The position asked of the pipeline now rather than at the last update
    // (for now-playing clients); currentTime when there is nothing to ask.
    double livePosition() const;

    static constexpr int updateIntervalMs = 250;
    // Longest wait in load for a file to become ready; a slower file goes on
    // preparing in the background and load succeeds.
    static constexpr int prerollTimeoutMs = 2000;
    // How long before the end the next file is asked for. The playbin wants it
    // about a second before the end; the rest is room for a busy GUI thread.
    static constexpr double endApproachingSeconds = 5.0;

Q_SIGNALS:
    void isPlayingChanged();
    void currentTimeChanged();
    void durationChanged();
    void finishTickChanged();
    void volumeLevellingChanged();
    // The position was moved by seek.
    void seeked(double seconds);

private:
    void onPipelineEvent(PlaybinPipeline::Event event);
    void onEndOfStream();
    void onAdvanced();
    void checkEndApproaching();
    void updatePosition();
    void refreshDuration();
    void setIsPlaying(bool playing);
    void setCurrentTime(double seconds);
    void setDuration(double seconds);

    std::unique_ptr<PlaybinPipeline> m_pipeline;
    QTimer m_updates;
    bool m_isPlaying = false;
    double m_currentTime = 0;
    double m_duration = 0;
    qint64 m_finishTick = 0;
    // The file has played to its end; the next play starts it over.
    bool m_atEnd = false;
    // A seek asked for before the file was ready, applied once it is.
    double m_pendingSeek = -1;
    bool m_volumeLevelling = true;
    std::function<void()> m_endApproaching;
    // The handler was called for the song playing now.
    bool m_toldEndApproaching = false;
    std::optional<QUrl> m_songEnd;
    QUrl m_queued;
};
