// SPDX-License-Identifier: GPL-3.0-or-later
// The queue rules and the song prepared for a gapless join, over a player
// that makes no sound.
#include "playback/PlaybackController.h"

#include <QSet>
#include <QTest>

#include <cmath>
#include <functional>
#include <map>

using namespace Qt::StringLiterals;

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

// Joins a queued file at the end of a song the way AudioPlayer does: unless
// the file can't be joined or is gone, then it stops.
class FakePlayer : public PlayerControl
{
public:
    bool load(const QUrl &url) override
    {
        loads.append(nameOf(url));
        if (unloadable.contains(nameOf(url)))
            return false;
        queued.clear();
        taken.clear();
        songEnd.reset();
        return true;
    }
    void play() override { playing = true; }
    void pause() override { playing = false; }
    void seek(double seconds) override { seeks.append(seconds); }
    bool isPlaying() const override { return playing; }
    double duration() const override { return length; }
    void setEndApproachingHandler(std::function<void()> handler) override { endApproaching = std::move(handler); }
    bool queueNext(const QUrl &url) override
    {
        const bool joinable = !unjoinable.contains(nameOf(url));
        queued = joinable ? nameOf(url) : QString();
        return joinable;
    }
    std::optional<QUrl> takeSongEnd() override { return std::exchange(songEnd, std::nullopt); }

    // The playbin has read the song to its end and taken the queued file.
    void take() { taken = std::exchange(queued, QString()); }
    void end()
    {
        if (taken.isEmpty())
            take();
        if (!taken.isEmpty() && !unloadable.contains(taken)) {
            songEnd = song(taken).url;
        } else {
            songEnd = QUrl();
            playing = false;
        }
        taken.clear();
    }

    QStringList loads;
    QSet<QString> unloadable;
    QSet<QString> unjoinable;
    QString queued;
    QString taken;
    std::optional<QUrl> songEnd;
    std::function<void()> endApproaching;
    bool playing = false;
    double length = 0;
    QList<double> seeks;
};

// A controller with a queue that steps can change and a scripted random source.
struct Rig
{
    FakePlayer player;
    QList<Track> queue;
    QList<qsizetype> picks;
    PlaybackController controller { player, [this] { return queue; },
        [this](qsizetype) { return picks.isEmpty() ? qsizetype(0) : picks.takeFirst(); } };

    // Steps: "queue A B C", "play A" (a pick), "start A" (no history), "next",
    // "prev", "shuffle", "fail A" (A's file can't be opened), "unjoinable A",
    // "pick N" (the next random index), "near" (the song's end approaches),
    // "take" (the player takes the queued file), "end" (the song ends and the
    // owner asks for the next one), "requeue" (the owner says the queue
    // changed), "nogapless".
    void run(const QStringList &steps)
    {
        const std::map<QString, std::function<void(const QStringList &)>> ops {
            { u"queue"_s, [&](const QStringList &w) { queue.clear(); for (const QString &n : w.mid(1)) queue.append(song(n)); } },
            { u"play"_s, [&](const QStringList &w) { controller.playTrack(song(w[1])); } },
            { u"start"_s, [&](const QStringList &w) { controller.startPlayback(song(w[1])); } },
            { u"next"_s, [&](const QStringList &) { controller.playNext(); } },
            { u"prev"_s, [&](const QStringList &) { controller.playPrevious(); } },
            { u"shuffle"_s, [&](const QStringList &) { controller.toggleShuffle(); } },
            { u"fail"_s, [&](const QStringList &w) { player.unloadable.insert(w[1]); } },
            { u"unjoinable"_s, [&](const QStringList &w) { player.unjoinable.insert(w[1]); } },
            { u"pick"_s, [&](const QStringList &w) { picks.append(w[1].toLongLong()); } },
            { u"near"_s, [&](const QStringList &) { player.endApproaching(); } },
            { u"take"_s, [&](const QStringList &) { player.take(); } },
            { u"end"_s, [&](const QStringList &) { player.end(); controller.playNext(); } },
            { u"requeue"_s, [&](const QStringList &) { controller.queueChanged(); } },
            { u"nogapless"_s, [&](const QStringList &) { controller.setGapless(false); } },
        };
        for (const QString &step : steps) {
            const QStringList words = step.split(u' ', Qt::SkipEmptyParts);
            const auto op = ops.find(words.value(0));
            if (op == ops.end())
                QFAIL(qPrintable(u"unknown step "_s + step));
            op->second(words);
        }
    }
};

QStringList list(const char *text)
{
    return QString::fromLatin1(text).split(u',', Qt::SkipEmptyParts);
}

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
        QTest::addColumn<QString>("queued"); // what the player holds queued at the end

        const auto row = [](const char *name, const char *steps, const char *playing, const char *history,
                             const char *loads, const char *queued = "") {
            QTest::newRow(name) << list(steps) << QString::fromLatin1(playing) << list(history) << list(loads)
                                << QString::fromLatin1(queued);
        };
        // Order and wrap-around.
        row("next follows the queue", "queue A B C,play A,next", "B", "A", "A,B");
        row("the queue is asked anew each time", "queue A B C,play A,queue C A,next", "C", "A", "A,C");
        row("next with nothing playing does nothing", "queue A B C,next", "", "", "");
        // Previous: history first, then the queue, never wrapping.
        row("previous takes the history, then stops at the queue start",
            "queue A B C,play A,play C,prev,prev", "A", "", "A,C,A");
        row("previous without history steps back in the queue", "queue A B C,start C,prev,prev,prev", "A", "",
            "C,B,A");
        // History.
        row("replaying the playing song pushes it again", "queue A B C,play A,play A,play A", "A", "A,A",
            "A,A,A");
        row("automatic advances grow the history", "queue A B,play A,end,end,end", "B", "A,B,A", "A,B,A,B");
        // Shuffle.
        row("shuffle with the only song playing does nothing", "queue A,shuffle,play A,next", "A", "", "A");
        row("shuffle with two songs always plays the other", "queue A B,shuffle,play A,next,next,next", "B",
            "A,B,A", "A,B,A,B");
        row("shuffle picks among the other songs in queue order", "queue A B C D,shuffle,play B,pick 2,next",
            "D", "B", "B,D");
        // A song outside the queue (another playlist is selected), an empty queue.
        row("song not in the queue: next and previous do nothing", "queue A B C,play X,next,prev", "X", "",
            "X");
        row("song not in the queue with shuffle: any song of the queue",
            "queue A B,shuffle,play X,pick 0,next", "A", "X", "X,A");
        row("empty queue: previous still pops the history", "queue,play A,play B,next,prev,prev", "A", "",
            "A,B,A");
        // Files that can't be opened.
        row("failed next keeps the song, the history keeps the push", "queue A B C,fail B,play A,next", "A",
            "A", "A,B");
        row("failed previous from history loses that entry", "queue A B,play A,play B,fail A,prev", "B", "",
            "A,B,A");
        row("failed first pick leaves nothing playing", "queue A B,fail A,play A,next", "", "", "A");

        // The song prepared as the end approaches.
        row("as the end approaches the next song's file is queued", "queue A B C,play A,near", "A", "", "A",
            "B");
        row("joins grow the history and wrap like loads", "queue A B,play A,near,end,near,end,near,end", "B",
            "A,B,A", "A");
        row("a queue of one joins its song to itself", "queue A,play A,near,end", "A", "A", "A");
        row("shuffle: the song drawn ahead is the one that plays",
            "queue A B C D,shuffle,play B,pick 2,near,pick 0,end", "D", "B", "B");
        row("shuffle: a drawn song that can't be joined is loaded at the end",
            "queue A B C D,unjoinable D,shuffle,play B,pick 2,near,pick 0,end", "D", "B", "B,D");
        row("next in the last seconds drops the prepared song",
            "queue A B C D,shuffle,play A,pick 0,near,pick 2,next", "D", "A", "A,D");
        row("previous in the last seconds drops it", "queue A B C,play A,play B,near,prev", "A", "", "A,B,A");
        row("a pick in the last seconds drops it", "queue A B C,play A,near,play C", "C", "A", "A,C");
        row("shuffle on in the last seconds draws by the new rule",
            "queue A B C D,play A,near,pick 2,shuffle", "A", "", "A", "D");
        row("shuffle off in the last seconds follows the queue again",
            "queue A B C D,shuffle,play A,pick 2,near,shuffle,end", "B", "A", "A");
        row("a queue change in the last seconds chooses again",
            "queue A B C,play A,near,queue A C,requeue,end", "C", "A", "A");
        row("an unannounced queue change: the joined song gives way", "queue A B C,play A,near,queue A C,end",
            "C", "A", "A,C");
        row("a change the player took too late: the prepared song is loaded",
            "queue A B C D,play A,near,take,pick 1,shuffle,end", "C", "A", "A,C");
        row("a vanished next file ends the chain as before", "queue A B C,play A,near,fail B,end", "A", "A",
            "A,B");
        row("without gapless nothing is queued and the end loads", "queue A B,nogapless,play A,near", "A", "",
            "A");
        row("nothing is prepared for a song outside the queue", "queue A B C,play X,near,end", "X", "", "X");
    }

    void queueRules()
    {
        QFETCH(QStringList, steps);
        QFETCH(QString, playing);
        QFETCH(QStringList, history);
        QFETCH(QStringList, loads);
        QFETCH(QString, queued);
        Rig rig;
        rig.run(steps);
        QCOMPARE(
            rig.controller.playingTrack() ? nameOf(rig.controller.playingTrack()->url) : QString(), playing);
        QCOMPARE(names(rig.controller.history()), history);
        QCOMPARE(rig.player.loads, loads);
        QCOMPARE(rig.player.queued, queued);
    }

    void seek_data()
    {
        QTest::addColumn<double>("length");
        QTest::addColumn<double>("fraction");
        QTest::addColumn<QList<double>>("seeks");
        QTest::newRow("a share of the length") << 200.0 << 0.25 << QList<double> { 50.0 };
        QTest::newRow("the end") << 200.0 << 1.0 << QList<double> { 200.0 };
        QTest::newRow("unknown length: nothing, not the start") << 0.0 << 0.5 << QList<double> {};
        QTest::newRow("not a number: nothing") << 200.0 << std::nan("") << QList<double> {};
        QTest::newRow("infinite: nothing") << 200.0 << HUGE_VAL << QList<double> {};
    }

    void seek()
    {
        QFETCH(double, length);
        QFETCH(double, fraction);
        QFETCH(QList<double>, seeks);
        Rig rig;
        rig.player.length = length;
        rig.controller.seek(fraction);
        QCOMPARE(rig.player.seeks, seeks);
    }

    void reportsEachOperationOnce_data()
    {
        QTest::addColumn<QStringList>("setup");
        QTest::addColumn<QString>("step");
        QTest::addColumn<unsigned>("changes"); // 0: no report
        using C = PlaybackController;
        const unsigned both = C::PlayingTrackChanged | C::HistoryChanged;
        QTest::newRow("first pick") << list("queue A B") << "play A" << unsigned(C::PlayingTrackChanged);
        QTest::newRow("next") << list("queue A B,play A") << "next" << both;
        QTest::newRow("a join") << list("queue A B,play A,near") << "end" << both;
        QTest::newRow("replay of the same song")
            << list("queue A B,play A") << "play A" << unsigned(C::HistoryChanged);
        QTest::newRow("previous from history") << list("queue A B,play A,play B") << "prev" << both;
        QTest::newRow("shuffle") << QStringList {} << "shuffle" << unsigned(C::ShuffleChanged);
        QTest::newRow("failed load") << list("queue A B,fail B,play A") << "next"
                                     << unsigned(C::HistoryChanged);
        QTest::newRow("preparing the next song") << list("queue A B,play A") << "near" << 0u;
        QTest::newRow("nothing to do") << list("queue A B") << "next" << 0u;
    }

    // One report per operation, made once the player plays the new song.
    void reportsEachOperationOnce()
    {
        QFETCH(QStringList, setup);
        QFETCH(QString, step);
        QFETCH(unsigned, changes);
        Rig rig;
        rig.run(setup);
        QList<unsigned> reports;
        bool playingAtReport = false;
        rig.controller.setChangeListener([&](unsigned c) {
            reports.append(c);
            playingAtReport = rig.player.playing;
        });
        rig.run({ step });
        QCOMPARE(reports, changes ? QList<unsigned> { changes } : QList<unsigned> {});
        if (changes & PlaybackController::PlayingTrackChanged)
            QVERIFY(playingAtReport);
    }
};

QTEST_GUILESS_MAIN(TestPlaybackController)
#include "tst_playback_controller.moc"
