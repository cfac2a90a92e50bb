// SPDX-License-Identifier: GPL-3.0-or-later
#include "MetadataReader.h"

#include "tags/TagReader.h"

MetadataReader defaultMetadataReader()
{
    return [](const QString &path) { return readMetadata(path); };
}
