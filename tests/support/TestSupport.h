// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QtGlobal>

// Files on disk and external tools for the tests. Paths are path strings
// (model/LocalPath.h), so they may name files whose names are not UTF-8.
namespace testsupport {

// Writes bytes to dir/relativePath, creating folders; returns the absolute path.
QString writeFile(const QString &dir, const QString &relativePath, const QByteArray &bytes = {});
QByteArray readFile(const QString &path);

struct ToolResult
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};
// Runs an external program to completion (at most timeoutMs).
ToolResult run(const QString &program, const QStringList &args, int timeoutMs = 60000);

// A short 440 Hz stereo file made by sox (ffmpeg for m4a, caf and mp3).
bool makeAudio(const QString &path, double seconds = 1.0);

// While it lives, the calling thread is held to file permissions even as
// root, so a test can make a file unreadable or a folder unwritable for real.
class PermissionsEnforced
{
public:
    PermissionsEnforced();
    ~PermissionsEnforced();
    PermissionsEnforced(const PermissionsEnforced &) = delete;
    PermissionsEnforced &operator=(const PermissionsEnforced &) = delete;

private:
    quint32 m_effective = 0;
};

} // namespace testsupport
