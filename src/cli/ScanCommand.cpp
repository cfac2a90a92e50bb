// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "model/LocalPath.h"

int cli::scan(const Arguments &args)
{
    if (args.operands.size() != 1)
        return badUsage("scan", QStringLiteral("give one folder"));
    const QString folder = absolutePaths(args.operands).first();
    if (const QString why = folderProblem(folder); !why.isEmpty()) {
        error(QStringLiteral("%1: %2").arg(localpath::readable(folder), why));
        return 1;
    }
    std::vector<UnreadableFolder> unreadable;
    const std::vector<std::string> files = scanFolderNative(folder, &unreadable);
    QByteArray buffer;
    buffer.reserve(1 << 20);
    for (const std::string &f : files) {
        buffer.append(f.data(), qsizetype(f.size()));
        buffer.append('\n');
        if (buffer.size() > (1 << 20) - 4096) {
            out(buffer);
            buffer.clear();
        }
    }
    out(buffer);
    return reportUnreadable(unreadable) ? 1 : 0;
}
