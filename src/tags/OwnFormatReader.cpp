// SPDX-License-Identifier: GPL-3.0-or-later
// The formats read without TagLib, in a file of their own: linking only this
// keeps TagLib out of a program (see TagReader.h).
#include "TagReader.h"

#include "FlacMetadata.h"

namespace tagreader {

QString lowerSuffix(const QString &path)
{
    const qsizetype dot = path.lastIndexOf(u'.');
    const qsizetype slash = path.lastIndexOf(u'/');
    if (dot < 0 || dot < slash)
        return {};
    return path.sliced(dot + 1).toLower();
}

} // namespace tagreader

bool isOwnFormat(const QString &path)
{
    return tagreader::lowerSuffix(path) == u"flac";
}

std::optional<FileTags> readOwnFormatTrackInfo(const QString &path)
{
    if (!isOwnFormat(path))
        return std::nullopt;
    flac::FileInfo info = flac::readFile(path, true);
    return FileTags { std::move(info.metadata), info.duration };
}
