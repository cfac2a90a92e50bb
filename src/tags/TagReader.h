// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/TrackMetadata.h"

#include <QByteArray>
#include <QString>

#include <optional>

// Reads title, artist, album and genre of one audio file. Never fails: a file
// that can't be read answers all fields absent. Blocking and thread-safe; call
// it from the thread pool, never from the GUI thread.
TrackMetadata readMetadata(const QString &path);

// The first embedded picture of the file, as the encoded bytes found in the file
// (JPEG, PNG, ...). Decoding is left to the caller (off the GUI thread).
std::optional<QByteArray> readEmbeddedArtwork(const QString &path);
