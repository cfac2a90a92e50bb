// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// File names on Linux are bytes, and not every name is UTF-8: a disk filled by
// an older system holds names like "caf\xE9.mp3" in Latin-1. Qt decodes names
// with replacement characters, after which the file can't be found again. So
// a path travels through the program in one of two lossless forms:
//
//   the file system's bytes ──fromBytes──► path string ──fileUrl──► Track::url
//          ▲                                 │    ▲                   │ (%E9 kept
//          └─────────────toBytes─────────────┘    └──────pathOf───────┘  as ASCII)
//
//   - a path string: a QString in which every byte that is not part of valid
//     UTF-8 is held as one lone surrogate, U+DC80 + (byte - 0x80). Valid names
//     are the usual QString. This is what the plain functions (scan, tag
//     reading and writing, the player) take.
//   - a file URL: valid parts as QUrl::fromLocalFile has them, raw bytes
//     percent-encoded. It is what a Track holds and the playlists file stores.
//
// toBytes gives the exact name for open(2), TagLib and GStreamer; readable gives
// what is shown on screen and in JSON (the raw bytes as U+FFFD). Never hand a
// path string to QFile, QFileInfo, QDir or QFileSystemWatcher: they re-encode
// it and miss such names.

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>
#include <QUrl>

namespace localpath {

// The bytes as a path string; every byte sequence comes back from toBytes.
QString fromBytes(QByteArrayView bytes);
// The file system's bytes of a path string.
QByteArray toBytes(QStringView path);

// True when the path holds bytes that are not valid UTF-8.
bool hasRawBytes(QStringView path);
// The path as text for people: each raw byte becomes U+FFFD.
QString readable(QStringView path);

// The file URL of an absolute path string (the same QUrl as
// QUrl::fromLocalFile for valid UTF-8).
QUrl fileUrl(const QString &path);
QUrl fileUrlFromBytes(QByteArrayView bytes);

// The path string of a local file URL; empty for any other URL and for a path
// holding a NUL byte, which no file can have.
QString pathOf(const QUrl &url);
// The bytes of that path, to open the file with.
QByteArray bytesOf(const QUrl &url);

// True when the path names a regular file (through symbolic links), as
// QFileInfo::isFile would say for a name it could encode.
bool isFile(const QString &path);

// The path with every symbolic link resolved, or empty when it names nothing.
QString canonical(const QString &path);

// An absolute, cleaned path: a relative one is taken from the current folder;
// a file URL ("file:///...") is taken as its path.
QString absolute(const QString &pathOrUrl);

} // namespace localpath
