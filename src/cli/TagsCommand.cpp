// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "model/JsonWriter.h"
#include "tags/TagReader.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Why a path can't be read as a song, or nothing when it can.
QString unreadableBecause(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat st;
    if (::stat(name.constData(), &st) != 0)
        return errno == ENOENT || errno == ENOTDIR ? QStringLiteral("there is no such file")
                                                   : QString::fromLocal8Bit(std::strerror(errno));
    if (S_ISDIR(st.st_mode))
        return QStringLiteral("it is a folder, not a file");
    if (!S_ISREG(st.st_mode))
        return QStringLiteral("it is not a regular file");
    if (::faccessat(AT_FDCWD, name.constData(), R_OK, AT_EACCESS) != 0)
        return QStringLiteral("the file cannot be read (%1)")
            .arg(QString::fromLocal8Bit(std::strerror(errno)));
    return {};
}

} // namespace

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
        // Reading never fails, so what would make it read nothing is told here.
        if (const QString why = unreadableBecause(arg); !why.isEmpty()) {
            error(QStringLiteral("%1: %2").arg(arg, why));
            code = 1;
            continue;
        }
        const QString path = QFileInfo(arg).absoluteFilePath();
        const FileTags info = readTrackInfo(path);
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
