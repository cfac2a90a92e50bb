// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeWebServer.h"

#include <QBuffer>
#include <QImageWriter>
#include <QTcpSocket>
#include <QTimer>
#include <QtEndian>

bool FakeWebServer::start()
{
    if (m_server)
        return true;
    m_server = new QTcpServer(this);
    m_server->setMaxPendingConnections(1000); // many lookups at once
    connect(m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *s = m_server->nextPendingConnection()) {
            connect(s, &QTcpSocket::readyRead, this, [this, s] { read(s); });
            connect(s, &QTcpSocket::disconnected, this, [this, s] {
                m_cutStreams += m_left.remove(s) ? 1 : 0;
                s->deleteLater();
            });
        }
    });
    if (!m_server->listen(QHostAddress::LocalHost, m_port)) {
        stop();
        return false;
    }
    m_port = m_server->serverPort();
    return true;
}

void FakeWebServer::stop()
{
    for (QTcpSocket *s : findChildren<QTcpSocket *>())
        s->disconnect(this);
    delete std::exchange(m_server, nullptr); // and its connections
    m_left.clear();
}

QString FakeWebServer::serviceUrl(const QString &service) const
{
    return QStringLiteral("http://127.0.0.1:%1/").arg(m_port) + service;
}

// Its head is read whole; a body is ignored.
void FakeWebServer::read(QTcpSocket *s)
{
    const QByteArray head = s->property("head").toByteArray() + s->readAll();
    s->setProperty("head", head);
    const qsizetype end = head.indexOf("\r\n\r\n");
    if (end < 0 || s->property("answered").toBool())
        return;
    s->setProperty("answered", true);
    const QList<QByteArray> lines = head.left(end).split('\n');
    Request r;
    r.time = now();
    const QByteArray target = lines.value(0).split(' ').value(1);
    qsizetype cut = target.indexOf('/', 1);
    const qsizetype query = target.indexOf('?');
    if (cut < 0 || (query >= 0 && query < cut))
        cut = query;
    r.service = QString::fromUtf8(target.mid(1, cut < 0 ? -1 : cut - 1));
    r.pathAndQuery = cut < 0 ? QByteArray("/") : target.mid(cut);
    for (const QByteArray &line : lines) {
        if (line.toLower().startsWith("user-agent:"))
            r.userAgent = line.mid(11).trimmed();
    }
    m_requests.append(r);
    const Handler handler = m_handlers.value(r.service);
    const Reply reply = handler ? handler(r) : status(404);
    if (reply.answer)
        answer(s, reply);
}

void FakeWebServer::answer(QTcpSocket *s, const Reply &reply)
{
    QByteArray head = "HTTP/1.1 " + QByteArray::number(reply.status) + " Status\r\nConnection: close\r\n"
        + "Content-Type: " + reply.contentType + "\r\n";
    if (!reply.location.isEmpty())
        head += "Location: " + reply.location + "\r\n";
    if (reply.streamBytes < 0) {
        s->write(head + "Content-Length: " + QByteArray::number(reply.body.size()) + "\r\n\r\n" + reply.body);
        s->disconnectFromHost();
        return;
    }
    if (reply.declareLength)
        head += "Content-Length: " + QByteArray::number(reply.streamBytes) + "\r\n";
    s->write(head + "\r\n");
    m_left.insert(s, reply.streamBytes);
    const qint64 chunk = reply.dripMs > 0 ? 64 : 256 * 1024;
    const auto more = [this, s, chunk] {
        // Keep a little queued, never the whole body.
        if (!m_left.contains(s) || s->state() != QAbstractSocket::ConnectedState || s->bytesToWrite() >= chunk)
            return;
        qint64 &left = m_left[s];
        if (left <= 0) {
            m_left.remove(s);
            s->disconnectFromHost();
            return;
        }
        const qint64 n = std::min(left, chunk);
        left -= n;
        s->write(QByteArray(n, 'x'));
    };
    if (reply.dripMs > 0) {
        auto *timer = new QTimer(s);
        connect(timer, &QTimer::timeout, this, more);
        timer->start(reply.dripMs);
    } else {
        connect(s, &QTcpSocket::bytesWritten, this, more);
    }
    more();
}

void FakeWebServer::on(const QString &service, Handler handler)
{
    m_handlers.insert(service, std::move(handler));
}

void FakeWebServer::script(const QString &service, QList<Reply> replies)
{
    auto queue = std::make_shared<QList<Reply>>(std::move(replies));
    on(service, [queue](const Request &) { return queue->isEmpty() ? status(404) : queue->takeFirst(); });
}

void FakeWebServer::reset()
{
    m_handlers.clear();
    m_requests.clear();
    m_cutStreams = 0;
}

QImage FakeWebServer::solidImage(const QColor &color, QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

QByteArray FakeWebServer::encode(const QImage &image, const char *format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter(&buffer, format).write(image);
    return bytes;
}

static QByteArray pngChunk(const char *type, const QByteArray &data)
{
    const QByteArray typed = QByteArray(type, 4) + data;
    quint32 crc = 0xffffffffu;
    for (char c : typed) {
        crc ^= quint8(c);
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1u)));
    }
    char size[4], sum[4];
    qToBigEndian<quint32>(quint32(data.size()), size);
    qToBigEndian<quint32>(~crc, sum);
    return QByteArray(size, 4) + typed + QByteArray(sum, 4);
}

QByteArray FakeWebServer::imageBomb(quint32 width, quint32 height)
{
    QByteArray ihdr(13, '\0');
    qToBigEndian<quint32>(width, ihdr.data());
    qToBigEndian<quint32>(height, ihdr.data() + 4);
    ihdr[8] = 8; // bit depth
    ihdr[9] = 6; // RGBA: 4 bytes a pixel once decoded
    // A first row of zeros; the rest would follow the same way.
    const QByteArray idat = qCompress(QByteArray(1 + 4 * qsizetype(std::min<quint32>(width, 4096)), '\0'), 9).mid(4);
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + pngChunk("IHDR", ihdr) + pngChunk("IDAT", idat) + pngChunk("IEND", {});
}
