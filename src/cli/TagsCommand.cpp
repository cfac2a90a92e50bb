// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "model/JsonWriter.h"
#include "tags/TagReader.h"

#include <QFileInfo>

int cli::tags(const QStringList &args)
{
    if (args.isEmpty()) {
        error(QStringLiteral("usage: tarnwell-cli tags FILE..."));
        return usageError;
    }
    int code = 0;
    QByteArray buffer;
    buffer.reserve(1 << 16);
    for (const QString &arg : args) {
        const QFileInfo file(arg);
        const QString path = file.absoluteFilePath();
        const FileTags info = readTrackInfo(path);
        // Reading never fails; only a file with nothing to show is looked at.
        if (info.metadata.isEmpty() && !info.duration && !file.isFile()) {
            error(QStringLiteral("%1: no such file").arg(arg));
            code = 1;
            continue;
        }
        JsonWriter json;
        json.beginObject();
        json.key(u"path");
        json.value(path);
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
