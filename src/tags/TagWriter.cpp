// SPDX-License-Identifier: GPL-3.0-or-later
#include "TagWriter.h"

#include "AtomicReplace.h"
#include "ContainerWriter.h"
#include "model/LocalPath.h"
#include "model/Log.h"

#include <QFileInfo>
#include <QSet>

#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

// How long a file must stay still after it was last written before it is
// replaced: a song still being copied into the folder shows itself by growing.
constexpr auto settleTime = std::chrono::milliseconds(1000);

QString systemError(int err)
{
    return QString::fromLocal8Bit(std::strerror(err));
}

// Everything that refuses a file before it is opened.
SaveResult lookAt(const QString &path)
{
    const QByteArray name = localpath::toBytes(path);
    struct stat st;
    if (::stat(name.constData(), &st) != 0) {
        const int err = errno;
        if (err == ENOENT || err == ENOTDIR)
            return { SaveError::missing, {} };
        return { SaveError::unreadable, systemError(err) };
    }
    if (S_ISDIR(st.st_mode))
        return { SaveError::folder, {} };
    if (!S_ISREG(st.st_mode))
        return { SaveError::notRegularFile, {} };
    // Root may write anything; a file nobody may write stays as it is all the same.
    if ((st.st_mode & 0222) == 0 || ::faccessat(AT_FDCWD, name.constData(), W_OK, AT_EACCESS) != 0)
        return { SaveError::readOnly, {} };
    if (st.st_nlink > 1)
        return { SaveError::hardLinked, QStringLiteral("%1 names").arg(st.st_nlink) };
    return {};
}

SaveResult readFailure(int err, const QString &why)
{
    switch (err) {
    case ENOENT:
    case ENOTDIR:
        return { SaveError::missing, {} };
    case EISDIR:
        return { SaveError::folder, {} };
    case EINVAL:
        return { SaveError::notRegularFile, {} };
    case ESTALE:
        return { SaveError::changedWhileSaving, {} };
    default:
        return { SaveError::unreadable, why };
    }
}

// Written recently enough (or dated in the future) that it may still be written to.
bool mayStillBeWritten(const FileIdentity &identity)
{
    timespec now {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const auto since = std::chrono::seconds(now.tv_sec - identity.modified.tv_sec)
        + std::chrono::nanoseconds(now.tv_nsec - identity.modified.tv_nsec);
    return since < settleTime;
}

// A save that has written its new file next to the old one and waits for the
// flush to disk and the rename.
struct PendingSave
{
    std::optional<SaveResult> done;
    std::unique_ptr<AtomicReplace> replace;
    Clock::time_point settled; // not renamed before
};

struct Options
{
    bool syncFolder = true;
    bool flushData = true;
    QSet<QString> *cleanedFolders = nullptr; // folders already rid of leftovers
};

// Everything up to the rename.
PendingSave prepare(const QString &path, const TagEdit &edit, const Options &options)
{
    const auto finished = [](SaveResult r) { return PendingSave { std::move(r), nullptr, {} }; };
    if (SaveResult refused = lookAt(path); !refused)
        return finished(std::move(refused));
    const Clock::time_point readAt = Clock::now();
    QString why;
    int err = 0;
    const auto file = readWholeFile(path, &why, &err);
    if (!file)
        return finished(readFailure(err, why));
    const QString suffix = QFileInfo(path).suffix().toLower();
    const SavePlan plan = planSave(file->data, suffix, edit);
    if (plan.action == SavePlan::Action::refuse)
        return finished(plan.refusal);
    if (plan.action == SavePlan::Action::nothing)
        return finished({});

    PendingSave pending { std::nullopt, std::make_unique<AtomicReplace>(path),
        mayStillBeWritten(file->identity) ? readAt + settleTime : readAt };
    const QString folder = QFileInfo(pending.replace->target()).path();
    if (!options.cleanedFolders || !options.cleanedFolders->contains(folder)) {
        AtomicReplace::removeLeftovers(folder);
        if (options.cleanedFolders)
            options.cleanedFolders->insert(folder);
    }
    AtomicReplace &replace = *pending.replace;
    replace.setExpected(file->identity);
    replace.setSyncFolder(options.syncFolder);
    replace.setFlushData(options.flushData);
    if (plan.action == SavePlan::Action::container) {
        if (SaveResult r = container::writeInto(replace, path, suffix, file->data, edit); !r)
            return finished(std::move(r));
    } else if (!replace.create() || !replace.write(plan.data)) {
        return finished({ SaveError::writeFailed, replace.errorString() });
    }
    return pending;
}

SaveResult commit(PendingSave &pending)
{
    if (pending.done)
        return *pending.done;
    std::this_thread::sleep_until(pending.settled);
    if (!pending.replace->commit())
        return { pending.replace->targetChanged() ? SaveError::changedWhileSaving : SaveError::writeFailed,
            pending.replace->targetChanged() ? QString() : pending.replace->errorString() };
    return {};
}

} // namespace

SaveResult saveTags(const QString &path, const TagEdit &edit)
{
    PendingSave pending = prepare(path, edit, {});
    return commit(pending);
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
    QSet<QString> cleaned;
    const Options options { false, false, &cleaned };

    struct Group
    {
        std::vector<PendingSave> saves;
    };
    const auto flush = [](Group &group) {
        for (PendingSave &pending : group.saves) {
            if (pending.replace && !pending.replace->flushFileSystem())
                pending.done = SaveResult { SaveError::writeFailed, pending.replace->errorString() };
        }
    };
    const auto finish = [&](Group &group) {
        for (PendingSave &pending : group.saves) {
            results.append(commit(pending));
            if (!pending.replace || !results.last())
                continue;
            if (const QString folder = QFileInfo(pending.replace->target()).path(); !folders.contains(folder))
                folders.append(folder);
        }
    };

    Group flushing;
    std::future<void> flushed;
    for (qsizetype start = 0; start < paths.size();) {
        Group group;
        qint64 bytes = 0;
        for (; start < paths.size() && qsizetype(group.saves.size()) < groupFiles && bytes < groupBytes;
             ++start) {
            group.saves.push_back(prepare(paths.at(start), edit, options));
            struct stat st;
            if (group.saves.back().replace && ::stat(localpath::toBytes(paths.at(start)).constData(), &st) == 0)
                bytes += st.st_size;
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

bool saveTags(const QString &path, const std::optional<QString> &title, const std::optional<QString> &artist,
    const std::optional<QString> &album)
{
    const SaveResult r = saveTags(path, TagEdit::fromValues(title, artist, album));
    if (!r)
        qCWarning(lcTags).noquote() << "tags not saved:" << r.message(path);
    return r.saved();
}
