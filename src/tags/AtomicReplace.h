// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

// Replaces a file with new contents so that the folder holds either the old or
// the new file, whole, at every moment: a temporary file in the same folder
// (same permissions and owner as the file it replaces), written, fsync'ed,
// renamed over the target, then the folder fsync'ed. The temporary file has no
// name until just before the rename where the file system allows (O_TMPFILE),
// so a killed program leaves nothing behind; elsewhere it is a hidden file. It
// is removed on every failure, and by the destructor when commit() never ran.
class AtomicReplace
{
public:
    explicit AtomicReplace(const QString &target);
    ~AtomicReplace();
    AtomicReplace(const AtomicReplace &) = delete;
    AtomicReplace &operator=(const AtomicReplace &) = delete;

    // Creates the temporary file; the suffix keeps the target's extension so that
    // tools that go by the name treat it alike.
    bool create();
    bool write(QByteArrayView data);
    // For writers that edit the new file by name (TagLib): call before create()
    // to get a named temporary file, whose name temporaryPath() tells.
    void setNamedTemporary(bool named) { m_named = named; }
    QString temporaryPath() const { return m_tempPath; }
    bool commit();

    // Leaves the fsync of the folder to the caller (syncFolder below), who
    // replaces many files in it and flushes the folder once at the end.
    void setSyncFolder(bool sync) { m_syncFolder = sync; }

    // Leaves the flush of the new contents to the caller, who writes many
    // files and flushes them together with flushFileSystem() before commit().
    void setFlushData(bool flush) { m_flushData = flush; }
    // Flushes the file system that holds the temporary file, unless a flush of
    // the same file system since this file was written made it durable already.
    bool flushFileSystem();

    // Why the last step failed, for the log and the command line.
    QString errorString() const { return m_error; }

private:
    bool fail(const QString &what, int err);
    void discard();
    bool linkAnonymous();

    QString m_target;
    QString m_tempPath; // empty while the temporary file has no name
    QString m_pattern;
    int m_suffixLength = 0;
    bool m_anonymous = false;
    bool m_named = false;
    int m_fd = -1;
    bool m_committed = false;
    bool m_syncFolder = true;
    bool m_flushData = true;
    // The flush clock when the contents were written (see flushFileSystem).
    quint64 m_writtenAt = 0;
    QString m_error;
};

// Failures the tests inject where root ignores permissions or no small file
// system can be mounted. Each counts down on the matching system call and
// fails it (with the given errno) when it reaches 1; 0 means never.
namespace tagio::faults {
enum Step { readWhole, createTemporary, writeData, syncFile, renameFile, stepCount };
void inject(Step step, int nthCall, int err);
void clear();
// Used by the I/O code: true when this call must fail, with errno set.
bool shouldFail(Step step);
// A write that fails half-way: at most this many bytes are written before the
// injected writeData failure.
void setPartialWriteBytes(qint64 bytes);
qint64 partialWriteBytes();
} // namespace tagio::faults

// Flushes a folder's entries (renames into it) to disk.
void syncFolder(const QString &folder);

// Reads a whole regular file; nothing when it can't be opened or read.
std::optional<QByteArray> readWholeFile(const QString &path, QString *why);
