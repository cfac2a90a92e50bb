// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalPath.h"

#include <QDir>

#include <cerrno>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace localpath {

namespace {

constexpr char16_t escapeBase = 0xDC00; // + the byte, for bytes 0x80 to 0xFF
constexpr char16_t replacement = 0xFFFD;

bool isEscape(char16_t c)
{
    return c >= 0xDC80 && c <= 0xDCFF;
}

// The length of the valid UTF-8 sequence that starts at p (at most n bytes
// left), or 0 when it isn't one: overlong forms, surrogates and code points
// past U+10FFFF are not valid, as for every strict decoder.
int sequenceLength(const unsigned char *p, qsizetype n)
{
    const unsigned char b = p[0];
    if (b < 0x80)
        return 1;
    const auto continuation = [&](qsizetype i, unsigned char lo = 0x80, unsigned char hi = 0xBF) {
        return i < n && p[i] >= lo && p[i] <= hi;
    };
    if (b >= 0xC2 && b <= 0xDF)
        return continuation(1) ? 2 : 0;
    if (b >= 0xE0 && b <= 0xEF) {
        const unsigned char lo = b == 0xE0 ? 0xA0 : 0x80;
        const unsigned char hi = b == 0xED ? 0x9F : 0xBF;
        return continuation(1, lo, hi) && continuation(2) ? 3 : 0;
    }
    if (b >= 0xF0 && b <= 0xF4) {
        const unsigned char lo = b == 0xF0 ? 0x90 : 0x80;
        const unsigned char hi = b == 0xF4 ? 0x8F : 0xBF;
        return continuation(1, lo, hi) && continuation(2) && continuation(3) ? 4 : 0;
    }
    return 0;
}

bool isValidUtf8(QByteArrayView bytes)
{
    const auto *p = reinterpret_cast<const unsigned char *>(bytes.data());
    const qsizetype n = bytes.size();
    for (qsizetype i = 0; i < n;) {
        if (p[i] < 0x80) {
            ++i;
            continue;
        }
        const int len = sequenceLength(p + i, n - i);
        if (len == 0)
            return false;
        i += len;
    }
    return true;
}

} // namespace

QString fromBytes(QByteArrayView bytes)
{
    if (isValidUtf8(bytes))
        return QString::fromUtf8(bytes);
    const auto *p = reinterpret_cast<const unsigned char *>(bytes.data());
    const qsizetype n = bytes.size();
    QString out;
    out.reserve(n);
    qsizetype run = 0; // start of the valid bytes not yet appended
    for (qsizetype i = 0; i < n;) {
        const int len = sequenceLength(p + i, n - i);
        if (len > 0) {
            i += len;
            continue;
        }
        out += QString::fromUtf8(bytes.sliced(run, i - run));
        out += QChar(char16_t(escapeBase + p[i]));
        run = ++i;
    }
    out += QString::fromUtf8(bytes.sliced(run));
    return out;
}

QByteArray toBytes(QStringView path)
{
    if (!hasRawBytes(path))
        return path.toUtf8();
    QByteArray out;
    out.reserve(path.size() * 3);
    qsizetype run = 0;
    for (qsizetype i = 0; i < path.size(); ++i) {
        const char16_t c = path[i].unicode();
        // A raw byte is a low surrogate with no high one before it; one that
        // ends a pair is part of a character.
        if (!isEscape(c) || (i > 0 && QChar::isHighSurrogate(path[i - 1].unicode())))
            continue;
        out += path.sliced(run, i - run).toUtf8();
        out += char(c - escapeBase);
        run = i + 1;
    }
    out += path.sliced(run).toUtf8();
    return out;
}

bool hasRawBytes(QStringView path)
{
    for (qsizetype i = 0; i < path.size(); ++i) {
        if (isEscape(path[i].unicode()) && (i == 0 || !QChar::isHighSurrogate(path[i - 1].unicode())))
            return true;
    }
    return false;
}

QString readable(QStringView path)
{
    QString out = path.toString();
    for (qsizetype i = 0; i < out.size(); ++i) {
        if (isEscape(out[i].unicode()) && (i == 0 || !out[i - 1].isHighSurrogate()))
            out[i] = QChar(replacement);
    }
    return out;
}

QUrl fileUrl(const QString &path)
{
    if (!hasRawBytes(path))
        return QUrl::fromLocalFile(path);
    // Set in tolerant mode, which encodes what a path needs encoded the way
    // fromLocalFile does and keeps %XX as it is: the raw bytes are given as %XX
    // and a percent sign of the name as %25.
    QString text;
    text.reserve(path.size() + 16);
    for (qsizetype i = 0; i < path.size(); ++i) {
        const char16_t c = path[i].unicode();
        if (c == u'%')
            text += u"%25";
        else if (isEscape(c) && (i == 0 || !path[i - 1].isHighSurrogate()))
            text += u'%' + QString::number(c - escapeBase, 16).toUpper();
        else
            text += QChar(c);
    }
    // "//name" would be read as a host, and means "/name" on Linux.
    while (text.startsWith(u"//"))
        text.remove(0, 1);
    QUrl url;
    url.setScheme(QStringLiteral("file"));
    url.setPath(text, QUrl::TolerantMode);
    return url;
}

QUrl fileUrlFromBytes(QByteArrayView bytes)
{
    return fileUrl(fromBytes(bytes));
}

QByteArray bytesOf(const QUrl &url)
{
    if (!url.isLocalFile())
        return {};
    // The encoded form keeps the bytes that aren't UTF-8 as %XX; the decoded
    // one would have replaced them.
    QByteArray bytes = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
    if (const QString host = url.host(); !host.isEmpty())
        bytes.prepend("//" + host.toUtf8());
    if (bytes.contains('\0'))
        return {};
    return bytes;
}

QString pathOf(const QUrl &url)
{
    return fromBytes(bytesOf(url));
}

bool isFile(const QString &path)
{
    struct stat st;
    return ::stat(toBytes(path).constData(), &st) == 0 && S_ISREG(st.st_mode);
}

QString canonical(const QString &path)
{
    char *resolved = ::realpath(toBytes(path).constData(), nullptr);
    if (!resolved)
        return {};
    QString out = fromBytes(resolved);
    ::free(resolved);
    return out;
}

QString absolute(const QString &pathOrUrl)
{
    QString path = pathOrUrl;
    if (pathOrUrl.startsWith(u"file://", Qt::CaseInsensitive)) {
        // Typed text may hold what a URL spells as %XX: a space, a raw byte.
        QByteArray text;
        for (const char ch : toBytes(pathOrUrl)) {
            const auto c = static_cast<unsigned char>(ch);
            if (c <= 0x20 || c >= 0x7F)
                text += '%' + QByteArray::number(c, 16).rightJustified(2, '0').toUpper();
            else
                text += ch;
        }
        const QUrl url(QString::fromLatin1(text), QUrl::TolerantMode);
        path = url.isValid() ? pathOf(url) : QString();
        if (path.isEmpty())
            return {};
    }
    if (!path.startsWith(u'/')) {
        // QDir::currentPath() would decode the folder's name with replacements.
        QByteArray cwd(4096, Qt::Uninitialized);
        while (!::getcwd(cwd.data(), size_t(cwd.size()))) {
            if (errno != ERANGE)
                return QDir::cleanPath(path); // the current folder is gone
            cwd.resize(cwd.size() * 2);
        }
        cwd.truncate(qsizetype(qstrlen(cwd.constData())));
        path = fromBytes(cwd) + u'/' + path;
    }
    // Cleaning only looks at "/" and ".", which no raw byte is.
    return QDir::cleanPath(path);
}

} // namespace localpath
