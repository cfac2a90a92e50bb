// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QElapsedTimer>
#include <QHash>
#include <QImage>
#include <QObject>
#include <QTcpServer>

#include <functional>

// A loopback HTTP/1.1 server standing in for the web services. The first path
// segment names the service ("mb", "caa", "wiki", "commons", "upload"), so one
// server plays them all. It answers while the test's event loop runs (QTRY_*,
// QCoro::waitFor). One request per connection.
class FakeWebServer : public QObject
{
public:
    struct Request
    {
        QString service;
        QByteArray pathAndQuery; // without the service segment
        QByteArray userAgent;
        double time = 0; // seconds since the server was made
    };

    struct Reply
    {
        int status = 200;
        QByteArray contentType = "application/json";
        QByteArray body;
        QByteArray location;
        bool answer = true; // false: keep the connection open and say nothing
        // Filler instead of a body: this many bytes, 64 every dripMs, or as fast
        // as the client takes them when dripMs is 0.
        qint64 streamBytes = -1;
        bool declareLength = false;
        int dripMs = 0;
    };

    using Handler = std::function<Reply(const Request &)>;

    FakeWebServer() { m_clock.start(); }

    bool start(); // on the same port again after stop()
    void stop();  // drops every connection: a server that has gone away
    QString serviceUrl(const QString &service) const;

    void on(const QString &service, Handler handler);
    void script(const QString &service, QList<Reply> replies); // in order, then 404
    void reset(); // forgets handlers and requests

    double now() const { return double(m_clock.nsecsElapsed()) / 1e9; }
    QList<Request> requests() const { return m_requests; }
    int cutStreams() const { return m_cutStreams; } // streamed bodies whose client hung up early

    static Reply json(const QByteArray &body, int status = 200) { return {status, "application/json", body, {}, true, -1, false, 0}; }
    static Reply status(int code) { return {code, "text/plain", "status\n", {}, true, -1, false, 0}; }
    static Reply image(const QByteArray &encoded) { return {200, "image/png", encoded, {}, true, -1, false, 0}; }
    static Reply redirect(const QByteArray &location) { return {307, "text/plain", {}, location, true, -1, false, 0}; }
    static Reply silence() { return {200, {}, {}, {}, false, -1, false, 0}; }
    static Reply stream(qint64 bytes, bool declareLength, int dripMs = 0)
    {
        return {200, "application/json", {}, {}, true, bytes, declareLength, dripMs};
    }

    static QImage solidImage(const QColor &color, QSize size = QSize(64, 48));
    static QByteArray encode(const QImage &image, const char *format);
    static QByteArray png(const QImage &image) { return encode(image, "png"); }
    static QByteArray jpeg(const QImage &image) { return encode(image, "jpg"); }
    // A small PNG whose header claims width x height pixels.
    static QByteArray imageBomb(quint32 width, quint32 height);

private:
    void read(QTcpSocket *socket);
    void answer(QTcpSocket *socket, const Reply &reply);

    QTcpServer *m_server = nullptr;
    quint16 m_port = 0;
    QElapsedTimer m_clock;
    QHash<QString, Handler> m_handlers;
    QList<Request> m_requests;
    QHash<QTcpSocket *, qint64> m_left; // streams still sending
    int m_cutStreams = 0;
};
