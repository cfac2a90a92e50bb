// SPDX-License-Identifier: GPL-3.0-or-later
#include "Commands.h"

#include "model/JsonWriter.h"
#include "model/LocalPath.h"
#include "model/ParallelFor.h"
#include "tags/TagReader.h"

namespace {

// One file's line, or why it can't be read.
struct Answer
{
    QByteArray line;
    QString problem;
};

FileTags readFile(const QString &path)
{
    if (std::optional<FileTags> own = readOwnFormatTrackInfo(path))
        return *std::move(own);
    FileTags tags;
    if (const cli::TrackInfoReader read = cli::otherFormatReader())
        read(path, &tags);
    return tags;
}

Answer answerFor(const QString &path)
{
    const FileTags info = readFile(path);
    // Reading never fails: when it found nothing, what may have kept it from
    // reading is told (asked only then, it costs a file of tags nothing).
    if (info.metadata.isEmpty() && !info.duration) {
        if (QString why = cli::fileProblem(path); !why.isEmpty())
            return {{}, QStringLiteral("%1: %2").arg(localpath::readable(path), why)};
    }
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
    QByteArray line = json.take();
    line.append('\n');
    return {std::move(line), {}};
}

} // namespace

int cli::tags(const Arguments &args)
{
    if (args.operands.isEmpty())
        return badUsage("tags", QStringLiteral("give at least one file"));
    const QStringList paths = absolutePaths(args.operands);
    // The formats read without TagLib don't load it: FLAC files alone start fastest.
    const bool others = !std::all_of(paths.cbegin(), paths.cend(), isOwnFormat);
    if (others && !otherFormatReader())
        return 1;
    // Files are read on every core a batch at a time, and told in the order given.
    constexpr qsizetype batch = 512;
    int code = 0;
    QByteArray buffer;
    buffer.reserve(1 << 16);
    for (qsizetype from = 0; from < paths.size(); from += batch) {
        const QStringList some = paths.mid(from, batch);
        QList<Answer> answers(some.size());
        Answer *into = answers.data();
        if (some.size() < 16) { // too few to be worth starting threads
            for (qsizetype i = 0; i < some.size(); ++i)
                into[i] = answerFor(some[i]);
        } else {
            parallelFor(*QThreadPool::globalInstance(), some.size(),
                [&](qsizetype i) { into[i] = answerFor(some[i]); });
        }
        for (const Answer &answer : answers) {
            if (!answer.problem.isEmpty()) {
                error(answer.problem);
                code = 1;
                continue;
            }
            buffer.append(answer.line);
            if (buffer.size() > (1 << 16) - 4096) {
                out(buffer);
                buffer.clear();
            }
        }
    }
    out(buffer);
    return code;
}
