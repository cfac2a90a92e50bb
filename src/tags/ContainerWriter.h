// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AudioFormat.h"
#include "SavePlan.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

class AtomicReplace;

// Title, artist and album of WAV, AIFF and MP4 files, written by TagLib in each
// container's own tag format. Everything else in the file is left to TagLib to
// keep; the audio payload is compared byte for byte.
namespace container {

// Makes the temporary copy of the file through `replace` (oldData, the whole
// file as read), lets TagLib edit it by name and checks it: the same audio
// payload, the tags read back as edited. The caller commits.
SaveResult writeInto(AtomicReplace &replace, const QString &path, const QString &lowerSuffix,
    const QByteArray &oldData, const TagEdit &edit);

// The audio bytes of a WAV ("data"), AIFF ("SSND") or MP4 (every top-level
// "mdat", concatenated) file; nothing when they can't be found or are empty.
std::optional<QByteArray> audioPayload(audioformat::Kind kind, QByteArrayView file);

} // namespace container
