// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "TagEdit.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// Saving title, artist and album into a file on disk. The whole file is read,
// the writer for its extension (lower-cased) builds the new contents (FLAC and
// mp3 by our own writers; m4a, wav, aiff and aif through TagLib on a copy; caf
// and the rest are refused), the result is checked (the tags read back as
// edited, the audio bytes are the old ones) and only then does it replace the
// file, atomically, keeping its permissions. On any failure the file stays
// byte for byte as it was and no temporary file is left behind.
//
// Blocking and thread-safe for different files: run it on the thread pool.

struct SaveResult
{
    bool saved = false;
    QString reason; // why not, when not saved

    explicit operator bool() const { return saved; }
};

SaveResult saveTagsWithReason(const QString &path, const TagEdit &edit);

// Yes or no; the reason for a no goes to the tarnwell.tags log.
bool saveTags(const QString &path, const TagEdit &edit);

// The batch editor's form: one edit for many files, in order, one answer (with
// its reason) per file. Folders are flushed to disk once at the end instead of
// after every file.
QList<SaveResult> saveTags(const QStringList &paths, const TagEdit &edit);

// The editors' form: a field given (non-empty) is written, a field absent or
// empty is removed.
bool saveTags(const QString &path, const std::optional<QString> &title, const std::optional<QString> &artist,
    const std::optional<QString> &album);
