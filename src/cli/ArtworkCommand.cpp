// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "artwork/ArtworkLoader.h"
#include "artwork/ImageCodec.h"
#include "model/LocalPath.h"

#include <QCoro/QCoroTask>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Writes the file whole beside its place and renames it there, so a reader
// never sees half a picture. By bytes: QSaveFile would re-encode the name.
QString writeWhole(const QString &path, const QByteArray &data)
{
    const QByteArray target = localpath::toBytes(path);
    QByteArray temporary = target + ".XXXXXX";
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0)
        return QString::fromLocal8Bit(std::strerror(errno));
    qsizetype written = 0;
    while (written < data.size()) {
        const ssize_t n = ::write(fd, data.constData() + written, size_t(data.size() - written));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        written += n;
    }
    int err = written < data.size() ? errno : 0;
    // The permissions a new file gets, where mkostemp gives 0600.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    if (err == 0 && ::fchmod(fd, 0666 & ~mask) != 0)
        err = errno;
    if (::close(fd) != 0 && err == 0)
        err = errno;
    if (err != 0 || ::rename(temporary.constData(), target.constData()) != 0) {
        const QString why = QString::fromLocal8Bit(std::strerror(err ? err : errno));
        ::unlink(temporary.constData());
        return why;
    }
    return {};
}

} // namespace

int cli::artwork(const Arguments &args)
{
    std::optional<QString> artist = args.value("--artist");
    std::optional<QString> album = args.value("--album");
    std::optional<QString> file = args.value("--file");
    const std::optional<QString> outPath = args.value("--out");
    if (artist)
        artist = textArgument(*artist);
    if (album)
        album = textArgument(*album);
    if (file)
        file = absolutePaths({ *file }).first();
    if (!args.operands.isEmpty())
        return badUsage("artwork", QStringLiteral("unexpected argument '%1'").arg(textArgument(args.operands.first())));
    if (!outPath || outPath->isEmpty())
        return badUsage("artwork", QStringLiteral("--out names the picture to write"));
    if (!artist && !album && !file)
        return badUsage("artwork", QStringLiteral("give --artist, --album or --file"));
    if (file) {
        if (const QString why = fileProblem(*file); !why.isEmpty()) {
            error(QStringLiteral("%1: %2").arg(localpath::readable(*file), why));
            return 1;
        }
    }

    ArtworkLoader loader;
    std::optional<QImage> picture;
    if (file)
        picture = QCoro::waitFor(loader.songPicture(localpath::fileUrl(*file), artist, album));
    else if (album)
        picture = QCoro::waitFor(loader.albumArt(artist, album));
    else
        picture = QCoro::waitFor(loader.artistImage(*artist));
    if (!picture) {
        error(QStringLiteral("no picture found"));
        return 1;
    }

    const std::optional<QByteArray> jpeg = artwork::encodeJpeg(*picture);
    const QString out = localpath::absolute(*outPath);
    const QString why = jpeg ? writeWhole(out, *jpeg) : QStringLiteral("the picture could not be encoded");
    if (!why.isEmpty()) {
        error(QStringLiteral("%1: the picture cannot be written (%2)").arg(localpath::readable(out), why));
        return 1;
    }
    return 0;
}
