// SPDX-License-Identifier: GPL-3.0-or-later
// tarnwell-probe MODE [FOLDER...]: the desktop program with a probe that
// measures it (BenchProbe.h). Built for bench/ and the tests, never installed.
#include "BenchProbe.h"
#include "Program.h"

#include <QQmlEngineExtensionPlugin>

#include <cstdio>
#include <vector>

Q_IMPORT_QML_PLUGIN(TarnwellPlugin)

int main(int argc, char **argv)
{
    const BenchProbe::Clock start = BenchProbe::now();
    const QString mode = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    if (!BenchProbe::modes.contains(mode)) {
        std::fprintf(stderr, "usage: tarnwell-probe %s [FOLDER...]\n",
                     qPrintable(BenchProbe::modes.join(QLatin1Char('|'))));
        return 2;
    }
    // The program sees its usual command line: the mode is not a folder.
    std::vector<char *> arguments{argv[0]};
    arguments.insert(arguments.end(), argv + 2, argv + argc);
    arguments.push_back(nullptr);
    int count = argc - 1;
    return program::run(count, arguments.data(), [&](QQuickWindow *window, AppState &state) {
        new BenchProbe(mode, start, window, &state);
    });
}
