// SPDX-License-Identifier: GPL-3.0-or-later
// Paths from the command line, and what is wrong with them in words.
#include "Commands.h"

#include "model/LocalPath.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace cli {

namespace {

QString systemError(int err)
{
    return QString::fromLocal8Bit(std::strerror(err));
}

} // namespace

QString fileProblem(const QString &path)
{
    const QByteArray name = localpath::toBytes(path);
    struct stat st;
    if (::stat(name.constData(), &st) != 0) {
        const int err = errno;
        return err == ENOENT || err == ENOTDIR
            ? QStringLiteral("there is no such file")
            : QStringLiteral("the file cannot be read (%1)").arg(systemError(err));
    }
    if (S_ISDIR(st.st_mode))
        return QStringLiteral("it is a folder, not a file");
    if (!S_ISREG(st.st_mode))
        return QStringLiteral("it is not a regular file");
    if (::faccessat(AT_FDCWD, name.constData(), R_OK, AT_EACCESS) != 0)
        return QStringLiteral("the file cannot be read (%1)").arg(systemError(errno));
    return {};
}

QString folderProblem(const QString &path)
{
    const QByteArray name = localpath::toBytes(path);
    struct stat st;
    if (::stat(name.constData(), &st) != 0) {
        const int err = errno;
        return err == ENOENT || err == ENOTDIR
            ? QStringLiteral("there is no such folder")
            : QStringLiteral("the folder cannot be read (%1)").arg(systemError(err));
    }
    if (S_ISREG(st.st_mode))
        return QStringLiteral("it is a file, not a folder");
    if (!S_ISDIR(st.st_mode))
        return QStringLiteral("it is not a folder");
    // Listing needs it readable, going into its subfolders searchable.
    const int fd = ::open(name.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return QStringLiteral("the folder cannot be read (%1)").arg(systemError(errno));
    ::close(fd);
    if (::faccessat(AT_FDCWD, name.constData(), X_OK, AT_EACCESS) != 0)
        return QStringLiteral("the folder cannot be read (%1)").arg(systemError(errno));
    return {};
}

bool reportUnreadable(const std::vector<UnreadableFolder> &folders)
{
    for (const UnreadableFolder &f : folders) {
        error(QStringLiteral("%1: the folder cannot be read (%2); its songs are left out")
                  .arg(localpath::readable(localpath::fromBytes(f.path)), systemError(f.error)));
    }
    return !folders.empty();
}

QStringList absolutePaths(const QStringList &operands)
{
    QStringList paths;
    paths.reserve(operands.size());
    for (const QString &operand : operands) {
        // A URL that names no file keeps its text, to be named as missing.
        const QString path = localpath::absolute(operand);
        paths.append(path.isEmpty() ? operand : path);
    }
    return paths;
}

QString textArgument(const QString &argument)
{
    return localpath::readable(argument);
}

} // namespace cli
