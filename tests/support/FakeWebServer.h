// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QElapsedTimer>
#include <QHash>
#include <QImage>
#include <QMutex>
#include <QObject>
#include <QThread>

#include <functional>
#include <optional>

// A loopback HTTP/1.1 server standing in for the web services. The first path
// segment names the service (serviceUrl("mb"), "caa", "wiki", "commons", and
// "upload" for the file host), so one server plays them all. It runs on a
// thread of its own, so arrival times stay true while the test's thread is
// busy; handlers run on that thread. One request per connection.
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

    FakeWebServer();
    ~FakeWebServer() override;

    bool start(); // on the same port again after stop()
    void stop();  // drops every connection: a server that has gone away
    QString serviceUrl(const QString &service) const;

    void on(const QString &service, Handler handler);
    // These replies in order, then 404.
    void script(const QString &service, QList<Reply> replies);
    void reset(); // forgets handlers and requests

    double now() const { return double(m_clock.nsecsElapsed()) / 1e9; }
    QList<Request> requests() const;
    int cutStreams() const; // streamed bodies whose client hung up early

    static Reply json(const QByteArray &body, int status = 200) { return {status, "application/json", body, {}, true, -1, false, 0}; }
    static Reply status(int code) { return {code, "text/plain", "status\n", {}, true, -1, false, 0}; }
    static Reply image(const QByteArray &encoded) { return {200, "image/png", encoded, {}, true, -1, false, 0}; }
    static Reply redirect(const QByteArray &location) { return {307, "text/plain", {}, location, true, -1, false, 0}; }
    static Reply silence() { return {200, {}, {}, {}, false, -1, false, 0}; }
    static Reply stream(qint64 bytes, bool declareLength, int dripMs = 0)
    {
        return {200, "application/json", {}, {}, true, bytes, declareLength, dripMs};
    }

    // Answers of the services.
    static QByteArray releases(const QStringList &ids);
    static QByteArray pageImages(const std::optional<QString> &thumbnail); // none: no such page
    static QByteArray searchResults(const QStringList &titles);
    static QByteArray imageInfo(const std::optional<QString> &url);

    static QImage solidImage(const QColor &color, QSize size = QSize(64, 48));
    static QByteArray encode(const QImage &image, const char *format);
    static QByteArray png(const QImage &image) { return encode(image, "png"); }
    static QByteArray jpeg(const QImage &image) { return encode(image, "jpg"); }
    // A small PNG whose header claims width x height pixels.
    static QByteArray imageBomb(quint32 width, quint32 height);

private:
    class Worker;

    QThread m_thread;
    Worker *m_worker;
    quint16 m_port = 0;
    QElapsedTimer m_clock;
    mutable QMutex m_mutex; // guards what follows
    QHash<QString, Handler> m_handlers;
    QList<Request> m_requests;
    int m_cutStreams = 0;
};
