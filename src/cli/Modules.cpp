// SPDX-License-Identifier: GPL-3.0-or-later
// The program itself holds what the quickest commands need: scan, and tags
// for the formats read without TagLib. The rest lives in two modules, loaded
// only when needed:
//   tarnwell-cli-library  write, search, artists, and tags of the other
//                         formats (TagLib)
//   tarnwell-cli-media    play and artwork (GStreamer, FFmpeg, Qt GUI)
#include "Commands.h"

#include <climits>
#include <dlfcn.h>
#include <unistd.h>

namespace {

// The program's folder as the file system spells it, from the kernel: the
// commands that need no application object run without one.
QByteArray programFolder()
{
    char path[PATH_MAX];
    const ssize_t n = ::readlink("/proc/self/exe", path, sizeof path);
    if (n <= 0)
        return {};
    const QByteArray program(path, n);
    return program.left(program.lastIndexOf('/'));
}

// A module's entry, or null after telling that the module can't be loaded.
void *entryOf(const char *module, const char *entry)
{
    // Beside the program in the build tree; in the library folder once installed.
    const QByteArray file = QByteArray(module) + ".so";
    for (const QByteArray &dir : {programFolder(), QByteArray(TARNWELL_CLI_MODULE_DIR)}) {
        const QByteArray path = dir + '/' + file;
        if (::access(path.constData(), F_OK) != 0)
            continue;
        // Kept loaded until the program ends.
        if (void *library = ::dlopen(path.constData(), RTLD_NOW | RTLD_LOCAL)) {
            if (void *f = ::dlsym(library, entry))
                return f;
        }
        cli::error(QStringLiteral("cannot load %1: %2").arg(QLatin1StringView(file), QString::fromLocal8Bit(::dlerror())));
        return nullptr;
    }
    cli::error(QStringLiteral("cannot load %1: the installation is incomplete").arg(QLatin1StringView(file)));
    return nullptr;
}

using CommandEntry = int (*)(const char *command, const cli::Arguments &args);

int runIn(const char *module, const char *entry, const char *command, const cli::Arguments &args)
{
    const auto run = CommandEntry(entryOf(module, entry));
    return run ? run(command, args) : 1;
}

int runLibrary(const char *command, const cli::Arguments &args)
{
    return runIn("tarnwell-cli-library", "tarnwell_cli_library", command, args);
}

int runMedia(const char *command, const cli::Arguments &args)
{
    return runIn("tarnwell-cli-media", "tarnwell_cli_media", command, args);
}

} // namespace

namespace cli {

int write(const Arguments &args)
{
    return runLibrary("write", args);
}

int search(const Arguments &args)
{
    return runLibrary("search", args);
}

int artists(const Arguments &args)
{
    return runLibrary("artists", args);
}

int play(const Arguments &args)
{
    return runMedia("play", args);
}

int artwork(const Arguments &args)
{
    return runMedia("artwork", args);
}

TrackInfoReader otherFormatReader()
{
    static const auto reader = TrackInfoReader(entryOf("tarnwell-cli-library", "tarnwell_cli_read_track_info"));
    return reader;
}

} // namespace cli
