// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateChecker.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

namespace {

// Answers every request on 127.0.0.1 with one canned reply, or not at all.
class FeedServer : public QObject
{
public:
    int status = 200;
    QByteArray body;
    bool silent = false;

    FeedServer()
    {
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection()) {
                connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                    m_request += socket->readAll();
                    if (!m_request.contains("\r\n\r\n") || silent)
                        return;
                    socket->write("HTTP/1.1 " + QByteArray::number(status) + " X\r\nContent-Type: application/rss+xml\r\n"
                                  "Content-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n"
                                  + body);
                    socket->disconnectFromHost();
                });
            }
        });
        m_server.listen(QHostAddress::LocalHost);
    }

    QUrl url() const { return QUrl(QStringLiteral("http://127.0.0.1:%1/appcast.xml").arg(m_server.serverPort())); }

private:
    QTcpServer m_server;
    QByteArray m_request;
};

QByteArray feed(std::initializer_list<std::pair<const char *, const char *>> releases)
{
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                     "<rss version=\"2.0\" xmlns:tw=\"https://tarnwell.org/appcast\"><channel><title>Tarnwell</title>\n";
    for (const auto &[version, url] : releases) {
        xml += "<item><title>Tarnwell ";
        xml += version;
        xml += "</title><enclosure url=\"";
        xml += url;
        xml += "\" tw:version=\"";
        xml += version;
        xml += "\" length=\"100\" type=\"application/octet-stream\"/></item>\n";
    }
    return xml + "</channel></rss>\n";
}

} // namespace

class TestUpdateChecker : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void comparesVersions_data()
    {
        QTest::addColumn<QString>("a");
        QTest::addColumn<QString>("b");
        QTest::addColumn<int>("order");
        QTest::newRow("equal") << "0.1.0" << "0.1.0" << 0;
        QTest::newRow("numbers, not text") << "0.10.0" << "0.9.3" << 1;
        QTest::newRow("missing zero") << "1.0" << "1.0.0" << 0;
        QTest::newRow("longer is newer") << "1.0" << "1.0.0.1" << -1;
        QTest::newRow("pre-release first") << "1.0-beta" << "1.0" << -1;
        QTest::newRow("beta before rc") << "1.0-beta2" << "1.0-rc1" << -1;
        QTest::newRow("patch after pre-release") << "1.0.1" << "1.0-rc1" << 1;
        QTest::newRow("leading v") << "v2.1" << "2.1" << 0;
        QTest::newRow("major wins") << "2.0" << "1.99.99" << 1;
    }

    void comparesVersions()
    {
        QFETCH(QString, a);
        QFETCH(QString, b);
        QFETCH(int, order);
        const auto sign = [](int v) { return v < 0 ? -1 : v > 0 ? 1 : 0; };
        QCOMPARE(sign(UpdateChecker::compareVersions(a, b)), order);
        QCOMPARE(sign(UpdateChecker::compareVersions(b, a)), -order);
    }

    void checksAgainstTheFeed_data()
    {
        QTest::addColumn<int>("httpStatus");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<UpdateChecker::Status>("status");
        QTest::addColumn<QString>("latest");
        QTest::addColumn<QString>("messagePart");

        QTest::newRow("newer")
            << 200 << feed({{"0.2.0", "https://example.org/tarnwell-0.2.0.tar.gz"}})
            << UpdateChecker::Status::UpdateAvailable << "0.2.0" << "Tarnwell 0.2.0 is available";
        QTest::newRow("newest of several")
            << 200
            << feed({{"0.1.5", "https://example.org/a"}, {"0.3.0", "https://example.org/c"},
                     {"0.2.0", "https://example.org/b"}})
            << UpdateChecker::Status::UpdateAvailable << "0.3.0" << "0.3.0";
        QTest::newRow("same") << 200 << feed({{"0.1.0", "https://example.org/a"}}) << UpdateChecker::Status::UpToDate
                              << "" << "up to date";
        QTest::newRow("older") << 200 << feed({{"0.0.9", "https://example.org/a"}})
                               << UpdateChecker::Status::UpToDate << "" << "up to date";
        QTest::newRow("no releases") << 200 << feed({}) << UpdateChecker::Status::Failed << "" << "no readable release";
        QTest::newRow("release without download") << 200 << feed({{"0.5", "ftp://example.org/a"}})
                                                  << UpdateChecker::Status::Failed << "" << "no readable release";
        QTest::newRow("not xml") << 200 << QByteArray("<html><p>oops") << UpdateChecker::Status::Failed << ""
                                 << "no readable release";
        QTest::newRow("not found") << 404 << QByteArray("gone") << UpdateChecker::Status::Failed << ""
                                   << "Couldn't check for updates";
    }

    void checksAgainstTheFeed()
    {
        QFETCH(int, httpStatus);
        QFETCH(QByteArray, body);
        QFETCH(UpdateChecker::Status, status);
        QFETCH(QString, latest);
        QFETCH(QString, messagePart);

        FeedServer server;
        server.status = httpStatus;
        server.body = body;
        UpdateChecker checker(nullptr, QStringLiteral("0.1.0"), server.url());
        QSignalSpy finished(&checker, &UpdateChecker::finished);
        checker.check();
        QCOMPARE(checker.status(), UpdateChecker::Status::Checking);
        QVERIFY(finished.wait(5000));
        QCOMPARE(checker.status(), status);
        QCOMPARE(checker.latestVersion(), latest);
        QVERIFY2(checker.message().contains(messagePart), qPrintable(checker.message()));
        QCOMPARE(checker.downloadUrl().isEmpty(), status != UpdateChecker::Status::UpdateAvailable);
    }

    void closedPortFailsAtOnce()
    {
        UpdateChecker checker(nullptr, QStringLiteral("0.1.0"), QUrl(QStringLiteral("http://127.0.0.1:9/appcast.xml")));
        QSignalSpy finished(&checker, &UpdateChecker::finished);
        checker.check();
        QVERIFY(finished.wait(5000));
        QCOMPARE(checker.status(), UpdateChecker::Status::Failed);
        QVERIFY(checker.message().contains(QStringLiteral("network")));
    }

    void silentServerTimesOut()
    {
        FeedServer server;
        server.silent = true;
        UpdateChecker checker(nullptr, QStringLiteral("0.1.0"), server.url());
        checker.setRequestTimeout(300);
        QSignalSpy finished(&checker, &UpdateChecker::finished);
        checker.check();
        QVERIFY(finished.wait(5000));
        QCOMPARE(checker.status(), UpdateChecker::Status::Failed);
        QVERIFY2(checker.message().contains(QStringLiteral("did not answer in time")), qPrintable(checker.message()));
    }

    void noFeedSaysSo()
    {
        UpdateChecker checker(nullptr, QStringLiteral("0.1.0"), QUrl(QStringLiteral("not a feed")));
        QVERIFY(!checker.hasFeed());
        checker.check();
        QCOMPARE(checker.status(), UpdateChecker::Status::Failed);
        QVERIFY(checker.message().contains(QStringLiteral("no update feed")));
    }
};

QTEST_GUILESS_MAIN(TestUpdateChecker)
#include "tst_update_checker.moc"
