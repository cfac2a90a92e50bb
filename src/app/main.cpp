// SPDX-License-Identifier: GPL-3.0-or-later
#include "Program.h"

#include <QQmlEngineExtensionPlugin>

Q_IMPORT_QML_PLUGIN(TarnwellPlugin)

int main(int argc, char **argv)
{
    return program::run(argc, argv);
}
