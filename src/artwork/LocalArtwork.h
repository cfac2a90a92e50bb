// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Pictures on disk: the well-known image files beside songs, and the JPEG copies
// kept under the Music folder. All blocking; run them on the thread pool.

#include <QImage>
#include <QString>

#include <optional>

class DecodeMemo;

namespace artwork {

// A name made fit to be one folder name: / \ : and | become "-", * ? " < and >
// their full-width forms, invisible characters (controls, line breaks, tabs,
// bidirectional overrides) are dropped, then spaces (any Unicode space
// separator) are trimmed at both ends. A name still over 255 bytes of UTF-8 is
// cut and ends in "~" and a digest of the whole name. The result may be
// empty, "." or "..": the copy paths refuse those.
QString sanitizedPathComponent(const QString &text);

// Music/<artist>/artist.jpg, or absent when there is no Music folder or the
// sanitised name can't be a folder of its own (empty, "." or "..": such a name
// would put the copy into Music itself or above it).
std::optional<QString> artistCopyPath(const QString &musicFolder, const QString &artist);

// Music/<artist>/<album>/folder.jpg under the same rules, for both names.
std::optional<QString> albumCopyPath(const QString &musicFolder, const QString &artist, const QString &album);

// The picture of a folder: first the well-known names in order of preference
// (folder, cover, album, front, artwork, albumart, each as .jpg, .jpeg, .png),
// then any other .jpg/.jpeg/.png of the folder in name order, skipping hidden
// files, the extension compared without regard to case. The first file that
// decodes wins. With a memo, files decoded before are not decoded again.
std::optional<QImage> folderImage(const QString &directory, DecodeMemo *memo = nullptr);

// Writes the picture as a JPEG (quality 85), creating the missing folders.
// Failures are logged and otherwise ignored; an existing file is replaced.
void saveJPEG(const QImage &image, const QString &path);

} // namespace artwork
