// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "TagEdit.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

// Title, artist and album of m4a, wav, aiff and aif files, written by TagLib in
// each container's own tag format into a temporary copy, checked, then moved
// over the file. Everything else in the file is left to TagLib to keep.
namespace container {

bool canWrite(const QString &lowerSuffix);

// oldData is the whole file as read. Answers an empty string on success, else why not.
QString writeFile(const QString &path, const QString &lowerSuffix, const QByteArray &oldData,
    const TagEdit &edit, bool syncFolder = true);

// The audio bytes of a wav ("data"), aiff ("SSND") or m4a (every top-level
// "mdat", concatenated) file; nothing when they can't be found.
std::optional<QByteArray> audioPayload(const QString &lowerSuffix, QByteArrayView file);

} // namespace container
