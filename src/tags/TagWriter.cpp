// SPDX-License-Identifier: GPL-3.0-or-later
#include "TagWriter.h"

#include "AtomicReplace.h"
#include "ContainerWriter.h"
#include "FlacMetadata.h"
#include "MetadataWriter.h"
#include "model/Log.h"

#include <taglib/attachedpictureframe.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/tbytevectorstream.h>
#include <taglib/textidentificationframe.h>

#include <QFileInfo>

#include <future>
#include <memory>
#include <vector>

namespace {

std::optional<QString> expected(const FieldEdit &f, const std::optional<QString> &old)
{
    switch (f.action) {
    case FieldEdit::Action::set:
        return f.value;
    case FieldEdit::Action::remove:
        return std::nullopt;
    case FieldEdit::Action::keep:
        break;
    }
    return old;
}

// A kept field must read as before, unless it read as nothing before (a
// comment hidden in a second comment block may surface).
bool fieldsAsEdited(const TagEdit &edit, const TrackMetadata &before, const TrackMetadata &after)
{
    const auto check
        = [](const FieldEdit &f, const std::optional<QString> &old, const std::optional<QString> &now) {
              if (f.action == FieldEdit::Action::keep && !old)
                  return true;
              return now == expected(f, old);
          };
    return check(edit.title, before.title, after.title) && check(edit.artist, before.artist, after.artist)
        && check(edit.album, before.album, after.album) && (!before.genre || after.genre == before.genre);
}

struct FlacLayout
{
    QList<std::pair<quint8, QByteArrayView>> blocks;
    qsizetype audioStart = 0;
    bool complete = false; // ended at a block with the last-block flag
};

FlacLayout flacLayout(QByteArrayView data)
{
    FlacLayout layout;
    qsizetype pos = 4;
    layout.audioStart = pos;
    while (data.size() - pos >= 4) {
        const quint8 header = quint8(data[pos]);
        const qsizetype length = (qsizetype(quint8(data[pos + 1])) << 16)
            | (qsizetype(quint8(data[pos + 2])) << 8) | qsizetype(quint8(data[pos + 3]));
        if (length > data.size() - pos - 4)
            break;
        layout.blocks.append({ quint8(header & 0x7F), data.sliced(pos + 4, length) });
        pos += 4 + length;
        layout.audioStart = pos;
        if (header & 0x80) {
            layout.complete = true;
            break;
        }
    }
    return layout;
}

QString verifyFlac(QByteArrayView before, QByteArrayView after, const TagEdit &edit)
{
    const FlacLayout oldLayout = flacLayout(before);
    const FlacLayout newLayout = flacLayout(after);
    if (!newLayout.complete || newLayout.blocks.isEmpty()
        || newLayout.blocks.last().first != flac::vorbisCommentType)
        return QStringLiteral("the new metadata blocks are damaged");
    QList<std::pair<quint8, QByteArrayView>> kept;
    for (const auto &b : oldLayout.blocks) {
        if (b.first != flac::vorbisCommentType)
            kept.append(b);
    }
    if (newLayout.blocks.first(newLayout.blocks.size() - 1) != kept)
        return QStringLiteral("the other metadata blocks would have changed");
    if (after.sliced(newLayout.audioStart) != before.sliced(oldLayout.audioStart))
        return QStringLiteral("the audio would have changed");
    if (!fieldsAsEdited(edit, parseFLACMetadata(before), parseFLACMetadata(after)))
        return QStringLiteral("the tags did not read back as written");
    return {};
}

// The ID3v2 tag as TagLib (not our own parser) reads it from memory.
struct Id3Reading
{
    TrackMetadata metadata; // genre left out: ID3v2.4 genre lists read differently once in ID3v2.3
    bool hasGenre = false;
    int pictures = 0;
};

Id3Reading readId3(QByteArrayView data)
{
    Id3Reading r;
    TagLib::ByteVectorStream stream(TagLib::ByteVector(data.data(), uint(data.size())));
    TagLib::MPEG::File file(&stream, TagLib::ID3v2::FrameFactory::instance(), false);
    if (!file.isValid() || !file.hasID3v2Tag())
        return r;
    TagLib::ID3v2::Tag *tag = file.ID3v2Tag();
    const auto text = [&](const char *id) -> std::optional<QString> {
        const auto &list = tag->frameListMap()[id];
        if (list.isEmpty())
            return std::nullopt;
        const auto *frame = dynamic_cast<const TagLib::ID3v2::TextIdentificationFrame *>(list.back());
        const std::string utf8
            = (frame ? frame->fieldList().toString("/") : list.back()->toString()).to8Bit(true);
        if (utf8.empty())
            return std::nullopt;
        return QString::fromStdString(utf8);
    };
    r.metadata = { text("TIT2"), text("TPE1"), text("TALB"), std::nullopt };
    r.hasGenre = !tag->frameListMap()["TCON"].isEmpty();
    r.pictures = int(tag->frameListMap()["APIC"].size());
    return r;
}

QString verifyId3(QByteArrayView before, QByteArrayView after, const TagEdit &edit)
{
    if (MetadataWriter::stripID3v2(after) != MetadataWriter::stripID3v2(before))
        return QStringLiteral("the audio would have changed");
    const Id3Reading old = readId3(before);
    const Id3Reading now = readId3(after);
    if (!fieldsAsEdited(edit, old.metadata, now.metadata))
        return QStringLiteral("the tags did not read back as written");
    if (now.pictures != old.pictures || now.hasGenre != old.hasGenre)
        return QStringLiteral("the pictures would not have been carried over");
    return {};
}

QString lowerSuffix(const QString &path)
{
    return QFileInfo(path).suffix().toLower();
}

} // namespace

namespace {

// A save that has written its new file next to the old one and waits for the
// flush to disk and the rename.
struct PendingSave
{
    PendingSave(SaveResult result)
        : done(std::move(result))
    {
    }
    PendingSave(std::unique_ptr<AtomicReplace> r)
        : replace(std::move(r))
    {
    }
    std::optional<SaveResult> done;
    std::unique_ptr<AtomicReplace> replace;
};

// Everything up to the rename; `flushData` off leaves the flush to the caller.
PendingSave prepare(const QString &path, const TagEdit &edit, bool syncFolder, bool flushData)
{
    const QString suffix = lowerSuffix(path);
    const bool ours = suffix == u"flac" || suffix == u"mp3";
    if (!ours && !container::canWrite(suffix))
        return { SaveResult { false,
            QStringLiteral("%1: %2").arg(
                path, MetadataWriter::describe(MetadataWriter::WriteError::unsupportedFormat)) } };

    // A file the user made read-only stays as it is, although replacing it by
    // rename in a writable folder would work.
    if (const QFileInfo info(path); info.exists() && !info.isWritable())
        return { SaveResult { false, QStringLiteral("%1 is read-only").arg(path) } };
    QString why;
    const auto data = readWholeFile(path, &why);
    if (!data)
        return { SaveResult { false, why } };
    if (edit.keepsEverything())
        return { SaveResult { true, {} } };

    if (!ours) {
        const QString failure = container::writeFile(path, suffix, *data, edit, syncFolder);
        return { SaveResult { failure.isEmpty(), failure } };
    }

    const MetadataWriter::Result result = suffix == u"flac" ? MetadataWriter::writeFLACTags(*data, edit)
                                                            : MetadataWriter::writeID3Tags(*data, edit);
    if (!result)
        return { SaveResult { false, QStringLiteral("%1: %2").arg(path, MetadataWriter::describe(result.error)) } };
    if (*result.data == *data)
        return { SaveResult { true, {} } };
    const QString failure
        = suffix == u"flac" ? verifyFlac(*data, *result.data, edit) : verifyId3(*data, *result.data, edit);
    if (!failure.isEmpty())
        return { SaveResult { false, QStringLiteral("%1: %2; the file was left as it was").arg(path, failure) } };

    auto replace = std::make_unique<AtomicReplace>(path);
    replace->setSyncFolder(syncFolder);
    replace->setFlushData(flushData);
    if (!replace->create() || !replace->write(*result.data))
        return { SaveResult { false, replace->errorString() } };
    return PendingSave(std::move(replace));
}

SaveResult commit(PendingSave &pending)
{
    if (pending.done)
        return *pending.done;
    if (!pending.replace->commit())
        return { false, pending.replace->errorString() };
    return { true, {} };
}

SaveResult save(const QString &path, const TagEdit &edit, bool syncFolder)
{
    PendingSave pending = prepare(path, edit, syncFolder, true);
    return commit(pending);
}

} // namespace

SaveResult saveTagsWithReason(const QString &path, const TagEdit &edit)
{
    return save(path, edit, true);
}

QList<SaveResult> saveTags(const QStringList &paths, const TagEdit &edit)
{
    // Files are saved in groups: each new file of a group is written beside its
    // old one, one flush of the file system makes them all durable, and only then
    // are they renamed over the old files. Every file is still old or new, whole,
    // at every moment, at the cost of one flush per group instead of per file.
    // The flush of one group runs while the next group is written.
    constexpr qsizetype groupFiles = 32;
    constexpr qint64 groupBytes = 128LL * 1024 * 1024;
    QList<SaveResult> results;
    results.reserve(paths.size());
    QStringList folders;

    struct Group
    {
        qsizetype first = 0;
        std::vector<PendingSave> saves;
    };
    const auto flush = [](Group &group) {
        for (PendingSave &pending : group.saves) {
            if (pending.replace && !pending.replace->flushFileSystem())
                pending.done = SaveResult { false, pending.replace->errorString() };
        }
    };
    const auto finish = [&](Group &group) {
        for (qsizetype i = 0; i < qsizetype(group.saves.size()); ++i) {
            results.append(commit(group.saves[i]));
            const QString folder = QFileInfo(paths.at(group.first + i)).canonicalPath();
            if (results.last() && !folders.contains(folder))
                folders.append(folder);
        }
    };

    Group flushing;
    std::future<void> flushed;
    for (qsizetype start = 0; start < paths.size();) {
        Group group { start, {} };
        qint64 bytes = 0;
        for (; start < paths.size() && qsizetype(group.saves.size()) < groupFiles && bytes < groupBytes; ++start) {
            group.saves.push_back(prepare(paths.at(start), edit, false, false));
            if (group.saves.back().replace)
                bytes += QFileInfo(paths.at(start)).size();
        }
        if (flushed.valid()) {
            flushed.get();
            finish(flushing);
        }
        flushing = std::move(group);
        flushed = std::async(std::launch::async, [&flush, &flushing] { flush(flushing); });
    }
    if (flushed.valid()) {
        flushed.get();
        finish(flushing);
    }
    for (const QString &folder : folders)
        syncFolder(folder);
    return results;
}

bool saveTags(const QString &path, const TagEdit &edit)
{
    const SaveResult r = saveTagsWithReason(path, edit);
    if (!r)
        qCWarning(lcTags).noquote() << "tags not saved:" << r.reason;
    return r.saved;
}

bool saveTags(const QString &path, const std::optional<QString> &title, const std::optional<QString> &artist,
    const std::optional<QString> &album)
{
    return saveTags(path, TagEdit::fromValues(title, artist, album));
}
