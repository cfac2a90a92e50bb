// SPDX-License-Identifier: GPL-3.0-or-later
#include "TagReader.h"

#include "ContainerReader.h"
#include "FlacMetadata.h"

using tagreader::lowerSuffix;

TrackMetadata readMetadata(const QString &path)
{
    const QString suffix = lowerSuffix(path);
    if (suffix == u"flac")
        return flac::readFile(path, false).metadata;
    return container::metadataFromItems(container::read(path, suffix, container::wantTags).items);
}

std::optional<QByteArray> readEmbeddedArtwork(const QString &path)
{
    const QString suffix = lowerSuffix(path);
    if (suffix == u"flac")
        return flac::readPicture(path);
    return container::artworkFromItems(container::read(path, suffix, container::wantPictures).items);
}

std::optional<double> readDuration(const QString &path)
{
    const QString suffix = lowerSuffix(path);
    if (suffix == u"flac")
        return flac::readFile(path, true).duration;
    return container::read(path, suffix, container::wantDuration).duration;
}

FileTags readTrackInfo(const QString &path)
{
    if (std::optional<FileTags> own = readOwnFormatTrackInfo(path))
        return *std::move(own);
    const QString suffix = lowerSuffix(path);
    const container::Contents c
        = container::read(path, suffix, container::wantTags | container::wantDuration);
    return { container::metadataFromItems(c.items), c.duration };
}
