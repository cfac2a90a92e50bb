// SPDX-License-Identifier: GPL-3.0-or-later
// The entry of the tarnwell-cli-media module (see Modules.cpp).
#include "Commands.h"

#include <cstring>

extern "C" Q_DECL_EXPORT int tarnwell_cli_media(const char *command, const cli::Arguments &args)
{
    if (std::strcmp(command, "play") == 0)
        return cli::play(args);
    if (std::strcmp(command, "artwork") == 0)
        return cli::artwork(args);
    return cli::usageError;
}
