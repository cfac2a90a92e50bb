// SPDX-License-Identifier: GPL-3.0-or-later
#include "AudioPlayer.h"

#include "model/Log.h"

AudioPlayer::AudioPlayer(QObject *parent)
    : QObject(parent)
{
    PlaybinPipeline::initGStreamer();
    m_updates.setInterval(updateIntervalMs);
    m_updates.setTimerType(Qt::PreciseTimer);
    connect(&m_updates, &QTimer::timeout, this, &AudioPlayer::updatePosition);
}

AudioPlayer::~AudioPlayer() = default;

bool AudioPlayer::load(const QUrl &url)
{
    // Paused, not torn down: if the new file fails, the old one stays loaded.
    if (m_pipeline)
        m_pipeline->pause();
    m_updates.stop();

    if (!url.isLocalFile()) {
        qCInfo(lcPlayback) << "cannot open" << url << ": not a local file";
        return false;
    }
    const QString path = url.toLocalFile();
    QString error;
    // Every event that arrives comes from m_pipeline: a pipeline that failed to
    // open, or one replaced here, is gone before its queued events run, and
    // events of a destroyed pipeline are dropped.
    auto next = PlaybinPipeline::open(
        path, this, [this](PlaybinPipeline::Event event) { onPipelineEvent(event); }, prerollTimeoutMs,
        &error);
    if (!next) {
        qCInfo(lcPlayback) << "cannot open" << path << ":" << error;
        return false;
    }
    m_pipeline = std::move(next);
    m_atEnd = false;
    m_pendingSeek = -1;
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
        }
        m_pipeline->play();
    }
    setIsPlaying(true);
    m_updates.start(); // restarts a running timer: there is only ever one
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
    if (m_pipeline) {
        m_atEnd = false;
        m_pendingSeek = m_pipeline->seek(seconds) ? -1 : seconds;
    }
    setCurrentTime(seconds);
    Q_EMIT seeked(seconds);
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
        // Like a decoding fault in the middle of a file, this changes nothing
        // published; the sound has stopped and the log says why.
        qCWarning(lcPlayback) << "playback error:" << m_pipeline->lastError();
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
    setIsPlaying(false);
    setCurrentTime(0);
    m_updates.stop();
    ++m_finishTick;
    Q_EMIT finishTickChanged();
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
}

void AudioPlayer::refreshDuration()
{
    // Streams without an index (VBR MP3 without a Xing header) only learn
    // their length, or a better estimate of it, while they play.
    if (const auto length = m_pipeline->duration())
        setDuration(*length);
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
