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
