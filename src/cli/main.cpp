// SPDX-License-Identifier: GPL-3.0-or-later
// tarnwell-cli: the library's capabilities from the shell, for scripts,
// benchmarks and checks against other tools.
#include "Commands.h"

#include "model/LocalPath.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

namespace cli {

void error(const QString &message)
{
    std::fprintf(stderr, "tarnwell-cli: %s\n", message.toUtf8().constData());
}

void out(const QByteArray &bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
}

} // namespace cli

namespace {

int finish(int code)
{
    std::fflush(stdout);
    return code;
}

// A command without an event loop has nothing left to tear down once its
// output is out: the process ends without running the libraries' exit
// handlers, which cost a quick command a good part of its time.
[[noreturn]] void finishNow(int code)
{
    std::fflush(stdout);
    std::fflush(stderr);
    std::_Exit(code);
}

} // namespace

int main(int argc, char **argv)
{
    // From argv itself: QCoreApplication::arguments() decodes with
    // replacement characters, and a file name that isn't UTF-8 would be lost.
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args.append(localpath::fromBytes(argv[i]));

    if (args.isEmpty()) {
        std::fputs(cli::overview().constData(), stderr);
        return cli::usageError;
    }
    const QString name = args.takeFirst();
    if (name == u"--help" || name == u"-h") {
        cli::out(cli::overview());
        return finish(0);
    }
    const cli::Command *command = cli::findCommand(name);
    if (!command) {
        cli::error(QStringLiteral("unknown command '%1'").arg(cli::textArgument(name)));
        std::fputs(cli::overview().constData(), stderr);
        return cli::usageError;
    }
    if (cli::asksForHelp(*command, args)) {
        cli::out(cli::helpOf(*command));
        return finish(0);
    }
    const std::optional<cli::Arguments> parsed = cli::parseArguments(*command, args);
    if (!parsed)
        return cli::usageError;
    if (!command->eventLoop)
        finishNow(command->run(*parsed));
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Tarnwell"));
    QCoreApplication::setOrganizationName(QStringLiteral("Tarnwell"));
    return finish(command->run(*parsed));
}
