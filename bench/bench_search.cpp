// SPDX-License-Identifier: GPL-3.0-or-later
// Search queries over an index of 100,000 songs with realistic names: the
// time of single queries (median and 99th percentile over many different
// queries of one kind) and the time to assemble the index from tags already
// read.
#include "browse/TrackIndex.h"

#include <QCoreApplication>
#include <QRandomGenerator>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace {

const QStringList firstNames { "Mara", "Jonas", "Elif", "Tomasz", "Aiko", "Björn", "Sigrún", "Luca", "Nadia",
    "Owen", "Ines", "Rafael", "Chloé", "Dmitri", "Hana", "Kwame", "Lena", "Mateo", "Noor", "Pablo", "Ruth",
    "Søren", "Yusuf", "Zoë" };
const QStringList lastNames { "Olsen", "Keller", "Okafor", "Nowak", "Tanaka", "Ívarsdóttir", "Moreau",
    "Rossi", "Haddad", "Brennan", "Silva", "Lindqvist", "Novák", "Ahmed", "Fischer", "Kowalski", "Dubois",
    "García", "Jensen", "Petrov" };
const QStringList words { "silver", "lantern", "river", "night", "gold", "echo", "harbor", "velvet", "paper",
    "ghost", "summer", "winter", "glass", "wolves", "garden", "electric", "neon", "ocean", "static",
    "morning", "shadow", "canyon", "orchid", "thunder", "little", "broken", "wild", "quiet", "hollow",
    "crimson", "fading", "northern", "dream", "heart", "fire", "rain", "city", "light", "road", "stone",
    "blue", "love", "song", "dance", "sky", "moon", "star", "home" };
const QStringList foreign { "Время", "Город", "Ночь", "夜明け", "東京", "さくら", "Ελπίδα", "Θάλασσα",
    "Ça ira", "Mañana", "Über", "Fjärran", "Jùjú", "Árbol" };

class Generator
{
public:
    QRandomGenerator rng { 424242 };

    QString pick(const QStringList &list) { return list.at(rng.bounded(int(list.size()))); }
    QString title(QString w)
    {
        if (!w.isEmpty())
            w[0] = w[0].toUpper();
        return w;
    }
    QString phrase(int minWords, int maxWords)
    {
        QStringList out;
        const int n = minWords + rng.bounded(maxWords - minWords + 1);
        for (int i = 0; i < n; ++i)
            out.append(rng.bounded(30) == 0 ? pick(foreign) : title(pick(words)));
        return out.join(u' ');
    }
    QString artist()
    {
        switch (rng.bounded(5)) {
        case 0:
            return pick(firstNames) + u' ' + pick(lastNames);
        case 1:
            return QStringLiteral("The ") + phrase(1, 2);
        case 2:
            return pick(firstNames) + QStringLiteral(" & The ") + title(pick(words)) + u's';
        default:
            return phrase(1, 3);
        }
    }
};

// About 7,000 artists with 1 to 4 albums of 8 to 14 songs each, 5% of the
// songs untagged, in library order (by file name).
const TrackIndex &library()
{
    static const TrackIndex index = [] {
        Generator g;
        QList<TrackSearchEntry> entries;
        entries.reserve(100000);
        while (entries.size() < 100000) {
            const QString artist = g.artist();
            const int albums = 1 + g.rng.bounded(4);
            for (int a = 0; a < albums && entries.size() < 100000; ++a) {
                const QString album = g.phrase(1, 4);
                const int songs = 8 + g.rng.bounded(7);
                for (int s = 0; s < songs && entries.size() < 100000; ++s) {
                    const QString name
                        = QStringLiteral("%1 %2").arg(s + 1, 2, 10, QChar(u'0')).arg(g.phrase(1, 5));
                    const Track t = Track::create(
                        QUrl::fromLocalFile(QStringLiteral("/music/%1/%2/%3.flac").arg(artist, album, name)));
                    const bool untagged = g.rng.bounded(20) == 0;
                    entries.append({ t, name, untagged ? QString() : artist, untagged ? QString() : album });
                }
            }
        }
        std::stable_sort(entries.begin(), entries.end(),
            [](const TrackSearchEntry &a, const TrackSearchEntry &b) { return a.name < b.name; });
        return TrackIndex(entries);
    }();
    return index;
}

QStringList oneLetter()
{
    QStringList q;
    for (char16_t c = u'a'; c <= u'z'; ++c)
        q.append(QString(QChar(c)));
    q << QStringLiteral("é") << QStringLiteral("ö") << QStringLiteral("ж") << QStringLiteral("夜");
    return q;
}

QStringList lettersAtRandom(int length, int count)
{
    QRandomGenerator rng(length * 7919);
    QStringList q;
    for (int i = 0; i < count; ++i) {
        QString s;
        for (int k = 0; k < length; ++k)
            s += QChar(char16_t(u'a' + rng.bounded(26)));
        q.append(s);
    }
    return q;
}

QStringList matchingNothing()
{
    return { "qqqq", "zxzx", "xqjv", "ghost river zz", "12345678", "ßßß", "жжжж", "夜夜夜", "lantern!",
        "k k k" };
}

void runQueries(benchmark::State &state, const QStringList &queries)
{
    const TrackIndex &index = library();
    std::vector<double> micros;
    qsizetype next = 0;
    for (auto _ : state) {
        const QString &q = queries.at(next++ % queries.size());
        const auto start = std::chrono::steady_clock::now();
        SearchResults r = computeSearchResults(q, index);
        const auto end = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(r);
        micros.push_back(std::chrono::duration<double, std::micro>(end - start).count());
    }
    std::sort(micros.begin(), micros.end());
    const auto at
        = [&](double p) { return micros[std::min(micros.size() - 1, size_t(p * double(micros.size())))]; };
    state.counters["median_us"] = at(0.5);
    state.counters["p99_us"] = at(0.99);
    state.counters["max_us"] = micros.back();
}

void BM_Query1Letter(benchmark::State &state)
{
    runQueries(state, oneLetter());
}
void BM_Query2Letters(benchmark::State &state)
{
    runQueries(state, lettersAtRandom(2, 400));
}
void BM_Query3Letters(benchmark::State &state)
{
    runQueries(state, lettersAtRandom(3, 400));
}
void BM_QueryMatchingNothing(benchmark::State &state)
{
    runQueries(state, matchingNothing());
}

void BM_AssembleIndex(benchmark::State &state)
{
    const QList<TrackSearchEntry> entries = library().entries().toList();
    for (auto _ : state) {
        TrackIndex index(entries);
        benchmark::DoNotOptimize(index);
    }
    state.counters["songs"] = double(entries.size());
}

} // namespace

BENCHMARK(BM_Query1Letter)->Iterations(3000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Query2Letters)->Iterations(3000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Query3Letters)->Iterations(3000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_QueryMatchingNothing)->Iterations(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AssembleIndex)->Iterations(3)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    library();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
