// SPDX-License-Identifier: GPL-3.0-or-later
// The entries of the tarnwell-cli-library module (see Modules.cpp).
#include "Commands.h"

#include "tags/TagReader.h"

#include <cstring>

extern "C" Q_DECL_EXPORT int tarnwell_cli_library(const char *command, const cli::Arguments &args)
{
    if (std::strcmp(command, "write") == 0)
        return cli::write(args);
    if (std::strcmp(command, "search") == 0)
        return cli::search(args);
    if (std::strcmp(command, "artists") == 0)
        return cli::artists(args);
    return cli::usageError;
}

extern "C" Q_DECL_EXPORT void tarnwell_cli_read_track_info(const QString &path, FileTags *tags)
{
    *tags = readTrackInfo(path);
}
