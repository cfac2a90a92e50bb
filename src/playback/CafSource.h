// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

typedef struct _GstElement GstElement;

// CAF files (LPCM, ALAC or AAC inside) have no GStreamer demuxer here, so
// FFmpeg decodes them and the samples go into the playbin's appsrc as
// interleaved 32-bit floats (more than two channels are mixed down to stereo).
//
// The decoding runs in the appsrc's streaming thread, one chunk each time it
// asks for data; seeks arrive in that thread too, under the same stream lock,
// so the decoder is never shared between threads. The file is opened there on
// the first request, not on the thread that loads it.
namespace cafsource {

// Makes the appsrc pull its audio from the file. The decoder lives as long as
// the appsrc.
void attach(GstElement *appsrc, const QString &path);

} // namespace cafsource
