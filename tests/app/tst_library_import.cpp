// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryImport.h"

#include <QTest>

using import::PrefetchPlan;

Q_DECLARE_METATYPE(import::PrefetchPlan)

namespace {

QUrl file(const char *name)
{
    return QUrl::fromLocalFile(QStringLiteral("/music/") + QLatin1String(name));
}

// One song's tags as the prefetch reads them; null means the tag is absent.
struct Tags
{
    const char *artist;
    const char *album;
};

PrefetchPlan planOf(std::initializer_list<Tags> songs)
{
    PrefetchPlan plan;
    for (const Tags &t : songs) {
        plan.add(t.artist ? std::optional<QString>(QString::fromUtf8(t.artist)) : std::nullopt,
                 t.album ? std::optional<QString>(QString::fromUtf8(t.album)) : std::nullopt);
    }
    return plan;
}

QStringList albumKeys(const PrefetchPlan &plan)
{
    QStringList keys;
    for (const auto &a : plan.albums())
        keys.append(a.artist + QLatin1Char('|') + a.album);
    return keys;
}

} // namespace

class TestLibraryImport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsOnlyFreshFilesInOrder()
    {
        const QList<QUrl> found{file("c.mp3"), file("a.mp3"), file("b.mp3"), file("a.mp3")};
        const QSet<QUrl> existing{file("b.mp3")};
        QCOMPARE(import::freshFiles(found, existing), (QList<QUrl>{file("c.mp3"), file("a.mp3")}));
        QVERIFY(import::freshFiles(found, {file("a.mp3"), file("b.mp3"), file("c.mp3")}).isEmpty());
        QVERIFY(import::freshFiles({}, existing).isEmpty());
    }

    void deduplicatesArtistsAndAlbums_data()
    {
        QTest::addColumn<PrefetchPlan>("plan");
        QTest::addColumn<QStringList>("artists");
        QTest::addColumn<QStringList>("albums");

        QTest::newRow("same album by two artists")
            << planOf({{"A", "Hits"}, {"B", "Hits"}}) << QStringList{"A", "B"} << QStringList{"A|Hits", "B|Hits"};
        QTest::newRow("letter case makes two artists")
            << planOf({{"Low", "X"}, {"LOW", "X"}}) << QStringList{"Low", "LOW"} << QStringList{"Low|X", "LOW|X"};
        QTest::newRow("album without artist adds nothing")
            << planOf({{nullptr, "Lonely"}, {"", "Lonely"}, {" \t", "Lonely"}}) << QStringList{} << QStringList{};
        QTest::newRow("artist without album") << planOf({{"A", nullptr}, {"A", " "}}) << QStringList{"A"}
                                              << QStringList{};
        QTest::newRow("spaces and tabs trimmed")
            << planOf({{" A\t", "\tHits "}, {"A", "Hits"}}) << QStringList{"A"} << QStringList{"A|Hits"};
        QTest::newRow("line breaks are not trimmed")
            << planOf({{"A\n", "Hits"}, {"A", "Hits"}}) << QStringList{"A\n", "A"}
            << QStringList{"A\n|Hits", "A|Hits"};
        QTest::newRow("order of first appearance")
            << planOf({{"B", "2"}, {"A", "1"}, {"B", "1"}, {"A", "1"}}) << QStringList{"B", "A"}
            << QStringList{"B|2", "A|1", "B|1"};
    }

    void deduplicatesArtistsAndAlbums()
    {
        QFETCH(PrefetchPlan, plan);
        QFETCH(QStringList, artists);
        QFETCH(QStringList, albums);
        QCOMPARE(plan.artists(), artists);
        QCOMPARE(albumKeys(plan), albums);
    }
};

QTEST_GUILESS_MAIN(TestLibraryImport)
#include "tst_library_import.moc"
