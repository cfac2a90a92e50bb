// SPDX-License-Identifier: GPL-3.0-or-later
#include "TestSupport.h"

#include "model/LocalPath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace testsupport {

namespace {

// Files are made by their bytes, so names may be anything a file system takes.
void makeFolders(const QString &folder)
{
    const QByteArray path = localpath::toBytes(folder);
    for (qsizetype slash = path.indexOf('/', 1); slash != -1; slash = path.indexOf('/', slash + 1))
        ::mkdir(path.first(slash).constData(), 0755);
    ::mkdir(path.constData(), 0755);
}

QFile *opened(const QString &path, int flags, QFile &file)
{
    const int fd = ::open(localpath::toBytes(path).constData(), flags | O_CLOEXEC, 0644);
    if (fd >= 0 && file.open(fd, flags & O_WRONLY ? QIODevice::WriteOnly : QIODevice::ReadOnly, QFile::AutoCloseHandle))
        return &file;
    if (fd >= 0)
        ::close(fd);
    return nullptr;
}

// A shell word that says the argument's bytes in ASCII.
QString shellWord(const QString &argument)
{
    QString word = QStringLiteral("$'");
    for (const char c : localpath::toBytes(argument))
        word += QStringLiteral("\\x%1").arg(uint(uchar(c)), 2, 16, QLatin1Char('0'));
    return word + u'\'';
}

} // namespace

QString writeFile(const QString &dir, const QString &relativePath, const QByteArray &bytes)
{
    const QString path = QDir::cleanPath(relativePath.startsWith(u'/') ? relativePath : dir + u'/' + relativePath);
    makeFolders(path.first(path.lastIndexOf(u'/')));
    QFile f;
    if (opened(path, O_WRONLY | O_CREAT | O_TRUNC, f))
        f.write(bytes);
    return path;
}

QByteArray readFile(const QString &path)
{
    QFile f;
    return opened(path, O_RDONLY, f) ? f.readAll() : QByteArray();
}

ToolResult run(const QString &program, const QStringList &args, int timeoutMs)
{
    QProcess p;
    // QProcess passes arguments as UTF-8; names that aren't go through a shell.
    if (std::any_of(args.begin(), args.end(), [](const QString &a) { return localpath::hasRawBytes(a); })) {
        QString command = QStringLiteral("exec ") + shellWord(program);
        for (const QString &a : args)
            command += u' ' + shellWord(a);
        p.start(QStringLiteral("bash"), {QStringLiteral("-c"), command});
    } else {
        p.start(program, args);
    }
    p.closeWriteChannel();
    if (!p.waitForFinished(timeoutMs)) {
        p.kill();
        p.waitForFinished();
        return {};
    }
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, p.readAllStandardOutput(),
            p.readAllStandardError()};
}

bool makeAudio(const QString &path, double seconds)
{
    makeFolders(path.first(path.lastIndexOf(u'/')));
    const QString ext = QFileInfo(path).suffix().toLower();
    const QString codec = ext == u"mp3" ? QStringLiteral("libmp3lame") : ext == u"caf" ? QStringLiteral("pcm_s16be")
                        : ext == u"m4a" ? QStringLiteral("aac") : QString();
    if (!codec.isEmpty())
        return run(QStringLiteral("ffmpeg"), QStringLiteral("-nostdin -v error -y -f lavfi -i sine=frequency=440:duration=%1 -c:a %2")
                                                 .arg(seconds).arg(codec).split(u' ') << path).exitCode == 0;
    return run(QStringLiteral("sox"), QStringLiteral("-n -r 44100 -b 16 -c 2").split(u' ') << path
               << QStringLiteral("synth") << QString::number(seconds) << QStringLiteral("sine") << QStringLiteral("440"))
               .exitCode == 0;
}

namespace {

// Capabilities are per thread: the raw calls change only this one.
bool capabilities(bool set, __user_cap_data_struct (&data)[2])
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    return ::syscall(set ? SYS_capset : SYS_capget, &header, data) == 0;
}

constexpr quint32 overrides = (1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH);

} // namespace

PermissionsEnforced::PermissionsEnforced()
{
    __user_cap_data_struct data[2] = {};
    if (!capabilities(false, data))
        return;
    m_effective = data[0].effective & overrides;
    data[0].effective &= ~overrides;
    capabilities(true, data);
}

PermissionsEnforced::~PermissionsEnforced()
{
    __user_cap_data_struct data[2] = {};
    if (m_effective && capabilities(false, data)) {
        data[0].effective |= m_effective;
        capabilities(true, data);
    }
}

} // namespace testsupport
