// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AudioFormat.h"
#include "TagEdit.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

// Why a save left a file as it was, in words a person can be shown:
// "Could not save 'x.mp3': " + reason().
enum class SaveError {
    none,
    missing, // the file is not there
    folder,
    notRegularFile, // a FIFO, a device, a socket
    readOnly, // its permission bits deny writing, whoever runs the program
    hardLinked, // replacing it would split its names apart
    unreadable,
    unsupportedFormat, // a kind of file or tag the writers don't handle
    wrongContent, // the bytes are not what the extension says
    noAudio,
    damagedMetadata,
    changedWhileSaving,
    tooLarge,
    writeFailed, // the new file could not be written (a full disk, an I/O error)
    notVerified, // the new contents did not read back as edited
};

struct SaveResult
{
    SaveError error = SaveError::none;
    // What exactly, for the log and the command line: the system's message,
    // the version of a tag, which block is damaged.
    QString detail;

    bool saved() const { return error == SaveError::none; }
    explicit operator bool() const { return saved(); }
    // Short and for the user, e.g. "the file is read-only".
    QString reason() const;
    // "PATH: reason (detail)" for the log and the command line.
    QString message(const QString &path) const;
};

// What a save does to a file, decided from its bytes alone: refused, nothing to
// write, new contents made and checked here (FLAC and MP3), or handed to the
// container writer (WAV, AIFF, MP4). The kind of file comes from its bytes and
// must be the one its extension names.
struct SavePlan
{
    enum class Action { refuse, nothing, write, container };
    Action action = Action::refuse;
    SaveResult refusal; // for refuse
    QByteArray data; // for write: the whole new file
};

SavePlan planSave(QByteArrayView file, const QString &lowerSuffix, const TagEdit &edit);
