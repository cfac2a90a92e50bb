// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QColor>
#include <QElapsedTimer>
#include <QHash>
#include <QImage>
#include <QList>
#include <QMap>
#include <QMutex>
#include <QObject>
#include <QSize>
#include <QString>
#include <QThread>

#include <functional>
#include <optional>

// A small HTTP/1.1 server on 127.0.0.1 that plays the web services for tests.
// Each service lives under its own first path segment, so one server stands in
// for all of them: serviceUrl("mb") is the MusicBrainz base address, "caa" the
// Cover Art Archive, "wiki" Wikipedia, "commons" Commons and "upload" the file
// host their image links point to. Answers are scripted per service (in order,
// or by a function of the request); every request is recorded with its arrival
// time. The server runs on a thread of its own, so the arrival times stay true
// while the code under test keeps the test's thread busy; handlers are called
// on that thread.
class FakeWebServer : public QObject
{
    Q_OBJECT

public:
    struct Request
    {
        QString service;          // the first path segment, e.g. "mb"
        QByteArray target;        // the request target exactly as sent
        QByteArray pathAndQuery;  // the target without the service segment
        QMap<QByteArray, QByteArray> headers; // names in lower case
        double time = 0;          // seconds since the server started
    };

    struct Reply
    {
        int status = 200;
        QByteArray contentType = "application/json";
        QByteArray body;
        QList<std::pair<QByteArray, QByteArray>> headers;
        bool answer = true; // false: keep the connection open and say nothing
        // A streamed body of filler instead: this many bytes, `dripBytes` every
        // `dripMs` (as fast as the client takes them when 0).
        qint64 streamBytes = -1;
        bool declareLength = false;
        qint64 dripBytes = 256 * 1024;
        int dripMs = 0;
    };

    using Handler = std::function<Reply(const Request &)>;

    explicit FakeWebServer(QObject *parent = nullptr);
    ~FakeWebServer() override;

    // Listens on a free loopback port (the same one again after stop()).
    bool start();
    // Stops listening and drops every connection (a server that has gone away).
    void stop();
    QString serviceUrl(const QString &service) const;

    // Answers the service's requests by this function.
    void on(const QString &service, Handler handler);
    // Answers the service's requests with these replies in order; afterwards 404.
    void script(const QString &service, QList<Reply> replies);
    // Forgets every script and every request; unscripted services answer 404.
    void reset();

    // Seconds since the server started, on the clock of Request::time.
    double now() const { return double(m_clock.nsecsElapsed()) / 1e9; }
    QList<Request> requests() const;
    QList<Request> requestsFor(const QString &service) const;
    // Streamed bodies whose client hung up before their end.
    int cutStreams() const;

    static Reply json(const QByteArray &body, int status = 200);
    static Reply status(int code);
    static Reply image(const QByteArray &encoded);
    static Reply redirect(const QByteArray &location);
    static Reply silence();
    static Reply stream(qint64 bytes, bool declareLength, int dripMs = 0, qint64 dripBytes = 1);

    // Bodies of the services.
    static QByteArray releases(const QStringList &ids);
    static QByteArray pageImages(const std::optional<QString> &thumbnailSource);
    static QByteArray searchResults(const QStringList &titles);
    static QByteArray imageInfo(const std::optional<QString> &url);

    // Pictures.
    static QImage solidImage(const QColor &color, QSize size = QSize(64, 48));
    static QByteArray png(const QImage &image);
    static QByteArray jpeg(const QImage &image);
    // A small PNG whose header claims width x height pixels.
    static QByteArray imageBomb(quint32 width, quint32 height);

private:
    class Worker;
    friend class Worker;

    // Called on the server's thread.
    Reply dispatch(Request request);

    QThread m_thread;
    Worker *m_worker = nullptr;
    quint16 m_port = 0;
    QElapsedTimer m_clock;
    mutable QMutex m_mutex; // guards what follows
    QHash<QString, Handler> m_handlers;
    QList<Request> m_requests;
    int m_cutStreams = 0;
};
