// SPDX-License-Identifier: GPL-3.0-or-later
// tarnwell-cli: the library's capabilities from the shell, for scripts,
// benchmarks and checks against other tools.
#include "Commands.h"

#include <QCoreApplication>

#include <cstdio>
#include <functional>

namespace {

struct Command
{
    const char *name;
    const char *usage;
    std::function<int(const QStringList &)> run;
};

const Command commands[] = {
    {"scan", "scan DIR                    audio files below DIR, one path a line", cli::scan},
    {"tags", "tags FILE...                one JSON object a line: path, title, artist, album, genre, duration",
     cli::tags},
    {"write", "write FILE... [--title T] [--artist A] [--album B]\n"
              "                              writes tags; options not given keep the file's value, \"\" removes",
     cli::write},
    {"play", "play [--shuffle] [--repeat] [--no-gapless] [--no-levelling] FILE...\n"
             "                              plays the files in order, printing the position once a second",
     cli::play},
    {"search", "search DIR QUERY            the search answer for QUERY over the songs below DIR, as JSON",
     cli::search},
    {"artists", "artists DIR                 artists and their songs below DIR, in display order, as JSON",
     cli::artists},
    {"artwork", "artwork [--artist A] [--album B] [--file AUDIO] --out FILE.jpg\n"
                "                              finds a picture the way the program does and writes it",
     cli::artwork},
};

int usage()
{
    std::fputs("usage: tarnwell-cli COMMAND ...\n\ncommands:\n", stderr);
    for (const Command &c : commands)
        std::fprintf(stderr, "  %s\n", c.usage);
    return cli::usageError;
}

} // namespace

namespace cli {

void error(const QString &message)
{
    std::fprintf(stderr, "tarnwell-cli: %s\n", message.toLocal8Bit().constData());
}

void out(const QByteArray &utf8)
{
    std::fwrite(utf8.constData(), 1, size_t(utf8.size()), stdout);
}

} // namespace cli

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Tarnwell"));
    QCoreApplication::setOrganizationName(QStringLiteral("Tarnwell"));
    QStringList args = QCoreApplication::arguments().mid(1);
    if (args.isEmpty())
        return usage();
    const QString name = args.takeFirst();
    for (const Command &c : commands) {
        if (name == QLatin1StringView(c.name)) {
            const int code = c.run(args);
            std::fflush(stdout);
            return code;
        }
    }
    cli::error(QStringLiteral("unknown command '%1'").arg(name));
    return usage();
}
