// SPDX-License-Identifier: GPL-3.0-or-later
#include "AudioPlayer.h"

#include "model/LocalPath.h"
#include "model/Log.h"

#include <QSettings>

#include <algorithm>
#include <cmath>

AudioPlayer::AudioPlayer(QObject *parent)
    : QObject(parent)
    , m_volumeLevelling(QSettings().value(volumeLevellingKey, true).toBool())
{
    PlaybinPipeline::initGStreamer();
    m_updates.setInterval(updateIntervalMs);
    m_updates.setTimerType(Qt::PreciseTimer);
    connect(&m_updates, &QTimer::timeout, this, &AudioPlayer::updatePosition);
}

AudioPlayer::~AudioPlayer() = default;

bool AudioPlayer::load(const QUrl &url)
{
    // Paused, not torn down: if the new file fails, the old one stays loaded,
    // and ends where it ends.
    if (m_pipeline) {
        m_pipeline->queueNext(QString());
        m_pipeline->pause();
    }
    m_updates.stop();
    m_songEnd.reset();

    if (!url.isLocalFile()) {
        qCInfo(lcPlayback) << "cannot open" << url << ": not a local file";
        return false;
    }
    const QString path = localpath::pathOf(url);
    QString error;
    // Every event that arrives comes from m_pipeline: a pipeline that failed to
    // open, or one replaced here, is gone before its queued events run, and
    // events of a destroyed pipeline are dropped.
    auto next = PlaybinPipeline::open(
        path, this, [this](PlaybinPipeline::Event event) { onPipelineEvent(event); }, prerollTimeoutMs,
        m_volumeLevelling, &error);
    if (!next) {
        qCInfo(lcPlayback) << "cannot open" << path << ":" << error;
        return false;
    }
    m_pipeline = std::move(next);
    m_atEnd = false;
    m_pendingSeek = -1;
    m_toldEndApproaching = false;
    setDuration(m_pipeline->duration().value_or(0));
    setCurrentTime(0);
    return true;
}

void AudioPlayer::play()
{
    if (m_pipeline) {
        if (m_atEnd) {
            m_pipeline->seek(0);
            m_atEnd = false;
            m_toldEndApproaching = false; // a song played again asks again
        }
        m_pipeline->play();
    }
    setIsPlaying(true);
    m_updates.start(); // restarts a running timer: there is only ever one
    checkEndApproaching();
}

void AudioPlayer::pause()
{
    if (m_pipeline)
        m_pipeline->pause();
    setIsPlaying(false);
    m_updates.stop();
}

void AudioPlayer::seek(double seconds)
{
    if (!std::isfinite(seconds))
        return;
    seconds = std::max(0.0, seconds);
    if (m_pipeline) {
        m_atEnd = false;
        m_pendingSeek = m_pipeline->seek(seconds) ? -1 : seconds;
    }
    setCurrentTime(seconds);
    Q_EMIT seeked(seconds);
}

void AudioPlayer::setEndApproachingHandler(std::function<void()> handler)
{
    m_endApproaching = std::move(handler);
}

bool AudioPlayer::queueNext(const QUrl &url)
{
    if (!m_pipeline || (!url.isEmpty() && !url.isLocalFile()))
        return false;
    m_queued = url;
    return m_pipeline->queueNext(url.isEmpty() ? QString() : localpath::pathOf(url));
}

std::optional<QUrl> AudioPlayer::takeSongEnd()
{
    return std::exchange(m_songEnd, std::nullopt);
}

void AudioPlayer::setVolumeLevelling(bool on)
{
    QSettings().setValue(volumeLevellingKey, on);
    overrideVolumeLevelling(on);
}

void AudioPlayer::overrideVolumeLevelling(bool on)
{
    if (m_volumeLevelling == on)
        return;
    m_volumeLevelling = on;
    if (m_pipeline)
        m_pipeline->setLevelling(on);
    Q_EMIT volumeLevellingChanged();
}

double AudioPlayer::livePosition() const
{
    if (!m_pipeline || m_atEnd)
        return m_currentTime;
    return m_pipeline->position().value_or(m_currentTime);
}

void AudioPlayer::onPipelineEvent(PlaybinPipeline::Event event)
{
    switch (event) {
    case PlaybinPipeline::Event::EndOfStream:
        onEndOfStream();
        break;
    case PlaybinPipeline::Event::Error:
        qCWarning(lcPlayback) << "playback error:" << m_pipeline->lastError();
        // The queued file failed to start after this one was read to its
        // end: the song is over as if nothing had been queued.
        if (m_pipeline->isJoining())
            onEndOfStream();
        // Otherwise, like a decoding fault in the middle of a file, this
        // changes nothing published; the sound has stopped.
        break;
    case PlaybinPipeline::Event::Advanced:
        onAdvanced();
        break;
    case PlaybinPipeline::Event::AsyncDone:
        if (m_pendingSeek >= 0 && m_pipeline->seek(m_pendingSeek))
            m_pendingSeek = -1;
        refreshDuration();
        break;
    case PlaybinPipeline::Event::DurationChanged:
        refreshDuration();
        break;
    }
}

void AudioPlayer::onEndOfStream()
{
    // Paused at the end so the sink lets go of its clock; play starts over.
    m_pipeline->pause();
    m_atEnd = true;
    m_songEnd = QUrl();
    setIsPlaying(false);
    setCurrentTime(0);
    m_updates.stop();
    ++m_finishTick;
    Q_EMIT finishTickChanged();
}

void AudioPlayer::onAdvanced()
{
    // Told as it was queued, so the caller recognises its own url.
    const QString joined = m_pipeline->path();
    m_songEnd = localpath::pathOf(m_queued) == joined ? m_queued : localpath::fileUrl(joined);
    m_pendingSeek = -1;
    m_toldEndApproaching = false;
    // The new song's length and position are in place before anyone hears of
    // the end, so the next song is published whole.
    const double oldTime = std::exchange(m_currentTime, 0.0);
    const double oldDuration = std::exchange(m_duration, m_pipeline->duration().value_or(0));
    ++m_finishTick;
    Q_EMIT finishTickChanged();
    if (m_currentTime != oldTime)
        Q_EMIT currentTimeChanged();
    if (m_duration != oldDuration)
        Q_EMIT durationChanged();
    checkEndApproaching();
}

void AudioPlayer::checkEndApproaching()
{
    if (m_toldEndApproaching || !m_isPlaying || !m_pipeline || m_atEnd || m_duration <= 0
        || m_duration - m_currentTime > endApproachingSeconds)
        return;
    m_toldEndApproaching = true;
    if (m_endApproaching)
        m_endApproaching();
    if (m_pipeline)
        m_pipeline->settleNext();
}

void AudioPlayer::updatePosition()
{
    if (!m_pipeline) {
        setCurrentTime(0);
        return;
    }
    // While the pipeline can't tell (in the middle of a seek) the last value stays.
    if (const auto position = m_pipeline->position())
        setCurrentTime(*position);
    checkEndApproaching();
}

void AudioPlayer::refreshDuration()
{
    // Streams without an index (VBR MP3 without a Xing header) only learn
    // their length, or a better estimate of it, while they play.
    if (const auto length = m_pipeline->duration())
        setDuration(*length);
    checkEndApproaching();
}

void AudioPlayer::setIsPlaying(bool playing)
{
    if (m_isPlaying == playing)
        return;
    m_isPlaying = playing;
    Q_EMIT isPlayingChanged();
}

void AudioPlayer::setCurrentTime(double seconds)
{
    if (m_currentTime == seconds)
        return;
    m_currentTime = seconds;
    Q_EMIT currentTimeChanged();
}

void AudioPlayer::setDuration(double seconds)
{
    if (m_duration == seconds)
        return;
    m_duration = seconds;
    Q_EMIT durationChanged();
}
