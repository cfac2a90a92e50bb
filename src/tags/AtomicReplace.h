// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

#include <sys/types.h>
#include <time.h>

// Which file a path names, and as of when: two looks at a path that give the
// same identity saw the same, unchanged file (a write moves the modification
// time, a rename the inode, chmod, chown, link and xattr changes the change time).
struct FileIdentity
{
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec modified {};
    timespec changed {};

    bool operator==(const FileIdentity &o) const;
};

// Replaces a file with new contents so that the folder holds either the old or
// the new file, whole, at every moment: a temporary file in the same folder,
// written, fsync'ed, renamed over the target, then the folder fsync'ed.
//
// The new file looks like the old one: permission bits, owner and group (as far
// as the process may give them) and extended attributes, ACLs among them. The
// rename happens only while the target is still the file that was read (see
// setExpected); otherwise nothing is written and both files stay as they are.
//
// The temporary file has no name until just before the rename where the file
// system allows (O_TMPFILE); elsewhere, and for writers that need a name, it is
// a hidden file ".NAME.tarnwell-XXXXXX.EXT". Its writer holds a lock on it, so
// that removeLeftovers() can tell the files of a killed save from live ones.
// It is removed on every failure, and by the destructor when commit() never ran.
class AtomicReplace
{
public:
    explicit AtomicReplace(const QString &target);
    ~AtomicReplace();
    AtomicReplace(const AtomicReplace &) = delete;
    AtomicReplace &operator=(const AtomicReplace &) = delete;

    // The identity the target had when it was read; commit() refuses to
    // replace anything else.
    void setExpected(const FileIdentity &identity) { m_expected = identity; }

    // Creates the temporary file; the suffix keeps the target's extension so that
    // tools that go by the name treat it alike.
    bool create();
    bool write(QByteArrayView data);
    // For writers that edit the new file by name (TagLib): call before create()
    // to get a named temporary file, whose name temporaryPath() tells.
    void setNamedTemporary(bool named) { m_named = named; }
    QString temporaryPath() const { return m_tempPath; }
    // The file replaced: through a symbolic link, the file it points at.
    QString target() const { return m_target; }
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
    // True when commit() found the target changed since it was read.
    bool targetChanged() const { return m_targetChanged; }

    // Removes the temporary files that saves killed half-way left in a folder:
    // ours by their name, no longer locked by a living writer.
    static void removeLeftovers(const QString &folder);

private:
    bool fail(const QString &what, int err);
    void discard();
    bool linkAnonymous();
    bool copyAttributes(const struct stat &st);

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
    bool m_targetChanged = false;
    std::optional<FileIdentity> m_expected;
    // The flush clock when the contents were written (see flushFileSystem).
    quint64 m_writtenAt = 0;
    QString m_error;
};

// Flushes a folder's entries (renames into it) to disk.
void syncFolder(const QString &folder);

// A whole regular file as read, with the identity it had meanwhile.
struct WholeFile
{
    QByteArray data;
    FileIdentity identity;
};

// Reads a whole regular file. A path that names no regular file is refused
// (it is opened without blocking, so a FIFO doesn't wait for a writer), and so
// is a file that changed while it was read. On failure `why` says what went wrong and
// `err` holds the errno (ENOENT, EISDIR, EINVAL for other non-regular files,
// ESTALE when it changed, or the failed call's).
std::optional<WholeFile> readWholeFile(const QString &path, QString *why, int *err = nullptr);
