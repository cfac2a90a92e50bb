// SPDX-License-Identifier: GPL-3.0-or-later
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace testsupport {

QString writeFile(const QString &dir, const QString &relativePath, const QByteArray &bytes)
{
    const QString path = QDir(dir).absoluteFilePath(relativePath);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (f.open(QIODevice::WriteOnly))
        f.write(bytes);
    return path;
}

QByteArray readFile(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

ToolResult run(const QString &program, const QStringList &args, int timeoutMs)
{
    QProcess p;
    p.start(program, args);
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

bool haveTool(const QString &program)
{
    return !QStandardPaths::findExecutable(program).isEmpty();
}

bool makeAudio(const QString &path, double seconds)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
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
