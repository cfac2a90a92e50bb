// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "model/JsonWriter.h"
#include "model/LocalPath.h"
#include "tags/TagReader.h"

int cli::tags(const Arguments &args)
{
    if (args.operands.isEmpty())
        return badUsage("tags", QStringLiteral("give at least one file"));
    int code = 0;
    QByteArray buffer;
    buffer.reserve(1 << 16);
    for (const QString &path : absolutePaths(args.operands)) {
        // Reading never fails, so what would make it read nothing is told here.
        if (const QString why = fileProblem(path); !why.isEmpty()) {
            error(QStringLiteral("%1: %2").arg(localpath::readable(path), why));
            code = 1;
            continue;
        }
        const FileTags info = readTrackInfo(path);
        JsonWriter json;
        json.beginObject();
        json.key(u"path");
        json.value(localpath::readable(path));
        json.key(u"url");
        json.value(QString::fromLatin1(localpath::fileUrl(path).toEncoded()));
        const std::pair<const char16_t *, const std::optional<QString> *> fields[] = {
            { u"title", &info.metadata.title },
            { u"artist", &info.metadata.artist },
            { u"album", &info.metadata.album },
            { u"genre", &info.metadata.genre },
        };
        for (const auto &[name, value] : fields) {
            if (*value) {
                json.key(name);
                json.value(**value);
            }
        }
        if (info.duration) {
            json.key(u"duration");
            json.value(*info.duration);
        }
        json.endObject();
        buffer.append(json.take());
        buffer.append('\n');
        if (buffer.size() > (1 << 16) - 4096) {
            out(buffer);
            buffer.clear();
        }
    }
    out(buffer);
    return code;
}
