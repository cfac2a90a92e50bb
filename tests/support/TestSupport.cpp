// SPDX-License-Identifier: GPL-3.0-or-later
#include "TestSupport.h"

#include "model/LocalPath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace testsupport {

namespace {

// Paths are path strings here (model/LocalPath.h): files are made by their
// bytes, so tests can name them in anything a file system takes.
void makeFolders(const QString &folder)
{
    const QByteArray path = localpath::toBytes(folder);
    for (qsizetype slash = path.indexOf('/', 1); slash != -1; slash = path.indexOf('/', slash + 1))
        ::mkdir(path.first(slash).constData(), 0755);
    ::mkdir(path.constData(), 0755);
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
    const int fd = ::open(localpath::toBytes(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd >= 0) {
        QFile f;
        if (f.open(fd, QIODevice::WriteOnly, QFile::AutoCloseHandle))
            f.write(bytes);
        else
            ::close(fd);
    }
    return path;
}

QByteArray readFile(const QString &path)
{
    const int fd = ::open(localpath::toBytes(path).constData(), O_RDONLY | O_CLOEXEC);
    QFile f;
    if (fd < 0 || !f.open(fd, QIODevice::ReadOnly, QFile::AutoCloseHandle))
        return {};
    return f.readAll();
}

ToolResult run(const QString &program, const QStringList &args, int timeoutMs)
{
    QProcess p;
    // QProcess passes arguments as UTF-8; names that aren't go through a shell.
    const bool raw = std::any_of(args.begin(), args.end(), [](const QString &a) { return localpath::hasRawBytes(a); });
    if (raw) {
        QString command = QStringLiteral("exec ") + shellWord(program);
        for (const QString &a : args)
            command += u' ' + shellWord(a);
        p.start(QStringLiteral("bash"), { QStringLiteral("-c"), command });
    } else {
        p.start(program, args);
    }
    ToolResult r;
    if (!p.waitForStarted(10000))
        return r;
    p.closeWriteChannel();
    if (!p.waitForFinished(timeoutMs)) {
        p.kill();
        p.waitForFinished();
        return r;
    }
    r.exitCode = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    r.out = p.readAllStandardOutput();
    r.err = p.readAllStandardError();
    return r;
}

bool makeAudio(const QString &path, double seconds)
{
    makeFolders(path.first(path.lastIndexOf(u'/')));
    const QString ext = QFileInfo(path).suffix().toLower();
    const QString len = QString::number(seconds);
    if (ext == u"m4a" || ext == u"caf" || ext == u"mp3") {
        const QString codec = ext == u"mp3" ? QStringLiteral("libmp3lame")
                            : ext == u"caf" ? QStringLiteral("pcm_s16be")
                                            : QStringLiteral("aac");
        return run(QStringLiteral("ffmpeg"),
                   {QStringLiteral("-nostdin"), QStringLiteral("-v"), QStringLiteral("error"),
                    QStringLiteral("-y"), QStringLiteral("-f"), QStringLiteral("lavfi"),
                    QStringLiteral("-i"), QStringLiteral("sine=frequency=440:duration=") + len,
                    QStringLiteral("-c:a"), codec, path})
                   .exitCode == 0;
    }
    return run(QStringLiteral("sox"),
               {QStringLiteral("-n"), QStringLiteral("-r"), QStringLiteral("44100"),
                QStringLiteral("-b"), QStringLiteral("16"), QStringLiteral("-c"), QStringLiteral("2"),
                path, QStringLiteral("synth"), len, QStringLiteral("sine"), QStringLiteral("440")})
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
