// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/PlaylistStore.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <optional>
#include <sys/stat.h>

using testsupport::readFile;
using testsupport::writeFile;

namespace {

Track track(const char *id, const QString &path, double duration)
{
    return Track { QUuid::fromString(QLatin1StringView(id)), QUrl::fromLocalFile(path), duration };
}

} // namespace

class TestPlaylistStore : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString file() const { return m_dir.filePath(QStringLiteral("Tarnwell/playlists.json")); }

private Q_SLOTS:
    void init()
    {
        QDir(m_dir.path()).removeRecursively();
        QDir().mkpath(m_dir.path());
    }

    void livesInTheUserDataFolder()
    {
        PlaylistStore().createPlaylist(QStringLiteral("Road"));
        QVERIFY(QFile::exists(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
            + QStringLiteral("/Tarnwell/playlists.json")));
    }

    void encodesTheExactBytes()
    {
        const QList<Playlist> lists {
            { QUuid::fromString(u"6B1D3C1E-2F4A-4C5B-9D8E-7F6A5B4C3D2E"), QStringLiteral("Road / \"Trip\""),
                { track("0f8fad5b-d9cb-469f-a165-70867728950e", QStringLiteral("/m/a b.mp3"), 2.25) } },
            { QUuid::fromString(u"16FD2706-8BAF-433B-82EB-8C7FADA847DA"), QStringLiteral("Empty"), {} },
        };
        QCOMPARE(*playlistjson::encode(lists),
            "[{\"id\":\"6B1D3C1E-2F4A-4C5B-9D8E-7F6A5B4C3D2E\",\"name\":\"Road \\/ "
            "\\\"Trip\\\"\",\"tracks\":["
            "{\"id\":\"0F8FAD5B-D9CB-469F-A165-70867728950E\",\"url\":\"file:\\/\\/\\/m\\/a%20b.mp3\","
            "\"duration\":2.25}]},{\"id\":\"16FD2706-8BAF-433B-82EB-8C7FADA847DA\",\"name\":\"Empty\","
            "\"tracks\":[]}]");
    }

    void addsAndReadsBack()
    {
        PlaylistStore store(file());
        QSignalSpy changed(&store, &PlaylistStore::playlistsChanged);
        store.createPlaylist(QStringLiteral("Road"));
        store.createPlaylist(QStringLiteral("Road")); // names may repeat
        const QUuid one = store.playlists().at(0).id;
        const Track a = track("0f8fad5b-d9cb-469f-a165-70867728950e", QStringLiteral("/m/a b.mp3"), 3.5);
        QVERIFY(store.addTrack(a, one));
        QCOMPARE(changed.size(), 3);
        // The same song twice in a list, or a list that isn't there: no change at all.
        const QByteArray before = readFile(file());
        QVERIFY(!store.addTrack(a, one));
        QVERIFY(!store.addTrack(a, QUuid::createUuid()));
        QCOMPARE(changed.size(), 3);
        QCOMPARE(readFile(file()), before);
        QVERIFY(store.addTrack(a, store.playlists().at(1).id));
        QVERIFY(store.addTrack(Track::create(a.url), one)); // the same file under another id

        const QList<Playlist> back = PlaylistStore(file()).playlists();
        QCOMPARE(back.size(), 2);
        QCOMPARE(back.at(1).id, store.playlists().at(1).id);
        QCOMPARE(back.at(1).name, QStringLiteral("Road"));
        QCOMPARE(back.at(0).tracks.size(), 2);
        const Track t = back.at(0).tracks.value(0);
        QCOMPARE(std::tuple(t.id, t.url, t.duration), std::tuple(a.id, a.url, 3.5));
    }

    void trimsNames()
    {
        PlaylistStore store(file());
        store.createPlaylist(QString());
        store.createPlaylist(QStringLiteral(" \u3000\t"));
        QVERIFY(!QFile::exists(file()));
        store.createPlaylist(QStringLiteral("\tLate  Night\u00A0\u2003"));
        store.createPlaylist(QStringLiteral("Jazz\n"));
        QCOMPARE(store.playlists().size(), 2);
        QCOMPARE(store.playlists().at(0).name, QStringLiteral("Late  Night"));
        QCOMPARE(store.playlists().at(1).name, QStringLiteral("Jazz\n"));
    }

    // A save that can't be made keeps the file as it was and the change in
    // memory for the next save; a file that can't be read or parsed is never
    // overwritten.
    void saveFailures_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("fileReadable");
        QTest::addColumn<bool>("folderWritable");
        QTest::addColumn<int>("loaded");
        QTest::addColumn<bool>("movedAside");
        const QByteArray one(
            "[{\"id\":\"16FD2706-8BAF-433B-82EB-8C7FADA847DA\",\"name\":\"ok\",\"tracks\":[]}]");
        const auto row
            = [](const char *what, const QByteArray &content, bool readable, bool writable, int loaded,
                  bool aside) { QTest::newRow(what) << content << readable << writable << loaded << aside; };
        row("folder not writable", one, true, false, 1, false);
        row("broken file that can't be moved aside", "[{", true, false, 0, false);
        row("file without read permission", one, false, true, 0, true);
        row("not JSON", "this is not json", true, true, 0, true);
        row("a broken track", QByteArray(one).replace("[]", "[{\"id\":\"x\"}]"), true, true, 0, true);
    }

    void saveFailures()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, fileReadable);
        QFETCH(bool, folderWritable);
        QFETCH(int, loaded);
        QFETCH(bool, movedAside);
        const QString folder = m_dir.filePath(QStringLiteral("Tarnwell"));
        writeFile(m_dir.path(), QStringLiteral("Tarnwell/playlists.json"), content);
        std::optional<testsupport::PermissionsEnforced> enforced(std::in_place);
        ::chmod(QFile::encodeName(file()).constData(), fileReadable ? 0644 : 0200);
        ::chmod(QFile::encodeName(folder).constData(), folderWritable ? 0755 : 0555);
        PlaylistStore store(file());
        QCOMPARE(store.playlists().size(), loaded);
        store.createPlaylist(QStringLiteral("New"));
        QCOMPARE(store.playlists().size(), loaded + 1);
        enforced.reset();

        const QStringList aside = QDir(folder).entryList({ QStringLiteral("playlists.json.unreadable-*") });
        QCOMPARE(aside.size(), movedAside ? 1 : 0);
        QCOMPARE(readFile(movedAside ? folder + u'/' + aside.first() : file()), content);
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden).size(), movedAside ? 2 : 1);

        ::chmod(QFile::encodeName(folder).constData(), 0755);
        store.createPlaylist(QStringLiteral("Later"));
        QCOMPARE(PlaylistStore(file()).playlists().size(), loaded + 2);
    }

    void unencodableChangeStaysInMemory()
    {
        PlaylistStore store(file());
        store.createPlaylist(QStringLiteral("Keep"));
        const QByteArray before = readFile(file());
        Track bad = Track::create(QUrl::fromLocalFile(QStringLiteral("/m/nan.mp3")));
        bad.duration = qQNaN();
        QVERIFY(store.addTrack(bad, store.playlists().first().id));
        QCOMPARE(store.playlists().first().tracks.size(), 1);
        QCOMPARE(readFile(file()), before);
    }
};

QTEST_GUILESS_MAIN(TestPlaylistStore)
#include "tst_playlist_store.moc"
