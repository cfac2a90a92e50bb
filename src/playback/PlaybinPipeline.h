// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <optional>

class QObject;
class LevellingStage;
struct BusLink;
typedef struct _GstElement GstElement;

// One GStreamer playbin playing one file, and the files queued after it.
// AudioPlayer makes a new one for each load and keeps the old one until the new
// one has prerolled, so a file that fails to open leaves the previous one in
// place, stopped.
//
// A queued file is joined without a gap: when the playbin has read the current
// file to its end (about-to-finish, a second or so before the end is heard) it
// goes on to the queued file through the same sink; Advanced tells when the
// queued file's first sample reaches the sink. Every stream passes through a
// LevellingStage. CAF files, which GStreamer can't demux here, are decoded by
// CafSource into an appsrc and are never joined.
//
// Bus messages are turned into events on the receiver's thread (the GUI
// thread); the streaming threads never touch anything else.
class PlaybinPipeline
{
public:
    enum class Event { EndOfStream, Error, DurationChanged, AsyncDone, Advanced };
    // Runs on the receiver's thread, never after the pipeline is destroyed.
    using EventHandler = std::function<void(Event)>;

    // Builds a playbin for the file and prerolls it (decodes up to the first
    // buffer at the sink) within timeoutMs. Absent when the file can't be
    // played; *error then says why. A preroll still running when the time is
    // up is left to finish in the background.
    static std::unique_ptr<PlaybinPipeline> open(const QString &path, QObject *receiver, EventHandler handler,
        int timeoutMs, bool levelling, QString *error);
    ~PlaybinPipeline();

    PlaybinPipeline(const PlaybinPipeline &) = delete;
    PlaybinPipeline &operator=(const PlaybinPipeline &) = delete;

    void play();
    void pause();
    bool seek(double seconds);

    // The file to go on to at the end of this one; empty withdraws it. False
    // when the two can't be joined (CAF on either side). Once the playbin has
    // taken the file a change comes too late: that file plays next.
    bool queueNext(const QString &path);
    // Says that nothing more will be queued for the file being read now, so
    // the playbin need not wait for it. queueNext says so too.
    void settleNext();
    // A queued file was taken and has not started yet.
    bool isJoining() const;
    // The file playing now: the opened one, then each joined one from Advanced on.
    QString path() const;
    void setLevelling(bool on);

    // Queries the pipeline; absent while it can't tell.
    std::optional<double> position() const;
    std::optional<double> duration() const;
    // The first error the pipeline reported, empty when none.
    QString lastError() const;

    // The sink new pipelines use: TARNWELL_AUDIO_SINK (a gst-launch description
    // such as "fakesink sync=true"), else autoaudiosink.
    static QString sinkDescription();

    // Initialises GStreamer once per process; false when it can't start.
    static bool initGStreamer();

private:
    PlaybinPipeline() = default;

    GstElement *m_playbin = nullptr;
    std::shared_ptr<BusLink> m_link;
    std::shared_ptr<LevellingStage> m_levelling;
    bool m_joinable = true;
};
