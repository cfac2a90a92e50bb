// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeWebServer.h"

#include <QBuffer>
#include <QImageWriter>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QtEndian>

// Lives on the server's thread with the listening socket and the connections.
class FakeWebServer::Worker : public QObject
{
public:
    explicit Worker(FakeWebServer *owner) : m_owner(owner) { }

    QTcpServer *server = nullptr;

    bool listen(quint16 port)
    {
        server = new QTcpServer(this);
        server->setMaxPendingConnections(1000); // many lookups at once
        connect(server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *s = server->nextPendingConnection()) {
                s->setParent(this);
                connect(s, &QTcpSocket::readyRead, this, [this, s] { read(s); });
                connect(s, &QTcpSocket::disconnected, this, [this, s] {
                    m_buffers.remove(s);
                    if (m_left.remove(s) > 0) {
                        QMutexLocker lock(&m_owner->m_mutex);
                        ++m_owner->m_cutStreams;
                    }
                    s->deleteLater();
                });
            }
        });
        return server->listen(QHostAddress::LocalHost, port);
    }

    void close()
    {
        delete std::exchange(server, nullptr);
        for (QTcpSocket *s : findChildren<QTcpSocket *>()) {
            s->disconnect(this);
            s->abort();
            s->deleteLater();
        }
        m_left.clear();
        m_buffers.clear();
    }

private:
    void read(QTcpSocket *s)
    {
        if (s->property("answered").toBool())
            return;
        QByteArray &buffer = m_buffers[s];
        buffer += s->readAll();
        const qsizetype end = buffer.indexOf("\r\n\r\n");
        if (end < 0)
            return;
        s->setProperty("answered", true);
        const QList<QByteArray> lines = buffer.left(end).split('\n');
        m_buffers.remove(s);
        Request r;
        r.time = m_owner->now();
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
        Handler handler;
        {
            QMutexLocker lock(&m_owner->m_mutex);
            m_owner->m_requests.append(r);
            handler = m_owner->m_handlers.value(r.service);
        }
        const Reply reply = handler ? handler(r) : status(404);
        if (reply.answer)
            answer(s, reply);
    }

    void answer(QTcpSocket *s, const Reply &reply)
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
            if (!m_left.contains(s) || s->state() != QAbstractSocket::ConnectedState)
                return;
            if (s->bytesToWrite() >= chunk)
                return; // keep a little queued, never the whole body
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

    FakeWebServer *m_owner;
    QHash<QTcpSocket *, QByteArray> m_buffers;
    QHash<QTcpSocket *, qint64> m_left; // streams still sending
};

FakeWebServer::FakeWebServer()
    : m_worker(new Worker(this))
{
    m_clock.start();
    m_worker->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    m_thread.start();
}

FakeWebServer::~FakeWebServer()
{
    stop();
    m_thread.quit();
    m_thread.wait();
}

bool FakeWebServer::start()
{
    bool ok = false;
    QMetaObject::invokeMethod(m_worker, [&] {
        ok = m_worker->server || m_worker->listen(m_port);
        if (ok)
            m_port = m_worker->server->serverPort();
        else
            m_worker->close();
    }, Qt::BlockingQueuedConnection);
    return ok;
}

void FakeWebServer::stop()
{
    QMetaObject::invokeMethod(m_worker, [this] { m_worker->close(); }, Qt::BlockingQueuedConnection);
}

QString FakeWebServer::serviceUrl(const QString &service) const
{
    return QStringLiteral("http://127.0.0.1:%1/").arg(m_port) + service;
}

void FakeWebServer::on(const QString &service, Handler handler)
{
    QMutexLocker lock(&m_mutex);
    m_handlers.insert(service, std::move(handler));
}

void FakeWebServer::script(const QString &service, QList<Reply> replies)
{
    auto queue = std::make_shared<QList<Reply>>(std::move(replies)); // only touched on the server's thread
    on(service, [queue](const Request &) { return queue->isEmpty() ? status(404) : queue->takeFirst(); });
}

void FakeWebServer::reset()
{
    QMutexLocker lock(&m_mutex);
    m_handlers.clear();
    m_requests.clear();
    m_cutStreams = 0;
}

QList<FakeWebServer::Request> FakeWebServer::requests() const
{
    QMutexLocker lock(&m_mutex);
    return m_requests;
}

int FakeWebServer::cutStreams() const
{
    QMutexLocker lock(&m_mutex);
    return m_cutStreams;
}

static QByteArray query(const char *key, const QJsonValue &value)
{
    return QJsonDocument(QJsonObject{{"query", QJsonObject{{key, value}}}}).toJson(QJsonDocument::Compact);
}

QByteArray FakeWebServer::releases(const QStringList &ids)
{
    QJsonArray list;
    for (const QString &id : ids)
        list.append(QJsonObject{{"id", id}, {"score", 100}});
    return QJsonDocument(QJsonObject{{"count", int(ids.size())}, {"releases", list}}).toJson();
}

QByteArray FakeWebServer::pageImages(const std::optional<QString> &thumbnail)
{
    if (!thumbnail) // how the service answers for a page that does not exist
        return query("pages", QJsonObject{{"-1", QJsonObject{{"ns", 0}, {"missing", ""}}}});
    const QJsonObject thumb{{"source", *thumbnail}, {"width", 500}, {"height", 400}};
    return query("pages", QJsonObject{{"123", QJsonObject{{"pageid", 123}, {"thumbnail", thumb}}}});
}

QByteArray FakeWebServer::searchResults(const QStringList &titles)
{
    QJsonArray list;
    for (const QString &t : titles)
        list.append(QJsonObject{{"ns", 6}, {"title", t}});
    return query("search", list);
}

QByteArray FakeWebServer::imageInfo(const std::optional<QString> &url)
{
    QJsonObject page{{"title", "File:x.jpg"}};
    if (url)
        page.insert("imageinfo", QJsonArray{QJsonObject{{"url", *url}}});
    return query("pages", QJsonObject{{"77", page}});
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
    QImageWriter writer(&buffer, format);
    writer.setQuality(95);
    writer.write(image);
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
