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

#include <memory>

namespace {

const char *reasonPhrase(int status)
{
    switch (status) {
    case 200: return "OK";
    case 307: return "Temporary Redirect";
    case 404: return "Not Found";
    case 503: return "Service Unavailable";
    default: return "Status";
    }
}

QByteArray compactJson(const QJsonObject &o)
{
    return QJsonDocument(o).toJson(QJsonDocument::Compact);
}

quint32 crc32(const QByteArray &data)
{
    quint32 crc = 0xffffffffu;
    for (char ch : data) {
        crc ^= quint8(ch);
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

QByteArray pngChunk(const char *type, const QByteArray &data)
{
    QByteArray out(4, '\0');
    qToBigEndian<quint32>(quint32(data.size()), out.data());
    const QByteArray typed = QByteArray(type, 4) + data;
    out += typed;
    QByteArray crc(4, '\0');
    qToBigEndian<quint32>(crc32(typed), crc.data());
    return out + crc;
}

} // namespace

// Lives on the server's thread: the listening socket and the connections.
class FakeWebServer::Worker : public QObject
{
public:
    explicit Worker(FakeWebServer *owner)
        : m_owner(owner)
    {
    }

    bool listen(quint16 port)
    {
        m_server = new QTcpServer(this);
        // Many lookups at once open many connections.
        m_server->setMaxPendingConnections(1000);
        connect(m_server, &QTcpServer::newConnection, this, &Worker::onNewConnection);
        if (!m_server->listen(QHostAddress::LocalHost, port)) {
            delete m_server;
            m_server = nullptr;
            return false;
        }
        return true;
    }

    quint16 port() const { return m_server ? m_server->serverPort() : 0; }

    void close()
    {
        delete m_server;
        m_server = nullptr;
        for (QTcpSocket *s : findChildren<QTcpSocket *>()) {
            s->disconnect(this);
            s->abort();
            s->deleteLater();
        }
    }

private:
    struct Stream
    {
        qint64 remaining = 0;
        qint64 dripBytes = 0;
    };

    void onNewConnection()
    {
        while (QTcpSocket *socket = m_server->nextPendingConnection()) {
            socket->setParent(this);
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onReadyRead(socket); });
            connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
                if (m_streams.remove(socket) > 0) {
                    QMutexLocker lock(&m_owner->m_mutex);
                    ++m_owner->m_cutStreams;
                }
                socket->deleteLater();
            });
        }
    }

    void onReadyRead(QTcpSocket *socket)
    {
        if (socket->property("fakeAnswered").toBool())
            return;
        QByteArray buffer = socket->property("fakeBuffer").toByteArray() + socket->readAll();
        const qsizetype end = buffer.indexOf("\r\n\r\n");
        if (end < 0) {
            socket->setProperty("fakeBuffer", buffer);
            return;
        }
        // One request per connection: every answer closes it.
        socket->setProperty("fakeAnswered", true);

        const QList<QByteArray> lines = buffer.left(end).split('\n');
        Request request;
        request.time = double(m_owner->m_clock.nsecsElapsed()) / 1e9;
        request.target = lines.value(0).trimmed().split(' ').value(1);
        for (qsizetype i = 1; i < lines.size(); ++i) {
            const qsizetype colon = lines[i].indexOf(':');
            if (colon > 0)
                request.headers.insert(lines[i].left(colon).trimmed().toLower(), lines[i].mid(colon + 1).trimmed());
        }
        const qsizetype second = request.target.indexOf('/', 1);
        const qsizetype query = request.target.indexOf('?');
        const qsizetype segmentEnd = second < 0 || (query >= 0 && query < second) ? query : second;
        request.service = QString::fromUtf8(request.target.mid(1, segmentEnd < 0 ? -1 : segmentEnd - 1));
        request.pathAndQuery = segmentEnd < 0 ? QByteArray("/") : request.target.mid(segmentEnd);

        const Reply reply = m_owner->dispatch(std::move(request));
        if (reply.answer)
            answer(socket, reply);
    }

    void answer(QTcpSocket *socket, const Reply &reply)
    {
        QByteArray head = "HTTP/1.1 " + QByteArray::number(reply.status) + ' ' + reasonPhrase(reply.status) + "\r\n";
        head += "Content-Type: " + reply.contentType + "\r\nConnection: close\r\n";
        for (const auto &[name, value] : reply.headers)
            head += name + ": " + value + "\r\n";
        if (reply.streamBytes < 0) {
            head += "Content-Length: " + QByteArray::number(reply.body.size()) + "\r\n\r\n";
            socket->write(head + reply.body);
            socket->disconnectFromHost();
            return;
        }
        if (reply.declareLength)
            head += "Content-Length: " + QByteArray::number(reply.streamBytes) + "\r\n";
        socket->write(head + "\r\n");
        m_streams.insert(socket, {reply.streamBytes, reply.dripBytes});
        if (reply.dripMs > 0) {
            auto *timer = new QTimer(socket);
            connect(timer, &QTimer::timeout, this, [this, socket] { more(socket); });
            timer->start(reply.dripMs);
        } else {
            connect(socket, &QTcpSocket::bytesWritten, this, [this, socket] {
                // Keep a little queued, never the whole body.
                if (socket->bytesToWrite() < m_streams.value(socket).dripBytes)
                    more(socket);
            });
        }
        more(socket);
    }

    void more(QTcpSocket *socket)
    {
        if (!m_streams.contains(socket) || socket->state() != QAbstractSocket::ConnectedState)
            return;
        Stream &s = m_streams[socket];
        if (s.remaining <= 0) {
            m_streams.remove(socket);
            socket->disconnectFromHost();
            return;
        }
        const qint64 n = std::min(s.remaining, s.dripBytes);
        s.remaining -= n;
        socket->write(QByteArray(n, 'x'));
    }

    FakeWebServer *m_owner;
    QTcpServer *m_server = nullptr;
    QHash<QTcpSocket *, Stream> m_streams;
};

FakeWebServer::FakeWebServer(QObject *parent)
    : QObject(parent)
{
    m_clock.start();
    m_worker = new Worker(this);
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
    bool listening = false;
    QMetaObject::invokeMethod(
        m_worker,
        [this, &listening] {
            listening = m_worker->port() != 0 || m_worker->listen(m_port);
            if (listening)
                m_port = m_worker->port();
        },
        Qt::BlockingQueuedConnection);
    return listening;
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
    // Only ever touched on the server's thread.
    auto queue = std::make_shared<QList<Reply>>(std::move(replies));
    on(service, [queue](const Request &) { return queue->isEmpty() ? status(404) : queue->takeFirst(); });
}

void FakeWebServer::reset()
{
    QMutexLocker lock(&m_mutex);
    m_handlers.clear();
    m_requests.clear();
    m_cutStreams = 0;
}

FakeWebServer::Reply FakeWebServer::dispatch(Request request)
{
    Handler handler;
    {
        QMutexLocker lock(&m_mutex);
        m_requests.append(request);
        handler = m_handlers.value(request.service);
    }
    return handler ? handler(request) : status(404);
}

QList<FakeWebServer::Request> FakeWebServer::requests() const
{
    QMutexLocker lock(&m_mutex);
    return m_requests;
}

QList<FakeWebServer::Request> FakeWebServer::requestsFor(const QString &service) const
{
    QList<Request> out;
    for (const Request &r : requests()) {
        if (r.service == service)
            out.append(r);
    }
    return out;
}

int FakeWebServer::cutStreams() const
{
    QMutexLocker lock(&m_mutex);
    return m_cutStreams;
}

FakeWebServer::Reply FakeWebServer::json(const QByteArray &body, int code)
{
    Reply r;
    r.status = code;
    r.body = body;
    return r;
}

FakeWebServer::Reply FakeWebServer::status(int code)
{
    Reply r = json(QByteArray(reasonPhrase(code)) + '\n', code);
    r.contentType = "text/plain";
    return r;
}

FakeWebServer::Reply FakeWebServer::image(const QByteArray &encoded)
{
    Reply r = json(encoded);
    r.contentType = "image/png";
    return r;
}

FakeWebServer::Reply FakeWebServer::redirect(const QByteArray &location)
{
    Reply r = status(307);
    r.headers.append({"Location", location});
    return r;
}

FakeWebServer::Reply FakeWebServer::silence()
{
    Reply r;
    r.answer = false;
    return r;
}

FakeWebServer::Reply FakeWebServer::stream(qint64 bytes, bool declareLength, int dripMs, qint64 dripBytes)
{
    Reply r;
    r.streamBytes = bytes;
    r.declareLength = declareLength;
    r.dripMs = dripMs;
    r.dripBytes = dripMs > 0 ? dripBytes : 256 * 1024;
    return r;
}

QByteArray FakeWebServer::releases(const QStringList &ids)
{
    QJsonArray list;
    for (const QString &id : ids)
        list.append(QJsonObject{{QStringLiteral("id"), id}, {QStringLiteral("score"), 100}});
    return compactJson({{QStringLiteral("created"), QStringLiteral("2024-01-01T00:00:00Z")},
                        {QStringLiteral("count"), int(ids.size())},
                        {QStringLiteral("releases"), list}});
}

QByteArray FakeWebServer::pageImages(const std::optional<QString> &thumbnailSource)
{
    QJsonObject page{{QStringLiteral("pageid"), 123}, {QStringLiteral("ns"), 0}};
    QString id = QStringLiteral("123");
    if (thumbnailSource) {
        page.insert(QStringLiteral("thumbnail"),
                    QJsonObject{{QStringLiteral("source"), *thumbnailSource},
                                {QStringLiteral("width"), 500},
                                {QStringLiteral("height"), 400}});
    } else {
        // How the service answers for a page that does not exist.
        page = QJsonObject{{QStringLiteral("ns"), 0}, {QStringLiteral("missing"), QString()}};
        id = QStringLiteral("-1");
    }
    return compactJson({{QStringLiteral("batchcomplete"), QString()},
                        {QStringLiteral("query"), QJsonObject{{QStringLiteral("pages"), QJsonObject{{id, page}}}}}});
}

QByteArray FakeWebServer::searchResults(const QStringList &titles)
{
    QJsonArray list;
    for (const QString &t : titles)
        list.append(QJsonObject{{QStringLiteral("ns"), 6}, {QStringLiteral("title"), t}});
    return compactJson({{QStringLiteral("batchcomplete"), QString()},
                        {QStringLiteral("query"), QJsonObject{{QStringLiteral("search"), list}}}});
}

QByteArray FakeWebServer::imageInfo(const std::optional<QString> &url)
{
    QJsonObject page{{QStringLiteral("ns"), 6}, {QStringLiteral("title"), QStringLiteral("File:x.jpg")}};
    if (url)
        page.insert(QStringLiteral("imageinfo"), QJsonArray{QJsonObject{{QStringLiteral("url"), *url}}});
    return compactJson({{QStringLiteral("query"),
                         QJsonObject{{QStringLiteral("pages"), QJsonObject{{QStringLiteral("77"), page}}}}}});
}

QImage FakeWebServer::solidImage(const QColor &color, QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

QByteArray FakeWebServer::png(const QImage &image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter(&buffer, "png").write(image);
    return bytes;
}

QByteArray FakeWebServer::jpeg(const QImage &image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpg");
    writer.setQuality(95);
    writer.write(image);
    return bytes;
}

QByteArray FakeWebServer::imageBomb(quint32 width, quint32 height)
{
    QByteArray ihdr(13, '\0');
    qToBigEndian<quint32>(width, ihdr.data());
    qToBigEndian<quint32>(height, ihdr.data() + 4);
    ihdr[8] = 8; // bit depth
    ihdr[9] = 6; // RGBA: 4 bytes a pixel once decoded
    // A first row of zeros, compressed: the rest would follow the same way.
    const QByteArray row(1 + 4 * qsizetype(std::min<quint32>(width, 4096)), '\0');
    const QByteArray idat = qCompress(row, 9).mid(4); // qCompress prefixes the length
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + pngChunk("IHDR", ihdr) + pngChunk("IDAT", idat)
        + pngChunk("IEND", {});
}
