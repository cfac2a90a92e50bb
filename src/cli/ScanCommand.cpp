// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "library/FolderScan.h"

#include <QFileInfo>

int cli::scan(const QStringList &args)
{
    if (args.size() != 1) {
        error(QStringLiteral("usage: tarnwell-cli scan DIR"));
        return usageError;
    }
    const QFileInfo dir(args.first());
    if (!dir.isDir()) {
        error(QStringLiteral("%1 is not a folder").arg(args.first()));
        return 1;
    }
    const std::vector<std::string> files = scanFolderNative(dir.absoluteFilePath());
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
    return 0;
}
