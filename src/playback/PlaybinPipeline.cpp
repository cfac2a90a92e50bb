// SPDX-License-Identifier: GPL-3.0-or-later
#include "PlaybinPipeline.h"

#include "CafSource.h"
#include "LevellingStage.h"
#include "model/LocalPath.h"
#include "model/Log.h"

#include <QMetaObject>
#include <QObject>
#include <QThreadPool>

#include <gst/gst.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>

// Shared by the pipeline (GUI thread) and its bus handler (any GStreamer thread).
struct BusLink
{
    std::mutex mutex;
    std::condition_variable prerollDone;
    std::condition_variable nextSettled;
    // Guarded by mutex. Cleared before the pipeline is torn down, so no event is
    // posted once the owner has let go of it.
    QObject *receiver = nullptr;
    bool prerolled = false;
    bool failed = false;
    QString error;
    // Files are counted from 0, the opened one, in the order they play.
    // The one the playbin reads now; the heard one may still be the one before.
    int reading = 0;
    // The file to join after file queuedAfter, until the playbin takes it.
    QString queued;
    int queuedAfter = -1;
    // The owner has said what follows each file up to this one (maybe nothing).
    int settledUpTo = -1;
    bool closing = false;
    // The file taken, until its stream starts.
    QString joining;

    // Set once before the playbin starts.
    std::shared_ptr<LevellingStage> levelling;

    // GUI thread only.
    bool alive = true;
    QString path;
    int heard = 0;
    PlaybinPipeline::EventHandler handler;
};

namespace {

using Event = PlaybinPipeline::Event;

// GstPlayFlags: audio only, with software volume; no video or subtitle branches,
// so cover pictures inside a file never pull in a video sink.
constexpr int playFlagAudio = 1 << 1;
constexpr int playFlagSoftVolume = 1 << 4;

// Called with link->mutex held. joined: the file of an Advanced event.
void deliver(const std::shared_ptr<BusLink> &link, Event event, const QString &joined = {})
{
    if (!link->receiver)
        return;
    QMetaObject::invokeMethod(
        link->receiver,
        [link, event, joined] {
            if (!link->alive)
                return;
            if (event == Event::Advanced) {
                link->path = joined;
                ++link->heard;
            }
            if (link->handler)
                link->handler(event);
        },
        Qt::QueuedConnection);
}

bool isCaf(const QString &path)
{
    return path.endsWith(u".caf", Qt::CaseInsensitive);
}

gchar *uriOf(const QString &absolutePath, QString *error)
{
    GError *uriError = nullptr;
    gchar *uri = gst_filename_to_uri(localpath::toBytes(absolutePath).constData(), &uriError);
    if (!uri && error)
        *error = QString::fromUtf8(uriError ? uriError->message : "bad file name");
    g_clear_error(&uriError);
    return uri;
}

// About the time the sink takes to play what the playbin reads ahead.
constexpr int settleTimeoutMs = 1500;

// Runs in a streaming thread once the current file has been read to its end.
// A uri set before this returns is played next without a gap; none, and the
// stream ends.
void onAboutToFinish(GstElement *playbin, gpointer data)
{
    const std::shared_ptr<BusLink> &link = *static_cast<std::shared_ptr<BusLink> *>(data);
    QString next;
    {
        // A song shorter than what the playbin reads ahead is read to its end
        // before the owner has heard it start, let alone chosen what follows:
        // wait for that choice while the sink plays what it has.
        std::unique_lock lock(link->mutex);
        const int current = link->reading;
        if (!link->nextSettled.wait_for(lock, std::chrono::milliseconds(settleTimeoutMs),
                [&] { return link->closing || link->settledUpTo >= current; }))
            qCDebug(lcPlayback) << "no word of the file after" << current << "in time; ending it";
        // A file queued to follow an earlier one came too late for it.
        if (link->closing || link->queuedAfter != current)
            return;
        next = std::exchange(link->queued, QString());
    }
    if (next.isEmpty())
        return;
    // A file gone since it was queued ends the song as usual, and the next
    // load reports it.
    if (!localpath::isFile(next)) {
        qCInfo(lcPlayback) << "not joining" << next << ": no such file";
        return;
    }
    QString why;
    gchar *uri = uriOf(next, &why);
    if (!uri) {
        qCInfo(lcPlayback) << "not joining" << next << ":" << why;
        return;
    }
    // Read here, where the sink still has a second of the current song to play.
    link->levelling->expect(next, replaygain::readTrackGain(next));
    {
        std::lock_guard lock(link->mutex);
        link->joining = next;
        ++link->reading;
    }
    g_object_set(playbin, "uri", uri, nullptr);
    g_free(uri);
}

QString errorText(GstMessage *message)
{
    GError *error = nullptr;
    gchar *debug = nullptr;
    gst_message_parse_error(message, &error, &debug);
    QString text = error ? QString::fromUtf8(error->message) : QStringLiteral("unknown error");
    if (debug)
        text += QStringLiteral(" (%1)").arg(QString::fromUtf8(debug));
    g_clear_error(&error);
    g_free(debug);
    return text;
}

// Runs on whatever thread posts the message; it only records and forwards.
GstBusSyncReply onBusMessage(GstBus *, GstMessage *message, gpointer data)
{
    const std::shared_ptr<BusLink> &link = *static_cast<std::shared_ptr<BusLink> *>(data);
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ASYNC_DONE: {
        std::lock_guard lock(link->mutex);
        link->prerolled = true;
        link->prerollDone.notify_all();
        deliver(link, Event::AsyncDone);
        break;
    }
    case GST_MESSAGE_ERROR: {
        // Elements often post several errors for one fault; the first says why.
        const QString text = errorText(message);
        std::lock_guard lock(link->mutex);
        if (!link->failed) {
            link->failed = true;
            link->error = text;
            link->prerollDone.notify_all();
            deliver(link, Event::Error);
        }
        break;
    }
    case GST_MESSAGE_EOS: {
        std::lock_guard lock(link->mutex);
        deliver(link, Event::EndOfStream);
        break;
    }
    case GST_MESSAGE_DURATION_CHANGED: {
        std::lock_guard lock(link->mutex);
        deliver(link, Event::DurationChanged);
        break;
    }
    case GST_MESSAGE_STREAM_START: {
        // The sink has the first sample of the joined file; the opened file's
        // own start is not news.
        std::lock_guard lock(link->mutex);
        if (!link->joining.isEmpty())
            deliver(link, Event::Advanced, std::exchange(link->joining, QString()));
        break;
    }
    default:
        break;
    }
    return GST_BUS_DROP;
}

void deleteLink(gpointer data)
{
    delete static_cast<std::shared_ptr<BusLink> *>(data);
}

void deleteLinkClosure(gpointer data, GClosure *)
{
    deleteLink(data);
}

void onSourceSetup(GstElement *, GstElement *source, gpointer data)
{
    cafsource::attach(source, *static_cast<QString *>(data));
}

void deletePath(gpointer data, GClosure *)
{
    delete static_cast<QString *>(data);
}

GstElement *makeSink()
{
    const QString description = PlaybinPipeline::sinkDescription();
    if (description != u"autoaudiosink") {
        GError *error = nullptr;
        GstElement *sink = gst_parse_bin_from_description(description.toUtf8().constData(), TRUE, &error);
        if (sink)
            return sink;
        qCWarning(lcPlayback) << "audio sink" << description
                              << "unusable:" << (error ? error->message : "unknown error")
                              << "- using autoaudiosink";
        g_clear_error(&error);
    }
    return gst_element_factory_make("autoaudiosink", nullptr);
}

std::optional<double> seconds(bool ok, gint64 nanoseconds)
{
    if (!ok || nanoseconds < 0)
        return std::nullopt;
    return double(nanoseconds) / double(GST_SECOND);
}

// GStreamer 1.22's aiffparse races with decodebin: now and then (a third of
// the loads after the first one in a process, measured here) it pushes before
// decodebin has linked it, fails with "not-linked" inside decodebin, and the
// preroll never completes. The FFmpeg AIFF demuxer from gst-libav has no such
// race (and reads more AIFF-C variants), so it takes aiffparse's place in
// this process.
void preferFFmpegAiffDemuxer()
{
    GstRegistry *registry = gst_registry_get();
    GstPluginFeature *ffmpeg = gst_registry_lookup_feature(registry, "avdemux_aiff");
    GstPluginFeature *native = gst_registry_lookup_feature(registry, "aiffparse");
    if (ffmpeg && native) {
        gst_plugin_feature_set_rank(ffmpeg, GST_RANK_PRIMARY);
        gst_plugin_feature_set_rank(native, GST_RANK_NONE);
    }
    if (ffmpeg)
        gst_object_unref(ffmpeg);
    if (native)
        gst_object_unref(native);
}

// The first file of each kind waits for its plugins to load (up to 150 ms for
// MP3 and M4A, measured here); loading them ahead on the pool takes that wait
// off the first song the user picks.
void warmUpPlugins()
{
    QThreadPool::globalInstance()->start([] {
        for (const char *name : { "coreelements", "playback", "typefindfunctions", "audioconvert",
                 "audioresample", "volume", "autodetect", "pulseaudio", "alsa", "audioparsers", "flac",
                 "wavparse", "isomp4", "mpg123", "libav", "app" }) {
            if (GstPlugin *plugin = gst_plugin_load_by_name(name))
                gst_object_unref(plugin);
        }
    });
}

} // namespace

bool PlaybinPipeline::initGStreamer()
{
    static const bool ok = [] {
        GError *error = nullptr;
        if (gst_init_check(nullptr, nullptr, &error)) {
            preferFFmpegAiffDemuxer();
            warmUpPlugins();
            return true;
        }
        qCWarning(lcPlayback) << "GStreamer could not start:" << (error ? error->message : "unknown error");
        g_clear_error(&error);
        return false;
    }();
    return ok;
}

QString PlaybinPipeline::sinkDescription()
{
    const QString configured = qEnvironmentVariable("TARNWELL_AUDIO_SINK").trimmed();
    return configured.isEmpty() ? QStringLiteral("autoaudiosink") : configured;
}

std::unique_ptr<PlaybinPipeline> PlaybinPipeline::open(const QString &path, QObject *receiver,
    EventHandler handler, int timeoutMs, bool levelling, QString *error)
{
    auto fail = [error](const QString &why) {
        if (error)
            *error = why;
        return nullptr;
    };
    if (!initGStreamer())
        return fail(QStringLiteral("GStreamer is not available"));
    if (!localpath::isFile(path))
        return fail(QStringLiteral("no such file"));

    std::unique_ptr<PlaybinPipeline> pipeline(new PlaybinPipeline);
    GstElement *playbin = gst_element_factory_make("playbin", nullptr);
    if (!playbin)
        return fail(QStringLiteral("the GStreamer playbin element is missing"));
    pipeline->m_playbin = GST_ELEMENT(gst_object_ref_sink(playbin));

    GstElement *sink = makeSink();
    if (!sink)
        return fail(QStringLiteral("no audio sink"));
    g_object_set(playbin, "audio-sink", sink, "flags", playFlagAudio | playFlagSoftVolume, nullptr);

    const QString absolute = localpath::absolute(path);
    pipeline->m_levelling = std::make_shared<LevellingStage>();
    pipeline->m_levelling->setEnabled(levelling);
    pipeline->m_levelling->expect(absolute);
    if (GstElement *filter = pipeline->m_levelling->element())
        g_object_set(playbin, "audio-filter", filter, nullptr);

    if (isCaf(absolute)) {
        pipeline->m_joinable = false;
        g_object_set(playbin, "uri", "appsrc://", nullptr);
        g_signal_connect_data(playbin, "source-setup", G_CALLBACK(onSourceSetup), new QString(absolute),
            deletePath, GConnectFlags(0));
    } else {
        QString why;
        gchar *uri = uriOf(absolute, &why);
        if (!uri)
            return fail(why);
        g_object_set(playbin, "uri", uri, nullptr);
        g_free(uri);
    }

    auto link = std::make_shared<BusLink>();
    link->receiver = receiver;
    link->handler = std::move(handler);
    link->levelling = pipeline->m_levelling;
    link->path = absolute;
    pipeline->m_link = link;
    GstBus *bus = gst_element_get_bus(playbin);
    gst_bus_set_sync_handler(bus, onBusMessage, new std::shared_ptr<BusLink>(link), deleteLink);
    gst_object_unref(bus);
    g_signal_connect_data(playbin, "about-to-finish", G_CALLBACK(onAboutToFinish),
        new std::shared_ptr<BusLink>(link), deleteLinkClosure, GConnectFlags(0));

    const GstStateChangeReturn ret = gst_element_set_state(playbin, GST_STATE_PAUSED);
    std::unique_lock lock(link->mutex);
    if (ret == GST_STATE_CHANGE_ASYNC) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        link->prerollDone.wait_until(lock, deadline, [&] { return link->prerolled || link->failed; });
    }
    if (link->failed || ret == GST_STATE_CHANGE_FAILURE) {
        const QString why = link->failed ? link->error : QStringLiteral("the file could not be prepared");
        lock.unlock();
        return fail(why);
    }
    if (ret == GST_STATE_CHANGE_ASYNC && !link->prerolled)
        qCInfo(lcPlayback) << "still preparing" << path << "after" << timeoutMs
                           << "ms; continuing in the background";
    return pipeline;
}

PlaybinPipeline::~PlaybinPipeline()
{
    if (m_link) {
        {
            std::lock_guard lock(m_link->mutex);
            m_link->receiver = nullptr;
            m_link->closing = true;
            m_link->nextSettled.notify_all();
        }
        m_link->alive = false;
    }
    if (m_playbin) {
        gst_element_set_state(m_playbin, GST_STATE_NULL);
        gst_object_unref(m_playbin);
    }
}

bool PlaybinPipeline::queueNext(const QString &path)
{
    const bool joinable = path.isEmpty() || (m_joinable && !isCaf(path));
    std::lock_guard lock(m_link->mutex);
    m_link->queued = joinable ? path : QString();
    m_link->queuedAfter = m_link->heard;
    m_link->settledUpTo = std::max(m_link->settledUpTo, m_link->heard);
    m_link->nextSettled.notify_all();
    return joinable;
}

void PlaybinPipeline::settleNext()
{
    std::lock_guard lock(m_link->mutex);
    m_link->settledUpTo = std::max(m_link->settledUpTo, m_link->heard);
    m_link->nextSettled.notify_all();
}

bool PlaybinPipeline::isJoining() const
{
    std::lock_guard lock(m_link->mutex);
    return !m_link->joining.isEmpty();
}

QString PlaybinPipeline::path() const
{
    return m_link->path;
}

void PlaybinPipeline::setLevelling(bool on)
{
    m_levelling->setEnabled(on);
}

void PlaybinPipeline::play()
{
    gst_element_set_state(m_playbin, GST_STATE_PLAYING);
}

void PlaybinPipeline::pause()
{
    gst_element_set_state(m_playbin, GST_STATE_PAUSED);
}

bool PlaybinPipeline::seek(double seconds)
{
    if (!std::isfinite(seconds))
        return false;
    // A flushing seek waits for the streaming threads, one of which may be
    // waiting for the next file: it goes on without one.
    {
        std::lock_guard lock(m_link->mutex);
        m_link->settledUpTo = std::max(m_link->settledUpTo, m_link->reading);
        m_link->nextSettled.notify_all();
    }
    const gint64 target = gint64(std::max(0.0, seconds) * double(GST_SECOND));
    return gst_element_seek_simple(
        m_playbin, GST_FORMAT_TIME, GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE), target);
}

std::optional<double> PlaybinPipeline::position() const
{
    gint64 ns = -1;
    const bool ok = gst_element_query_position(m_playbin, GST_FORMAT_TIME, &ns);
    return seconds(ok, ns);
}

std::optional<double> PlaybinPipeline::duration() const
{
    gint64 ns = -1;
    const bool ok = gst_element_query_duration(m_playbin, GST_FORMAT_TIME, &ns);
    const std::optional<double> length = seconds(ok, ns);
    if (length && *length > 0)
        return length;
    return std::nullopt;
}

QString PlaybinPipeline::lastError() const
{
    std::lock_guard lock(m_link->mutex);
    return m_link->error;
}
