// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <array>
#include <string>
#include <vector>

// The audio file extensions the library accepts, compared lower-cased.
inline constexpr std::array<const char *, 7> audioExtensions = {
    "mp3", "aiff", "aif", "wav", "m4a", "caf", "flac"};

// True when the file name's lower-cased extension is one of audioExtensions.
bool hasAudioExtension(QStringView fileName);

// Paths here are path strings (model/LocalPath.h): exact for every name.
struct FolderTree
{
    QStringList audioFiles; // absolute paths, sorted by file name (see scanFolder)
    QStringList folders;    // the root and every non-hidden folder below it
};

// A folder the walk could not go into: its path as the file system spells it
// and the errno of the failure.
struct UnreadableFolder
{
    std::string path;
    int error = 0;
};

// Lists every regular audio file below a folder: hidden entries and everything
// below hidden folders are skipped, symbolic links are never followed (so a link
// loop can't trap the walk), unreadable folders are passed over. The files are
// sorted by file name (extension included) with the user's locale collation; the
// sort is stable and the walk takes subfolders in name order, so the result is
// the same on every run. Safe to call from any thread.
FolderTree scanTree(const QString &folder);

// The audio files of scanTree(folder), as the file system spells their paths
// (for output that must not be re-encoded), and the folders passed over.
std::vector<std::string> scanFolderNative(const QString &folder,
                                          std::vector<UnreadableFolder> *unreadable = nullptr);

// The audio files of scanTree(folder).
QStringList scanFolder(const QString &folder);
// The same as URLs, and the folders of the tree when asked for.
QList<QUrl> scanFolder(const QUrl &folder, QStringList *folders = nullptr);


// Whether a path is the folder or lies below it ("/a/bc" is not inside "/a/b").
bool isInside(const QString &path, const QString &folder);
