// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "SavePlan.h"
#include "TagEdit.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// Saving title, artist and album into a file on disk:
//
//   look at the path ── refused: missing, a folder or other non-regular file
//     │                 (never opened), read-only by its permission bits, hard-linked
//   read it whole, with its identity (device, inode, size, times)
//   planSave (SavePlan) ── the kind of file from its bytes, which must match the
//     │                    extension; FLAC and MP3 by our own writers, checked;
//     │                    WAV, AIFF, MP4 through TagLib on the temporary copy
//   AtomicReplace ── the new file beside the old one, owner, group, permission
//     │              bits and extended attributes copied; leftovers of killed
//     │              saves in the folder removed
//   settle ── a file written to in the last second is given that second, so a
//     │       copy still running shows itself
//   commit ── only while the path still names the file that was read; else
//             "changed while saving" and nothing is written
//
// On any failure the file stays byte for byte as it was and no temporary file
// is left behind. Blocking and thread-safe for different files: run it on the
// thread pool.

SaveResult saveTags(const QString &path, const TagEdit &edit);

// The batch editor's form: one edit for many files, in order, one answer per
// file. Files are flushed to disk in groups instead of one by one.
QList<SaveResult> saveTags(const QStringList &paths, const TagEdit &edit);

// The editors' form: a field given (non-empty) is written, a field absent or
// empty is removed. Yes or no; the reason for a no goes to the tarnwell.tags log.
bool saveTags(const QString &path, const std::optional<QString> &title, const std::optional<QString> &artist,
    const std::optional<QString> &album);
