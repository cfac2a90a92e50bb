// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/TrackMetadata.h"

#include <QString>

#include <functional>

// How browsing learns a file's tags. The program passes readMetadata (tags/);
// tests pass tags kept in memory. Called on pool threads, concurrently: the
// function must be thread-safe.
using MetadataReader = std::function<TrackMetadata(const QString &path)>;

// The tag reader of the program.
MetadataReader defaultMetadataReader();
