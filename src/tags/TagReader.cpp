// SPDX-License-Identifier: GPL-3.0-or-later
#include "TagReader.h"

#include "ContainerReader.h"
#include "FlacMetadata.h"

namespace {

QString lowerSuffix(const QString &path)
{
    const qsizetype dot = path.lastIndexOf(u'.');
    const qsizetype slash = path.lastIndexOf(u'/');
    if (dot < 0 || dot < slash)
        return {};
    return path.sliced(dot + 1).toLower();
}

} // namespace

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
    const QString suffix = lowerSuffix(path);
    if (suffix == u"flac") {
        const flac::FileInfo info = flac::readFile(path, true);
        return { info.metadata, info.duration };
    }
    const container::Contents c
        = container::read(path, suffix, container::wantTags | container::wantDuration);
    return { container::metadataFromItems(c.items), c.duration };
}
