// SPDX-License-Identifier: GPL-3.0-or-later
#include "UpdateChecker.h"
#include "support/TestSupport.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

namespace {

QByteArray feed(std::initializer_list<std::pair<const char *, const char *>> releases)
{
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                     "<rss version=\"2.0\" xmlns:tw=\"https://tarnwell.org/appcast\"><channel><title>Tarnwell</title>\n";
    for (const auto &[version, url] : releases)
        xml += QStringLiteral("<item><title>Tarnwell %1</title><enclosure url=\"%2\" tw:version=\"%1\" length=\"100\" "
                              "type=\"application/octet-stream\"/></item>\n")
                   .arg(QLatin1String(version), QLatin1String(url))
                   .toUtf8();
    return xml + "</channel></rss>\n";
}

} // namespace

class TestUpdateChecker : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    // Takes connections and never answers.
    QTcpServer m_silent;

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_dir.isValid() && m_silent.listen(QHostAddress::LocalHost)); }

    // The feed comes from a file (the body), a server that never answers, a
    // closed port, or is no feed address at all.
    void checksAgainstTheFeed_data()
    {
        using S = UpdateChecker::Status;
        QTest::addColumn<QString>("from");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<UpdateChecker::Status>("status");
        QTest::addColumn<QString>("latest");
        QTest::addColumn<QString>("messagePart");
        // Versions compare as numbers, a pre-release before its release.
        const QByteArray several = feed({{"0.9.3", "https://example.org/a"}, {"0.10.0", "https://example.org/c"},
                                         {"0.10-rc1", "https://example.org/b"}, {"0.2.0", "https://example.org/d"}});
        QTest::newRow("newest of several") << "file" << several << S::UpdateAvailable << "0.10.0"
                                           << "Tarnwell 0.10.0 is available";
        QTest::newRow("our pre-release") << "file" << feed({{"0.1.0-rc1", "https://a.org/a"}}) << S::UpToDate << "" << "";
        QTest::newRow("same") << "file" << feed({{"0.1.0", "https://example.org/a"}}) << S::UpToDate << ""
                              << "up to date";
        QTest::newRow("release without download")
            << "file" << feed({{"0.5", "ftp://example.org/a"}}) << S::Failed << "" << "no readable release";
        QTest::newRow("not xml") << "file" << QByteArray("<html><p>oops") << S::Failed << "" << "no readable release";
        QTest::newRow("silent server") << "silent" << QByteArray() << S::Failed << "" << "did not answer in time";
        QTest::newRow("closed port") << "closed" << QByteArray() << S::Failed << "" << "network";
        QTest::newRow("no feed") << "none" << QByteArray() << S::Failed << "" << "no update feed";
    }

    void checksAgainstTheFeed()
    {
        QFETCH(QString, from);
        QFETCH(QByteArray, body);
        QFETCH(UpdateChecker::Status, status);
        QFETCH(QString, latest);
        QFETCH(QString, messagePart);

        const QUrl url = from == u"file"    ? QUrl::fromLocalFile(testsupport::writeFile(m_dir.path(), QString::fromLatin1(QTest::currentDataTag()), body))
                       : from == u"silent"  ? QUrl(QStringLiteral("http://127.0.0.1:%1/appcast.xml").arg(m_silent.serverPort()))
                       : from == u"closed"  ? QUrl(QStringLiteral("http://127.0.0.1:9/appcast.xml"))
                                            : QUrl(QStringLiteral("not a feed"));
        UpdateChecker checker(nullptr, QStringLiteral("0.1.0"), url);
        QCOMPARE(checker.hasFeed(), from != u"none");
        if (from == u"silent")
            checker.setRequestTimeout(300);
        QSignalSpy finished(&checker, &UpdateChecker::finished);
        checker.check();
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 30000);
        QCOMPARE(checker.status(), status);
        QCOMPARE(checker.latestVersion(), latest);
        QVERIFY2(checker.message().contains(messagePart), qPrintable(checker.message()));
        QCOMPARE(checker.downloadUrl().isEmpty(), status != UpdateChecker::Status::UpdateAvailable);
    }
};

QTEST_GUILESS_MAIN(TestUpdateChecker)
#include "tst_update_checker.moc"
