// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How a command line is handled:
//
//   argv ── bytes to path strings (model/LocalPath.h), so a file name that
//     │     isn't UTF-8 reaches the file as it was typed
//   main ── the command by name; -h/--help anywhere before "--" prints its
//     │     help; options parsed against the command's table (Usage.cpp)
//   COMMAND(Arguments) ── operands checked (badUsage: exit 2, usage on
//                         stderr); a path that is no file or folder named with
//                         the reason (exit 1); output on stdout
//
// Paths given may be file URLs ("file:///...%E9.mp3") as the JSON output
// prints them in "url", so that output can be fed back exactly.

#include <QHash>
#include <QList>
#include <QSet>
#include <QStringList>

#include "library/FolderScan.h"
#include "model/Track.h"

#include <optional>

class JsonWriter;
struct FileTags;

namespace cli {

inline constexpr int usageError = 2;

// One command's arguments, options taken out.
struct Arguments
{
    QStringList operands;
    QHash<QString, QString> values; // "--title" → its value (the last one given)
    QSet<QString> flags;

    std::optional<QString> value(const char *option) const
    {
        const auto it = values.constFind(QLatin1StringView(option));
        return it == values.cend() ? std::nullopt : std::optional<QString>(*it);
    }
    bool has(const char *flag) const { return flags.contains(QLatin1StringView(flag)); }
};

int scan(const Arguments &args);
int tags(const Arguments &args);
int write(const Arguments &args);
int play(const Arguments &args);
int search(const Arguments &args);
int artists(const Arguments &args);
int artwork(const Arguments &args);

struct Command
{
    const char *name;
    const char *synopsis; // the arguments, as usage shows them
    const char *summary;  // one line in the list of commands
    const char *help;     // what --help adds to the synopsis
    QStringList valueOptions;
    QStringList flagOptions;
    int (*run)(const Arguments &);
    // Whether the command runs an event loop (playing, the network), and so
    // needs the application object; the others start faster without one.
    bool eventLoop = false;
};

const Command *findCommand(const QString &name);
// The list of commands with their synopses.
QByteArray overview();
// "usage: tarnwell-cli SYNOPSIS" and the help of one command.
QByteArray helpOf(const Command &command);

// Parses a command's arguments against its options; absent after telling
// what is wrong, with the usage, on stderr.
std::optional<Arguments> parseArguments(const Command &command, const QStringList &args);
// True when -h or --help stands among the options.
bool asksForHelp(const Command &command, const QStringList &args);

// Tells what is wrong with the arguments and how the command is used; returns
// the exit code for it.
int badUsage(const char *command, const QString &problem);

// Why a path given as a song can't be read as one, or empty when it can.
QString fileProblem(const QString &path);
// Why a path given as a folder can't be scanned, or empty when it can.
QString folderProblem(const QString &path);
// Tells about each folder a scan had to pass over; true when there was one.
bool reportUnreadable(const std::vector<UnreadableFolder> &folders);

// The path strings of the arguments, absolute; file URLs become their paths.
QStringList absolutePaths(const QStringList &operands);
// Text given as an option (a tag, a query): bytes that aren't UTF-8 can't be
// text and are shown as U+FFFD.
QString textArgument(const QString &argument);

// The songs below a folder as the library would hold them, in library order,
// and the folders passed over.
QList<Track> libraryOf(const QString &folder, std::vector<UnreadableFolder> *unreadable);
// "tracks": the songs' paths as text, and "urls": the same as exact file URLs.
void writeTrackLists(JsonWriter &w, const QList<Track> &tracks);

// Reads the tags of a file in a format our own parsers don't read whole.
using TrackInfoReader = void (*)(const QString &path, FileTags *tags);
// The reader of those formats, from the module that links TagLib; null after
// telling that the module can't be loaded. Thread-safe.
TrackInfoReader otherFormatReader();

// Prints "tarnwell-cli: " and the message on stderr.
void error(const QString &message);
// Writes bytes to stdout, buffered.
void out(const QByteArray &bytes);

} // namespace cli
