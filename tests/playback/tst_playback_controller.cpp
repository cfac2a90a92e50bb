// SPDX-License-Identifier: GPL-3.0-or-later
// The queue rules, over a player that makes no sound.
#include "playback/PlaybackController.h"

#include <QSet>
#include <QTest>

namespace {

// Songs are named by letter; the file of song "A" is /music/A.flac.
Track song(const QString &name)
{
    Track t;
    t.id = QUuid::createUuidV5(QUuid(), name);
    t.url = QUrl::fromLocalFile(QStringLiteral("/music/%1.flac").arg(name));
    return t;
}

QString nameOf(const QUrl &url)
{
    return url.fileName().section(u'.', 0, 0);
}

QStringList names(const QList<Track> &tracks)
{
    QStringList out;
    for (const Track &t : tracks)
        out.append(nameOf(t.url));
    return out;
}

class FakePlayer : public PlayerControl
{
public:
    bool load(const QUrl &url) override
    {
        loads.append(nameOf(url));
        return !unloadable.contains(nameOf(url));
    }
    void play() override
    {
        playing = true;
        ++plays;
    }
    void pause() override
    {
        playing = false;
        ++pauses;
    }
    void seek(double seconds) override { seeks.append(seconds); }
    bool isPlaying() const override { return playing; }
    double duration() const override { return length; }

    QStringList loads;
    QSet<QString> unloadable;
    bool playing = false;
    int plays = 0;
    int pauses = 0;
    double length = 0;
    QList<double> seeks;
};

// A controller with a queue that steps can change and a scripted random source.
struct Rig
{
    FakePlayer player;
    QList<Track> queue;
    QList<qsizetype> picks;
    QList<qsizetype> pickCounts;
    PlaybackController controller { player, [this] { return queue; },
        [this](qsizetype count) {
            pickCounts.append(count);
            return picks.isEmpty() ? qsizetype(0) : picks.takeFirst();
        } };

    // Steps: "queue A B C", "play A" (a pick), "start A" (no history), "next",
    // "prev", "shuffle", "fail A" (A's file can't be opened), "pick N" (the
    // next random index).
    void run(const QStringList &steps)
    {
        for (const QString &step : steps) {
            const QStringList words = step.split(u' ', Qt::SkipEmptyParts);
            const QString op = words.value(0);
            if (op == u"queue") {
                queue.clear();
                for (const QString &w : words.mid(1))
                    queue.append(song(w));
            } else if (op == u"play") {
                controller.playTrack(song(words.value(1)));
            } else if (op == u"start") {
                controller.startPlayback(song(words.value(1)));
            } else if (op == u"next") {
                controller.playNext();
            } else if (op == u"prev") {
                controller.playPrevious();
            } else if (op == u"shuffle") {
                controller.toggleShuffle();
            } else if (op == u"fail") {
                player.unloadable.insert(words.value(1));
            } else if (op == u"pick") {
                picks.append(words.value(1).toLongLong());
            } else {
                QFAIL(qPrintable(QStringLiteral("unknown step ") + step));
            }
        }
    }
};

} // namespace

class TestPlaybackController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void queueRules_data()
    {
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QString>("playing"); // empty: nothing
        QTest::addColumn<QStringList>("history");
        QTest::addColumn<QStringList>("loads");

        const auto s
            = [](const char *text) { return QString::fromLatin1(text).split(u',', Qt::SkipEmptyParts); };
        // Order and wrap-around.
        QTest::newRow("next follows the queue") << s("queue A B C,play A,next") << "B" << s("A") << s("A,B");
        QTest::newRow("next after the last plays the first")
            << s("queue A B C,play C,next") << "A" << s("C") << s("C,A");
        QTest::newRow("the queue is asked anew each time")
            << s("queue A B C,play A,queue C A,next") << "C" << s("A") << s("A,C");
        QTest::newRow("next with nothing playing does nothing")
            << s("queue A B C,next") << "" << s("") << s("");
        // Previous: history first, then the queue, never wrapping.
        QTest::newRow("previous takes the history first, then the queue start stops it")
            << s("queue A B C,play A,play C,prev,prev") << "A" << s("") << s("A,C,A");
        QTest::newRow("previous without history steps back in the queue")
            << s("queue A B C,start C,prev,prev,prev") << "A" << s("") << s("C,B,A");
        QTest::newRow("previous at the first song without history does nothing")
            << s("queue A B C,start A,prev") << "A" << s("") << s("A");
        QTest::newRow("going back does not remember the song left")
            << s("queue A B C,play A,play B,play C,prev,prev") << "A" << s("") << s("A,B,C,B,A");
        // History.
        QTest::newRow("replaying the playing song pushes it again")
            << s("queue A B C,play A,play A,play A") << "A" << s("A,A") << s("A,A,A");
        QTest::newRow("automatic advances grow the history")
            << s("queue A B,play A,next,next,next") << "B" << s("A,B,A") << s("A,B,A,B");
        // Shuffle.
        QTest::newRow("shuffle with the only song playing does nothing")
            << s("queue A,shuffle,play A,next") << "A" << s("") << s("A");
        QTest::newRow("shuffle with two songs always plays the other")
            << s("queue A B,shuffle,play A,next,next,next") << "B" << s("A,B,A") << s("A,B,A,B");
        QTest::newRow("shuffle picks among the other songs in queue order")
            << s("queue A B C D,shuffle,play B,pick 2,next") << "D" << s("B") << s("B,D");
        QTest::newRow("shuffle with nothing playing picks from the whole queue")
            << s("queue A B C,shuffle,pick 1,next") << "B" << s("") << s("B");
        QTest::newRow("shuffle off again follows the queue")
            << s("queue A B C,shuffle,play A,shuffle,next") << "B" << s("A") << s("A,B");
        // A song outside the queue (another playlist is selected).
        QTest::newRow("song not in the queue: next does nothing")
            << s("queue A B C,play X,next") << "X" << s("") << s("X");
        QTest::newRow("song not in the queue: previous does nothing")
            << s("queue A B C,start X,prev") << "X" << s("") << s("X");
        QTest::newRow("song not in the queue with shuffle: any song of the queue")
            << s("queue A B,shuffle,play X,pick 0,next") << "A" << s("X") << s("X,A");
        // An empty queue (an unknown playlist): only the history moves.
        QTest::newRow("empty queue: next does nothing") << s("queue,play A,next") << "A" << s("") << s("A");
        QTest::newRow("empty queue with shuffle: next does nothing")
            << s("queue,shuffle,play A,next") << "A" << s("") << s("A");
        QTest::newRow("empty queue: previous still pops the history")
            << s("queue,play A,play B,prev,prev") << "A" << s("") << s("A,B,A");
        // Files that can't be opened.
        QTest::newRow("failed next keeps the song, the history keeps the push")
            << s("queue A B C,fail B,play A,next") << "A" << s("A") << s("A,B");
        QTest::newRow("failed previous from history loses that entry")
            << s("queue A B,play A,play B,fail A,prev") << "B" << s("") << s("A,B,A");
        QTest::newRow("failed first pick leaves nothing playing")
            << s("queue A B,fail A,play A,next") << "" << s("") << s("A");
    }

    void queueRules()
    {
        QFETCH(QStringList, steps);
        QFETCH(QString, playing);
        QFETCH(QStringList, history);
        QFETCH(QStringList, loads);
        Rig rig;
        rig.run(steps);
        QCOMPARE(
            rig.controller.playingTrack() ? nameOf(rig.controller.playingTrack()->url) : QString(), playing);
        QCOMPARE(names(rig.controller.history()), history);
        QCOMPARE(rig.player.loads, loads);
    }

    void shuffleAsksForAnIndexAmongTheOthers()
    {
        Rig rig;
        rig.run({ QStringLiteral("queue A B C D E"), QStringLiteral("shuffle"), QStringLiteral("play C"),
            QStringLiteral("next") });
        QCOMPARE(rig.pickCounts, QList<qsizetype> { 4 });
    }

    void defaultShuffleIsUniformOverTheOthers()
    {
        FakePlayer player;
        const QList<Track> queue { song(QStringLiteral("A")), song(QStringLiteral("B")),
            song(QStringLiteral("C")), song(QStringLiteral("D")) };
        PlaybackController controller(player, [&] { return queue; });
        controller.toggleShuffle();
        QHash<QString, int> counts;
        for (int i = 0; i < 3000; ++i) {
            controller.startPlayback(queue.first());
            controller.playNext();
            ++counts[nameOf(controller.playingTrack()->url)];
        }
        QCOMPARE(counts.value(QStringLiteral("A")), 0);
        for (const char *name : { "B", "C", "D" }) // 1000 each expected; 150 is about six deviations
            QVERIFY2(qAbs(counts.value(QString::fromLatin1(name)) - 1000) < 150, name);
    }

    void playbackQueueFollowsTheSelection_data()
    {
        QTest::addColumn<QString>("selected"); // "", a playlist name, or "unknown"
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("no playlist selected: the library") << "" << QStringList { "A", "B", "C" };
        QTest::newRow("a playlist: its songs in its order") << "mix" << QStringList { "C", "A" };
        QTest::newRow("an empty playlist") << "empty" << QStringList {};
        QTest::newRow("an unknown playlist: nothing") << "unknown" << QStringList {};
    }

    void playbackQueueFollowsTheSelection()
    {
        QFETCH(QString, selected);
        QFETCH(QStringList, expected);
        const QList<Track> library { song(QStringLiteral("A")), song(QStringLiteral("B")),
            song(QStringLiteral("C")) };
        Playlist mix { QUuid::createUuid(), QStringLiteral("mix"), { library[2], library[0] } };
        Playlist empty { QUuid::createUuid(), QStringLiteral("empty"), {} };
        const QList<Playlist> playlists { mix, empty };
        std::optional<QUuid> id;
        if (selected == u"mix")
            id = mix.id;
        else if (selected == u"empty")
            id = empty.id;
        else if (selected == u"unknown")
            id = QUuid::createUuid();
        QCOMPARE(names(playbackQueue(id, playlists, library)), expected);
    }

    void togglePlayPauseFollowsThePlayer()
    {
        Rig rig;
        rig.controller.togglePlayPause(); // nothing loaded: still asks the player to play
        QVERIFY(rig.player.playing);
        rig.controller.togglePlayPause();
        QVERIFY(!rig.player.playing);
        QCOMPARE(rig.player.plays, 1);
        QCOMPARE(rig.player.pauses, 1);
    }

    void seekTakesAShareOfTheLength()
    {
        Rig rig;
        rig.player.length = 200;
        rig.controller.seek(0.25);
        rig.controller.seek(1.0);
        QCOMPARE(rig.player.seeks, (QList<double> { 50.0, 200.0 }));
    }

    void reportsEachOperationOnce_data()
    {
        QTest::addColumn<QStringList>("setup");
        QTest::addColumn<QString>("step");
        QTest::addColumn<unsigned>("changes"); // 0: no report
        using C = PlaybackController;
        QTest::newRow("first pick") << QStringList { "queue A B" } << "play A"
                                    << unsigned(C::PlayingTrackChanged);
        QTest::newRow("next") << QStringList { "queue A B", "play A" } << "next"
                              << unsigned(C::PlayingTrackChanged | C::HistoryChanged);
        QTest::newRow("replay of the same song")
            << QStringList { "queue A B", "play A" } << "play A" << unsigned(C::HistoryChanged);
        QTest::newRow("previous from history") << QStringList { "queue A B", "play A", "play B" } << "prev"
                                               << unsigned(C::PlayingTrackChanged | C::HistoryChanged);
        QTest::newRow("shuffle") << QStringList {} << "shuffle" << unsigned(C::ShuffleChanged);
        QTest::newRow("failed load") << QStringList { "queue A B", "fail B", "play A" } << "next"
                                     << unsigned(C::HistoryChanged);
        QTest::newRow("nothing to do") << QStringList { "queue A B" } << "next" << 0u;
    }

    // One report per operation, made after the player was told to play.
    void reportsEachOperationOnce()
    {
        QFETCH(QStringList, setup);
        QFETCH(QString, step);
        QFETCH(unsigned, changes);
        Rig rig;
        rig.run(setup);
        QList<unsigned> reports;
        int playsAtReport = -1;
        rig.controller.setChangeListener([&](unsigned c) {
            reports.append(c);
            playsAtReport = rig.player.plays;
        });
        const int playsBefore = rig.player.plays;
        rig.run({ step });
        QCOMPARE(reports, changes ? QList<unsigned> { changes } : QList<unsigned> {});
        if (changes & PlaybackController::PlayingTrackChanged)
            QCOMPARE(playsAtReport, playsBefore + 1);
    }
};

QTEST_GUILESS_MAIN(TestPlaybackController)
#include "tst_playback_controller.moc"
