// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "artwork/ArtworkLoader.h"
#include "artwork/ImageCodec.h"

#include <QCoro/QCoroTask>
#include <QFileInfo>
#include <QSaveFile>

namespace {

const char usageText[] =
    "usage: tarnwell-cli artwork [--artist A] [--album B] [--file AUDIO] --out FILE.jpg\n"
    "  --file: the song's own picture, else its album's (--artist/--album replace its tags)\n"
    "  --album without --file: the album's picture (with --artist when given)\n"
    "  --artist alone: the artist's picture";

struct Arguments
{
    std::optional<QString> artist;
    std::optional<QString> album;
    std::optional<QString> file;
    QString out;
};

std::optional<Arguments> parse(const QStringList &args)
{
    Arguments a;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &option = args[i];
        if (i + 1 >= args.size())
            return std::nullopt;
        const QString value = args[++i];
        if (option == u"--artist")
            a.artist = value;
        else if (option == u"--album")
            a.album = value;
        else if (option == u"--file")
            a.file = value;
        else if (option == u"--out")
            a.out = value;
        else
            return std::nullopt;
    }
    if (a.out.isEmpty() || (!a.artist && !a.album && !a.file))
        return std::nullopt;
    return a;
}

} // namespace

int cli::artwork(const QStringList &args)
{
    const std::optional<Arguments> a = parse(args);
    if (!a) {
        error(QString::fromLatin1(usageText));
        return usageError;
    }
    if (a->file && !QFileInfo(*a->file).isFile()) {
        error(QStringLiteral("%1 is not a file").arg(*a->file));
        return 1;
    }

    ArtworkLoader loader;
    std::optional<QImage> picture;
    if (a->file)
        picture = QCoro::waitFor(loader.songPicture(QUrl::fromLocalFile(QFileInfo(*a->file).absoluteFilePath()),
                                                    a->artist, a->album));
    else if (a->album)
        picture = QCoro::waitFor(loader.albumArt(a->artist, a->album));
    else
        picture = QCoro::waitFor(loader.artistImage(*a->artist));
    if (!picture) {
        error(QStringLiteral("no picture found"));
        return 1;
    }

    const std::optional<QByteArray> jpeg = artwork::encodeJpeg(*picture);
    QSaveFile out(a->out);
    if (!jpeg || !out.open(QIODevice::WriteOnly) || out.write(*jpeg) != jpeg->size() || !out.commit()) {
        error(QStringLiteral("could not write %1: %2").arg(a->out, out.errorString()));
        return 1;
    }
    return 0;
}
