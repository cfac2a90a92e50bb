// SPDX-License-Identifier: GPL-3.0-or-later
#include "LevellingStage.h"

#include "model/Log.h"

#include <gst/gst.h>

#include <algorithm>

namespace {

GstPadProbeReturn onEvent(GstPad *, GstPadProbeInfo *info, gpointer data)
{
    // Serialized with the samples: nothing of the new stream has passed yet.
    if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) == GST_EVENT_STREAM_START)
        static_cast<LevellingStage *>(data)->startNextStream();
    return GST_PAD_PROBE_OK;
}

} // namespace

LevellingStage::LevellingStage()
{
    GstElement *volume = gst_element_factory_make("volume", "levelling");
    if (!volume) {
        qCWarning(lcPlayback) << "the GStreamer volume element is missing: no volume levelling";
        return;
    }
    m_volume = GST_ELEMENT(gst_object_ref_sink(volume));
    GstPad *sink = gst_element_get_static_pad(m_volume, "sink");
    m_probe = gst_pad_add_probe(sink, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, onEvent, this, nullptr);
    gst_object_unref(sink);
}

LevellingStage::~LevellingStage()
{
    if (!m_volume)
        return;
    GstPad *sink = gst_element_get_static_pad(m_volume, "sink");
    gst_pad_remove_probe(sink, m_probe);
    gst_object_unref(sink);
    gst_object_unref(m_volume);
}

void LevellingStage::expect(const QString &path, std::optional<replaygain::TrackGain> gain)
{
    std::lock_guard lock(m_mutex);
    m_pending.push_back({ path, gain });
}

void LevellingStage::startNextStream()
{
    Pending next;
    {
        std::lock_guard lock(m_mutex);
        if (m_pending.empty()) {
            // A stream nobody announced: play it at the pre-amp rather than
            // at the level of the song before.
            m_current = {};
            apply();
            return;
        }
        next = std::move(m_pending.front());
        m_pending.pop_front();
    }
    const replaygain::TrackGain gain = next.gain ? *next.gain : replaygain::readTrackGain(next.path);
    std::lock_guard lock(m_mutex);
    m_current = gain;
    apply();
}

void LevellingStage::setEnabled(bool enabled)
{
    std::lock_guard lock(m_mutex);
    m_enabled = enabled;
    apply();
}

bool LevellingStage::isEnabled() const
{
    std::lock_guard lock(m_mutex);
    return m_enabled;
}

double LevellingStage::factor() const
{
    std::lock_guard lock(m_mutex);
    return m_factor;
}

void LevellingStage::apply()
{
    // The element goes no higher than ten times (+20 dB).
    m_factor = m_enabled ? std::min(replaygain::levellingFactor(m_current), 10.0) : 1.0;
    // At exactly 1.0 the element passes the samples through untouched.
    if (m_volume)
        g_object_set(m_volume, "volume", m_factor, nullptr);
}
