// SPDX-License-Identifier: GPL-3.0-or-later
#include "CafSource.h"

#include "model/LocalPath.h"
#include "model/Log.h"

#include <QByteArray>

#include <gst/app/gstappsrc.h>
#include <gst/gst.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <cstring>
#include <mutex>

namespace {

// About 90 ms at 44.1 kHz: small enough to start quickly, large enough that
// the per-buffer cost stays negligible.
constexpr int chunkFrames = 4096;

QString averrorText(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromUtf8(text);
}

class CafDecoder
{
public:
    explicit CafDecoder(QByteArray path)
        : m_path(std::move(path))
    {
    }
    ~CafDecoder();

    void needData(GstAppSrc *src);
    bool seekData(guint64 nanoseconds);

private:
    bool open(GstAppSrc *src);
    void fail(GstAppSrc *src, const QString &why);
    bool seekTo(guint64 nanoseconds);
    // Decodes until at least chunkFrames frames are in m_pcm; false at the end.
    bool decodeChunk();
    bool convert(AVFrame *frame);
    bool makeResampler(const AVFrame *frame);
    void push(GstAppSrc *src);

    std::mutex m_mutex;
    QByteArray m_path;
    AVFormatContext *m_format = nullptr;
    AVCodecContext *m_codec = nullptr;
    SwrContext *m_swr = nullptr;
    AVPacket *m_packet = nullptr;
    AVFrame *m_frame = nullptr;
    int m_stream = -1;
    int m_rate = 0;
    int m_channels = 0; // of the output
    // What the resampler was made for; a change mid-stream makes a new one.
    int m_inRate = 0;
    int m_inFormat = -1;
    int m_inChannels = 0;

    bool m_opened = false;
    bool m_failed = false;
    bool m_draining = false;
    bool m_ended = false;
    QByteArray m_pcm;
    // Timestamp of the next sample frame handed on, in frames at m_rate.
    qint64 m_nextFrame = 0;
    // After a seek the decoder restarts at a packet boundary before the target;
    // frames before the target are dropped.
    qint64 m_trimUntil = -1;
    guint64 m_pendingSeek = 0;
};

CafDecoder::~CafDecoder()
{
    swr_free(&m_swr);
    av_frame_free(&m_frame);
    av_packet_free(&m_packet);
    avcodec_free_context(&m_codec);
    avformat_close_input(&m_format);
}

void CafDecoder::fail(GstAppSrc *src, const QString &why)
{
    m_failed = true;
    qCInfo(lcPlayback) << "cannot decode" << localpath::fromBytes(m_path) << ":" << why;
    GError *error
        = g_error_new(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_OPEN_READ, "%s", why.toUtf8().constData());
    gst_element_post_message(GST_ELEMENT(src), gst_message_new_error(GST_OBJECT(src), error, nullptr));
    g_error_free(error);
}

bool CafDecoder::open(GstAppSrc *src)
{
    m_opened = true;
    // Only the CAF demuxer and only local files: FFmpeg's probing would also
    // accept, say, a playlist named .caf and follow its links to the network.
    const AVInputFormat *caf = av_find_input_format("caf");
    AVDictionary *options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    int ret = caf ? avformat_open_input(&m_format, ("file:" + m_path).constData(), caf, &options)
                  : AVERROR_DEMUXER_NOT_FOUND;
    av_dict_free(&options);
    if (ret < 0) {
        fail(src, averrorText(ret));
        return false;
    }
    ret = avformat_find_stream_info(m_format, nullptr);
    if (ret < 0) {
        fail(src, averrorText(ret));
        return false;
    }
    const AVCodec *codec = nullptr;
    m_stream = av_find_best_stream(m_format, AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
    if (m_stream < 0 || !codec) {
        fail(src, QStringLiteral("no audio stream"));
        return false;
    }
    const AVStream *stream = m_format->streams[m_stream];
    m_codec = avcodec_alloc_context3(codec);
    if (!m_codec || avcodec_parameters_to_context(m_codec, stream->codecpar) < 0) {
        fail(src, QStringLiteral("no decoder context"));
        return false;
    }
    ret = avcodec_open2(m_codec, codec, nullptr);
    if (ret < 0) {
        fail(src, averrorText(ret));
        return false;
    }
    m_rate = m_codec->sample_rate;
    const int inChannels = m_codec->ch_layout.nb_channels;
    if (m_rate <= 0 || inChannels <= 0) {
        fail(src, QStringLiteral("no sample rate or channel count"));
        return false;
    }
    m_channels = std::min(inChannels, 2);
    m_packet = av_packet_alloc();
    m_frame = av_frame_alloc();
    if (!m_packet || !m_frame) {
        fail(src, QStringLiteral("out of memory"));
        return false;
    }

    GstCaps *caps
        = gst_caps_new_simple("audio/x-raw", "format", G_TYPE_STRING, "F32LE", "layout", G_TYPE_STRING,
            "interleaved", "rate", G_TYPE_INT, m_rate, "channels", G_TYPE_INT, m_channels, nullptr);
    if (m_channels == 2)
        gst_caps_set_simple(caps, "channel-mask", GST_TYPE_BITMASK, guint64(0x3), nullptr);
    gst_app_src_set_caps(src, caps);
    gst_caps_unref(caps);

    gint64 length = -1;
    if (stream->duration != AV_NOPTS_VALUE && stream->duration > 0)
        length = av_rescale_q(stream->duration, stream->time_base, AVRational { 1, int(GST_SECOND) });
    else if (m_format->duration != AV_NOPTS_VALUE && m_format->duration > 0)
        length = av_rescale(m_format->duration, GST_SECOND, AV_TIME_BASE);
    if (length > 0)
        gst_app_src_set_duration(src, GstClockTime(length));

    if (m_pendingSeek > 0)
        seekTo(m_pendingSeek);
    return true;
}

bool CafDecoder::makeResampler(const AVFrame *frame)
{
    swr_free(&m_swr);
    AVChannelLayout in = {};
    if (frame->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&in, frame->ch_layout.nb_channels);
    else
        av_channel_layout_copy(&in, &frame->ch_layout);
    AVChannelLayout out = {};
    av_channel_layout_default(&out, m_channels);
    int ret = swr_alloc_set_opts2(&m_swr, &out, AV_SAMPLE_FMT_FLT, m_rate, &in, AVSampleFormat(frame->format),
        frame->sample_rate, 0, nullptr);
    av_channel_layout_uninit(&in);
    av_channel_layout_uninit(&out);
    if (ret >= 0)
        ret = swr_init(m_swr);
    if (ret < 0) {
        qCInfo(lcPlayback) << "no sample converter:" << averrorText(ret);
        swr_free(&m_swr);
        return false;
    }
    m_inRate = frame->sample_rate;
    m_inFormat = frame->format;
    m_inChannels = frame->ch_layout.nb_channels;
    return true;
}

bool CafDecoder::convert(AVFrame *frame)
{
    if (frame->nb_samples <= 0)
        return true;
    if (!m_swr || frame->sample_rate != m_inRate || frame->format != m_inFormat
        || frame->ch_layout.nb_channels != m_inChannels) {
        if (!makeResampler(frame))
            return false;
    }

    qint64 skip = 0;
    if (m_trimUntil >= 0 && frame->best_effort_timestamp == AV_NOPTS_VALUE)
        m_trimUntil = -1;
    if (m_trimUntil >= 0) {
        const AVStream *stream = m_format->streams[m_stream];
        const qint64 start
            = av_rescale_q(frame->best_effort_timestamp, stream->time_base, AVRational { 1, m_rate });
        skip = std::max<qint64>(0, m_trimUntil - start);
        if (start + frame->nb_samples >= m_trimUntil)
            m_trimUntil = -1;
    }

    const int bytesPerFrame = m_channels * int(sizeof(float));
    const int room = swr_get_out_samples(m_swr, frame->nb_samples);
    if (room <= 0)
        return true;
    const qsizetype old = m_pcm.size();
    m_pcm.resize(old + qsizetype(room) * bytesPerFrame);
    auto *out = reinterpret_cast<uint8_t *>(m_pcm.data() + old);
    const int got = swr_convert(
        m_swr, &out, room, const_cast<const uint8_t **>(frame->extended_data), frame->nb_samples);
    const qint64 kept = std::max<qint64>(0, got - skip);
    if (kept > 0 && skip > 0)
        std::memmove(out, out + skip * bytesPerFrame, size_t(kept * bytesPerFrame));
    m_pcm.resize(old + kept * bytesPerFrame);
    return true;
}

bool CafDecoder::decodeChunk()
{
    const int bytesPerFrame = m_channels * int(sizeof(float));
    while (m_pcm.size() / bytesPerFrame < chunkFrames) {
        int ret = avcodec_receive_frame(m_codec, m_frame);
        if (ret == 0) {
            const bool ok = convert(m_frame);
            av_frame_unref(m_frame);
            if (!ok)
                return false;
            continue;
        }
        if (ret == AVERROR_EOF)
            return false;
        if (ret != AVERROR(EAGAIN)) {
            qCInfo(lcPlayback) << "decoding stopped:" << averrorText(ret);
            return false;
        }
        if (m_draining)
            return false;
        ret = av_read_frame(m_format, m_packet);
        if (ret < 0) {
            avcodec_send_packet(m_codec, nullptr);
            m_draining = true;
            continue;
        }
        if (m_packet->stream_index == m_stream) {
            ret = avcodec_send_packet(m_codec, m_packet);
            if (ret < 0 && ret != AVERROR(EAGAIN))
                qCDebug(lcPlayback) << "skipping a damaged packet:" << averrorText(ret);
        }
        av_packet_unref(m_packet);
    }
    return true;
}

void CafDecoder::push(GstAppSrc *src)
{
    const int bytesPerFrame = m_channels * int(sizeof(float));
    const qint64 frames = m_pcm.size() / bytesPerFrame;
    if (frames <= 0)
        return;
    GstBuffer *buffer = gst_buffer_new_memdup(m_pcm.constData(), gsize(frames * bytesPerFrame));
    GST_BUFFER_PTS(buffer) = gst_util_uint64_scale_int(guint64(m_nextFrame), GST_SECOND, m_rate);
    GST_BUFFER_DURATION(buffer) = gst_util_uint64_scale_int(guint64(frames), GST_SECOND, m_rate);
    GST_BUFFER_OFFSET(buffer) = guint64(m_nextFrame);
    GST_BUFFER_OFFSET_END(buffer) = guint64(m_nextFrame + frames);
    m_nextFrame += frames;
    m_pcm.clear();
    gst_app_src_push_buffer(src, buffer);
}

void CafDecoder::needData(GstAppSrc *src)
{
    std::lock_guard lock(m_mutex);
    if (m_failed || m_ended)
        return;
    if (!m_opened && !open(src))
        return;
    const bool more = decodeChunk();
    push(src);
    if (!more) {
        m_ended = true;
        gst_app_src_end_of_stream(src);
    }
}

bool CafDecoder::seekTo(guint64 nanoseconds)
{
    const AVStream *stream = m_format->streams[m_stream];
    const qint64 target = qint64(gst_util_uint64_scale_int(nanoseconds, m_rate, GST_SECOND));
    const qint64 timestamp = av_rescale_q(target, AVRational { 1, m_rate }, stream->time_base);
    const int ret = av_seek_frame(m_format, m_stream, timestamp, AVSEEK_FLAG_BACKWARD);
    if (ret < 0) {
        qCInfo(lcPlayback) << "seek failed:" << averrorText(ret);
        return false;
    }
    avcodec_flush_buffers(m_codec);
    if (m_swr)
        swr_init(m_swr);
    m_pcm.clear();
    m_draining = false;
    m_ended = false;
    m_nextFrame = target;
    m_trimUntil = target;
    return true;
}

bool CafDecoder::seekData(guint64 nanoseconds)
{
    std::lock_guard lock(m_mutex);
    if (m_failed)
        return false;
    if (!m_opened) {
        // The initial seek to the start arrives before the first request for data.
        m_pendingSeek = nanoseconds;
        return true;
    }
    return seekTo(nanoseconds);
}

void onNeedData(GstAppSrc *src, guint, gpointer data)
{
    static_cast<CafDecoder *>(data)->needData(src);
}

gboolean onSeekData(GstAppSrc *, guint64 offset, gpointer data)
{
    return static_cast<CafDecoder *>(data)->seekData(offset);
}

void deleteDecoder(gpointer data)
{
    delete static_cast<CafDecoder *>(data);
}

} // namespace

void cafsource::attach(GstElement *appsrc, const QString &path)
{
    static std::once_flag quietFFmpeg;
    // FFmpeg's notices would go to stderr; our log says why a file didn't play.
    std::call_once(quietFFmpeg, [] { av_log_set_level(AV_LOG_ERROR); });

    GstAppSrc *src = GST_APP_SRC(appsrc);
    g_object_set(src, "format", GST_FORMAT_TIME, nullptr);
    gst_app_src_set_stream_type(src, GST_APP_STREAM_TYPE_SEEKABLE);
    GstAppSrcCallbacks callbacks = {};
    callbacks.need_data = onNeedData;
    callbacks.seek_data = onSeekData;
    gst_app_src_set_callbacks(src, &callbacks, new CafDecoder(localpath::toBytes(path)), deleteDecoder);
}
