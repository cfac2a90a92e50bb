// SPDX-License-Identifier: GPL-3.0-or-later
#include "TagReader.h"

TrackMetadata readMetadata(const QString &)
{
    return {};
}

std::optional<QByteArray> readEmbeddedArtwork(const QString &)
{
    return std::nullopt;
}
