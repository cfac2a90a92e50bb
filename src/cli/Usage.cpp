// SPDX-License-Identifier: GPL-3.0-or-later
// The commands, their options and their help, and how arguments are read
// against them.
#include "Commands.h"

#include <cstdio>

namespace cli {

namespace {

const QString helpOption = QStringLiteral("--help");
const QString shortHelpOption = QStringLiteral("-h");
const QString endOfOptions = QStringLiteral("--");

const Command commands[] = {
    { "scan", "scan DIR", "audio files below DIR, one path a line",
      "Lists the audio files below DIR (mp3, aiff, aif, wav, m4a, caf, flac), one\n"
      "absolute path a line, in the order the library holds them: by file name.\n"
      "Hidden files and folders are left out and symbolic links are not followed.\n"
      "Paths are printed as the file system spells them, byte for byte, so names\n"
      "that are not UTF-8 can be handed to the other commands as they are.\n"
      "A folder below DIR that cannot be read is named on stderr and passed over;\n"
      "the exit status is then 1.",
      {}, {}, scan },
    { "tags", "tags FILE...", "the tags of each FILE, one JSON object a line",
      "Reads each FILE's tags and prints one JSON object a line:\n"
      "  path      the file's path as text (bytes of the name that are not UTF-8\n"
      "            are shown as U+FFFD)\n"
      "  url       the exact path as a file URL, which every command takes back\n"
      "  title, artist, album, genre, and duration in seconds; absent ones are\n"
      "            left out\n"
      "A FILE that is missing, a folder or unreadable is named on stderr with the\n"
      "reason, and the exit status is 1.",
      {}, {}, tags },
    { "write", "write FILE... [--title T] [--artist A] [--album B]",
      "writes tags; options not given keep the file's value, \"\" removes",
      "Writes title, artist and album into each FILE (FLAC, MP3, WAV, AIFF, M4A).\n"
      "An option not given keeps each file's value; an empty value (\"\") removes\n"
      "the tag; --title=T works as well. Every FILE takes the same edit. A save is\n"
      "all or nothing: a file that cannot be written safely is left as it was and\n"
      "named on stderr with the reason; the exit status is then 1.",
      { QStringLiteral("--title"), QStringLiteral("--artist"), QStringLiteral("--album") }, {}, write },
    { "play", "play [--shuffle] [--repeat] [--no-gapless] [--no-levelling] FILE...",
      "plays the files in order, printing the position once a second",
      "Plays the files in order (--shuffle: in random order), printing each song as\n"
      "it starts and the position once a second; --repeat starts over after the\n"
      "last one. Songs follow each other without a gap (--no-gapless loads each\n"
      "anew) and play at the level their ReplayGain track gain asks for\n"
      "(--no-levelling: as they are). Media keys work over MPRIS while it plays;\n"
      "Ctrl+C stops.",
      {},
      { QStringLiteral("--shuffle"), QStringLiteral("--repeat"), QStringLiteral("--no-gapless"),
        QStringLiteral("--no-levelling") },
      play, true },
    { "search", "search DIR QUERY", "the search answer for QUERY over the songs below DIR, as JSON",
      "Searches the songs below DIR for QUERY as the search bar does and prints the\n"
      "answer as one JSON object, each list in the program's order and cut as the\n"
      "program cuts it:\n"
      "  artists   id, name, trackCount\n"
      "  albums    id, displayName, artist, tracks (paths), urls (the same as file\n"
      "            URLs)\n"
      "  tracks    path, url, name, artist, album",
      {}, {}, search },
    { "artists", "artists DIR", "artists and their songs below DIR, in display order, as JSON",
      "Groups the songs below DIR by artist as the artists screen does and prints\n"
      "them as a JSON array in display order: name, tracks (paths) and urls (the\n"
      "same as file URLs).",
      {}, {}, artists },
    { "artwork", "artwork [--artist A] [--album B] [--file AUDIO] --out FILE.jpg",
      "finds a picture the way the program does and writes it",
      "Finds a picture the way the program does and writes it as a JPEG file:\n"
      "  --file AUDIO      the song's own picture, else its album's (--artist and\n"
      "                    --album replace its tags)\n"
      "  --album B         the album's picture (with --artist A when given)\n"
      "  --artist A        alone: the artist's picture\n"
      "The exit status is 1 when no picture is found.",
      { QStringLiteral("--artist"), QStringLiteral("--album"), QStringLiteral("--file"), QStringLiteral("--out") },
      {}, artwork, true },
};

constexpr int summaryColumn = 30;

QByteArray usageLine(const Command &command)
{
    return QByteArray("usage: tarnwell-cli ") + command.synopsis + '\n';
}

bool takesValue(const Command &command, const QString &option)
{
    return command.valueOptions.contains(option);
}

} // namespace

const Command *findCommand(const QString &name)
{
    for (const Command &c : commands) {
        if (name == QLatin1StringView(c.name))
            return &c;
    }
    return nullptr;
}

QByteArray overview()
{
    QByteArray text = "usage: tarnwell-cli COMMAND [ARGUMENT...]\n\ncommands:\n";
    for (const Command &c : commands) {
        QByteArray line = QByteArray("  ") + c.synopsis;
        if (line.size() < summaryColumn)
            line += QByteArray(summaryColumn - line.size(), ' ');
        else
            line += '\n' + QByteArray(summaryColumn, ' ');
        text += line + c.summary + '\n';
    }
    text += "\nFILE and DIR may also be file URLs, as the \"url\" fields of the JSON print them.\n"
            "Run 'tarnwell-cli COMMAND --help' for more about a command.\n";
    return text;
}

QByteArray helpOf(const Command &command)
{
    return usageLine(command) + '\n' + command.help + '\n';
}

bool asksForHelp(const Command &command, const QStringList &args)
{
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args[i];
        if (arg == endOfOptions)
            return false;
        if (arg == helpOption || arg == shortHelpOption)
            return true;
        if (takesValue(command, arg))
            ++i; // its value, whatever it says
    }
    return false;
}

std::optional<Arguments> parseArguments(const Command &command, const QStringList &args)
{
    Arguments parsed;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args[i];
        if (arg == endOfOptions) {
            parsed.operands += args.mid(i + 1);
            break;
        }
        if (!arg.startsWith(u'-') || arg == u"-") {
            parsed.operands.append(arg);
            continue;
        }
        const qsizetype eq = arg.indexOf(u'=');
        const QString name = eq > 0 ? arg.first(eq) : arg;
        if (takesValue(command, name)) {
            if (eq > 0) {
                parsed.values.insert(name, arg.sliced(eq + 1));
            } else if (i + 1 < args.size()) {
                parsed.values.insert(name, args[++i]);
            } else {
                badUsage(command.name, QStringLiteral("%1 needs a value").arg(name));
                return std::nullopt;
            }
        } else if (command.flagOptions.contains(name) && eq < 0) {
            parsed.flags.insert(name);
        } else if (command.flagOptions.contains(name)) {
            badUsage(command.name, QStringLiteral("%1 takes no value").arg(name));
            return std::nullopt;
        } else {
            badUsage(command.name, QStringLiteral("unknown option '%1'").arg(textArgument(arg)));
            return std::nullopt;
        }
    }
    return parsed;
}

int badUsage(const char *command, const QString &problem)
{
    const Command *c = findCommand(QString::fromLatin1(command));
    error(QStringLiteral("%1: %2").arg(QLatin1StringView(command), problem));
    if (c)
        std::fputs((usageLine(*c) + "Run 'tarnwell-cli " + c->name + " --help' for more.\n").constData(), stderr);
    return usageError;
}

} // namespace cli
