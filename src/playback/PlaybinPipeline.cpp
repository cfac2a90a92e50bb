// SPDX-License-Identifier: GPL-3.0-or-later
#include "PlaybinPipeline.h"

#include "CafSource.h"
#include "model/Log.h"

#include <QFile>
#include <QFileInfo>
#include <QMetaObject>
#include <QObject>
#include <QThreadPool>

#include <gst/gst.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

// Shared by the pipeline (GUI thread) and its bus handler (any GStreamer thread).
struct BusLink
{
    std::mutex mutex;
    std::condition_variable prerollDone;
    // Guarded by mutex. Cleared before the pipeline is torn down, so no event is
    // posted once the owner has let go of it.
    QObject *receiver = nullptr;
    bool prerolled = false;
    bool failed = false;
    QString error;

    // GUI thread only.
    bool alive = true;
    PlaybinPipeline::EventHandler handler;
};

namespace {

using Event = PlaybinPipeline::Event;

// GstPlayFlags: audio only, with software volume; no video or subtitle branches,
// so cover pictures inside a file never pull in a video sink.
constexpr int playFlagAudio = 1 << 1;
constexpr int playFlagSoftVolume = 1 << 4;

// Called with link->mutex held.
void deliver(const std::shared_ptr<BusLink> &link, Event event)
{
    if (!link->receiver)
        return;
    QMetaObject::invokeMethod(
        link->receiver,
        [link, event] {
            if (link->alive && link->handler)
                link->handler(event);
        },
        Qt::QueuedConnection);
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
    default:
        break;
    }
    return GST_BUS_DROP;
}

void deleteLink(gpointer data)
{
    delete static_cast<std::shared_ptr<BusLink> *>(data);
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

std::unique_ptr<PlaybinPipeline> PlaybinPipeline::open(
    const QString &path, QObject *receiver, EventHandler handler, int timeoutMs, QString *error)
{
    auto fail = [error](const QString &why) {
        if (error)
            *error = why;
        return nullptr;
    };
    if (!initGStreamer())
        return fail(QStringLiteral("GStreamer is not available"));
    const QFileInfo info(path);
    if (!info.isFile())
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

    const QString absolute = info.absoluteFilePath();
    if (info.suffix().compare(u"caf", Qt::CaseInsensitive) == 0) {
        g_object_set(playbin, "uri", "appsrc://", nullptr);
        g_signal_connect_data(playbin, "source-setup", G_CALLBACK(onSourceSetup), new QString(absolute),
            deletePath, GConnectFlags(0));
    } else {
        GError *uriError = nullptr;
        gchar *uri = gst_filename_to_uri(QFile::encodeName(absolute).constData(), &uriError);
        if (!uri) {
            const QString why = QString::fromUtf8(uriError ? uriError->message : "bad file name");
            g_clear_error(&uriError);
            return fail(why);
        }
        g_object_set(playbin, "uri", uri, nullptr);
        g_free(uri);
    }

    auto link = std::make_shared<BusLink>();
    link->receiver = receiver;
    link->handler = std::move(handler);
    pipeline->m_link = link;
    GstBus *bus = gst_element_get_bus(playbin);
    gst_bus_set_sync_handler(bus, onBusMessage, new std::shared_ptr<BusLink>(link), deleteLink);
    gst_object_unref(bus);

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
        }
        m_link->alive = false;
    }
    if (m_playbin) {
        gst_element_set_state(m_playbin, GST_STATE_NULL);
        gst_object_unref(m_playbin);
    }
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
