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

QUuid uuid(const char *text)
{
    return QUuid::fromString(QLatin1StringView(text));
}

Track track(const char *id, const QString &path, double duration = 0)
{
    return Track{uuid(id), QUrl::fromLocalFile(path), duration};
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
        QCOMPARE(PlaylistStore::defaultSaveFile(),
                 QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
                     + QStringLiteral("/Tarnwell/playlists.json"));
        PlaylistStore store;
        store.createPlaylist(QStringLiteral("Road"));
        QVERIFY(QFile::exists(PlaylistStore::defaultSaveFile()));
    }

    void encodesTheExactBytes()
    {
        const QList<Playlist> lists{
            {uuid("6B1D3C1E-2F4A-4C5B-9D8E-7F6A5B4C3D2E"), QStringLiteral("Road / Trip"),
             {track("0f8fad5b-d9cb-469f-a165-70867728950e", QStringLiteral("/Music/a b.mp3"), 180),
              track("7C9E6679-7425-40DE-944B-E07FC1F90AE7", QStringLiteral("/Music/Café.flac"), 2.25)}},
            {uuid("16FD2706-8BAF-433B-82EB-8C7FADA847DA"), QStringLiteral("Empty \"one\""), {}},
        };
        QCOMPARE(*playlistjson::encode(lists),
                 QByteArray("[{\"id\":\"6B1D3C1E-2F4A-4C5B-9D8E-7F6A5B4C3D2E\",\"name\":\"Road \\/ Trip\",\"tracks\":["
                            "{\"id\":\"0F8FAD5B-D9CB-469F-A165-70867728950E\",\"url\":\"file:\\/\\/\\/Music\\/a%20b.mp3\",\"duration\":180},"
                            "{\"id\":\"7C9E6679-7425-40DE-944B-E07FC1F90AE7\",\"url\":\"file:\\/\\/\\/Music\\/Caf%C3%A9.flac\",\"duration\":2.25}]},"
                            "{\"id\":\"16FD2706-8BAF-433B-82EB-8C7FADA847DA\",\"name\":\"Empty \\\"one\\\"\",\"tracks\":[]}]"));
    }

    void writesWhatItHoldsAndReadsItBack()
    {
        PlaylistStore store(file());
        QSignalSpy changed(&store, &PlaylistStore::playlistsChanged);
        store.createPlaylist(QStringLiteral("Road"));
        store.createPlaylist(QStringLiteral("Road")); // names may repeat
        QCOMPARE(changed.size(), 2);
        const Track a = track("0f8fad5b-d9cb-469f-a165-70867728950e", QStringLiteral("/m/a b.mp3"), 3.5);
        QVERIFY(store.addTrack(a, store.playlists().at(0).id));
        QCOMPARE(changed.size(), 3);

        PlaylistStore again(file());
        QCOMPARE(again.playlists().size(), 2);
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(again.playlists().at(i).id, store.playlists().at(i).id);
            QCOMPARE(again.playlists().at(i).name, QStringLiteral("Road"));
        }
        const Track back = again.playlists().at(0).tracks.value(0);
        QCOMPARE(back.id, a.id);
        QCOMPARE(back.url, a.url);
        QCOMPARE(back.duration, 3.5);
    }

    void trimsNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("stored"); // empty: nothing is created
        QTest::newRow("spaces") << "  Jazz  " << "Jazz";
        QTest::newRow("tabs and no-break spaces") << QStringLiteral("\tChill\u00A0\u2003") << "Chill";
        QTest::newRow("inner spaces kept") << " Late  Night " << "Late  Night";
        QTest::newRow("trailing line break kept") << "Jazz\n" << "Jazz\n";
        QTest::newRow("only a line break") << "\n" << "\n";
        QTest::newRow("empty") << "" << "";
        QTest::newRow("only spaces") << "   " << "";
        QTest::newRow("only unicode spaces") << QStringLiteral("\u2002\u3000\t") << "";
    }

    void trimsNames()
    {
        QFETCH(QString, name);
        QFETCH(QString, stored);
        PlaylistStore store(file());
        store.createPlaylist(name);
        if (stored.isEmpty()) {
            QVERIFY(store.playlists().isEmpty());
            QVERIFY(!QFile::exists(file()));
        } else {
            QCOMPARE(store.playlists().size(), 1);
            QCOMPARE(store.playlists().first().name, stored);
            QVERIFY(store.playlists().first().tracks.isEmpty());
        }
    }

    void addTrackAnswers()
    {
        PlaylistStore store(file());
        store.createPlaylist(QStringLiteral("One"));
        store.createPlaylist(QStringLiteral("Two"));
        const QUuid one = store.playlists().at(0).id;
        const QUuid two = store.playlists().at(1).id;
        const Track a = Track::create(QUrl::fromLocalFile(QStringLiteral("/m/a.mp3")));

        QVERIFY(store.addTrack(a, one));
        const QByteArray before = readFile(file());
        QSignalSpy changed(&store, &PlaylistStore::playlistsChanged);
        QVERIFY(!store.addTrack(a, one));
        QVERIFY(!store.addTrack(a, QUuid::createUuid()));
        QCOMPARE(changed.size(), 0);
        QCOMPARE(readFile(file()), before);

        QVERIFY(store.addTrack(a, two));
        Track sameFileOtherId = Track::create(a.url);
        QVERIFY(store.addTrack(sameFileOtherId, one));
        QCOMPARE(store.playlists().at(0).tracks.size(), 2);
    }

    void brokenFilesLoadNothingAndAreKept_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("not json") << QByteArray("this is not json");
        QTest::newRow("one broken playlist")
            << QByteArray("[{\"id\":\"16FD2706-8BAF-433B-82EB-8C7FADA847DA\",\"name\":\"ok\",\"tracks\":[]},"
                          "{\"id\":\"16FD2706-8BAF-433B-82EB-8C7FADA847DB\",\"tracks\":[]}]");
        QTest::newRow("a broken track")
            << QByteArray("[{\"id\":\"16FD2706-8BAF-433B-82EB-8C7FADA847DA\",\"name\":\"ok\",\"tracks\":[{\"id\":\"x\"}]}]");
        QTest::newRow("an object") << QByteArray("{\"playlists\":[]}");
    }

    void brokenFilesLoadNothingAndAreKept()
    {
        QFETCH(QByteArray, content);
        writeFile(m_dir.path(), QStringLiteral("Tarnwell/playlists.json"), content);
        PlaylistStore store(file());
        QVERIFY(store.playlists().isEmpty());
        QCOMPARE(readFile(file()), content); // loading alone changes nothing

        store.createPlaylist(QStringLiteral("New"));
        const QStringList aside = QDir(m_dir.filePath(QStringLiteral("Tarnwell")))
                                      .entryList({QStringLiteral("playlists.json.unreadable-*")});
        QCOMPARE(aside.size(), 1);
        QCOMPARE(readFile(m_dir.filePath(QStringLiteral("Tarnwell/") + aside.first())), content);
        QCOMPARE(PlaylistStore(file()).playlists().size(), 1);
    }

    void acceptsAnyKeyOrderAndWhitespace()
    {
        writeFile(m_dir.path(), QStringLiteral("Tarnwell/playlists.json"),
                  "[\n  {\"tracks\": [ {\"duration\": 1.5, \"url\": \"file:///m/x.mp3\",\n"
                  "   \"id\": \"16fd2706-8baf-433b-82eb-8c7fada847da\"} ],\n"
                  "   \"name\": \"Mix\", \"id\": \"7C9E6679-7425-40DE-944B-E07FC1F90AE7\"}\n]\n");
        PlaylistStore store(file());
        QCOMPARE(store.playlists().size(), 1);
        QCOMPARE(store.playlists().first().name, QStringLiteral("Mix"));
        QCOMPARE(store.playlists().first().tracks.first().path(), QStringLiteral("/m/x.mp3"));
    }

    // A save that can't be made keeps the file as it was and the change in
    // memory for the next save; a file that can't be read is never overwritten.
    void saveFailures_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("fileReadable");
        QTest::addColumn<bool>("folderWritable");
        QTest::addColumn<int>("loaded");
        QTest::addColumn<bool>("movedAside");
        const QByteArray one("[{\"id\":\"16FD2706-8BAF-433B-82EB-8C7FADA847DA\",\"name\":\"ok\",\"tracks\":[]}]");
        QTest::newRow("folder not writable") << one << true << false << 1 << false;
        QTest::newRow("broken file that can't be moved aside") << QByteArray("[{") << true << false << 0 << false;
        QTest::newRow("file without read permission") << one << false << true << 0 << true;
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

        const QStringList aside = QDir(folder).entryList({QStringLiteral("playlists.json.unreadable-*")});
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
