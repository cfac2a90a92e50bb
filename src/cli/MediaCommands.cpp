// SPDX-License-Identifier: GPL-3.0-or-later
// play and artwork need GStreamer, FFmpeg and Qt GUI; the other commands need
// none of them. Those two live in a module of their own, loaded only when one
// of them runs, so that scan, tags, write, search and artists start fast.
#include "Commands.h"

#include <QCoreApplication>
#include <QLibrary>

namespace {

using MediaEntry = int (*)(const char *command, const cli::Arguments &args);

int runMedia(const char *command, const cli::Arguments &args)
{
    // Beside the program in the build tree; in the library folder once installed.
    const QString name = QStringLiteral("tarnwell-cli-media");
    for (const QString &dir : {QCoreApplication::applicationDirPath(), QStringLiteral(TARNWELL_CLI_MODULE_DIR)}) {
        QLibrary module(dir + QLatin1Char('/') + name);
        if (const auto entry = MediaEntry(module.resolve("tarnwell_cli_media")))
            return entry(command, args);
    }
    cli::error(QStringLiteral("cannot load %1: the installation is incomplete").arg(name));
    return 1;
}

} // namespace

namespace cli {

int play(const Arguments &args)
{
    return runMedia("play", args);
}

int artwork(const Arguments &args)
{
    return runMedia("artwork", args);
}

} // namespace cli
