// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QtGlobal>
#include <QString>
#include <QStringList>

// Helpers shared by the tests: files on disk and external tools. Paths are
// path strings (model/LocalPath.h), so they may name files whose names are not
// UTF-8, for the tests and for the tools they run.
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

// Runs an external program to completion (at most timeoutMs) and returns what it printed.
ToolResult run(const QString &program, const QStringList &args, int timeoutMs = 60000);

// Makes a short audio file with sox (and ffmpeg for m4a) at test time.
// Returns false when the tools are missing or fail.
bool makeAudio(const QString &path, double seconds = 1.0);

// While it lives, the calling thread is held to file permissions even when it
// runs as root, so a test can make a file unreadable or a folder unwritable
// for real.
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
