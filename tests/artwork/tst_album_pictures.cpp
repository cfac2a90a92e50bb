// SPDX-License-Identifier: GPL-3.0-or-later
#include "artwork/AlbumPictures.h"

#include <QTest>

using Song = AlbumPictures::Song;

namespace {

// "artist|album|file" ─► a song.
QList<Song> songs(const QStringList &specs)
{
    QList<Song> list;
    for (const QString &spec : specs) {
        const QStringList parts = spec.split(u'|');
        list.append({QUrl(QStringLiteral("file:///m/") + parts.at(2)), parts.at(0), parts.at(1)});
    }
    return list;
}

} // namespace

class TestAlbumPictures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Songs arriving in batches give the index all of them would give at once.
    void extendingEqualsMakingAtOnce_data()
    {
        QTest::addColumn<QStringList>("before");
        QTest::addColumn<QStringList>("after");
        QTest::addColumn<QStringList>("addedTo");
        QTest::newRow("new album of a known artist")
            << QStringList{"A|One|1", "A|One|2"} << QStringList{"A|Two|3"} << QStringList{"a\ntwo"};
        QTest::newRow("more songs of a known album, other spelling")
            << QStringList{"A|One|1", "B|Else|2"} << QStringList{"a|ONE|3", "A|One|4"} << QStringList{"a\none"};
        QTest::newRow("album without artist, and songs without album")
            << QStringList{"|Loose|1", "A||2"} << QStringList{"|Loose|3", "B||4"} << QStringList{"\nloose"};
        QTest::newRow("into an empty index") << QStringList{} << QStringList{"A|One|1"} << QStringList{"a\none"};
    }
    void extendingEqualsMakingAtOnce()
    {
        QFETCH(QStringList, before);
        QFETCH(QStringList, after);
        QFETCH(QStringList, addedTo);
        AlbumPictures::Index index = AlbumPictures::makeIndex(songs(before));
        const QSet<QString> added = AlbumPictures::extendIndex(index, AlbumPictures::makeIndex(songs(after)));
        const AlbumPictures::Index whole = AlbumPictures::makeIndex(songs(before + after));
        QCOMPARE(index.albumSongs, whole.albumSongs);
        QCOMPARE(index.artistAlbums.keys().size(), whole.artistAlbums.keys().size());
        for (auto it = whole.artistAlbums.cbegin(); it != whole.artistAlbums.cend(); ++it)
            QVERIFY2(index.artistAlbums.value(it.key()) == it.value(), qPrintable(it.key()));
        QCOMPARE(added, QSet<QString>(addedTo.cbegin(), addedTo.cend()));
    }
};

QTEST_GUILESS_MAIN(TestAlbumPictures)
#include "tst_album_pictures.moc"
