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

QString nameOf(const QUrl &url) { return url.fileName().section(u'.', 0, 0); }

QStringList list(const QString &text) { return text.split(u',', Qt::SkipEmptyParts); }

// Joins the queued file at the end of a song the way AudioPlayer does, unless
// there is none or it is gone: then it stops.
class FakePlayer : public PlayerControl
{
public:
    bool load(const QUrl &url) override
    {
        loads.append(nameOf(url));
        if (unloadable.contains(nameOf(url)))
            return false;
        queued.clear();
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
        queued = unjoinable.contains(nameOf(url)) ? QString() : nameOf(url);
        return !queued.isEmpty();
    }
    std::optional<QUrl> takeSongEnd() override { return std::exchange(songEnd, std::nullopt); }
    void end()
    {
        const QString next = std::exchange(queued, QString());
        const bool joined = !next.isEmpty() && !unloadable.contains(next);
        songEnd = joined ? song(next).url : QUrl();
        playing = playing && joined;
    }

    QStringList loads;
    QSet<QString> unloadable, unjoinable;
    QString queued;
    std::optional<QUrl> songEnd;
    std::function<void()> endApproaching;
    bool playing = false;
    double length = 0;
    QList<double> seeks;
};

// A controller with a queue that steps change and a scripted random source.
struct Rig
{
    FakePlayer player;
    QList<Track> queue;
    QList<qsizetype> picks;
    PlaybackController controller { player, [this] { return queue; },
        [this](qsizetype) { return picks.isEmpty() ? qsizetype(0) : picks.takeFirst(); } };

    // "play A" is a pick, "start A" plays without history; "fail A": A's file
    // can't be opened; "pick N": the next random index; "near": the song's end
    // approaches; "end": the song ends and the owner asks for the next one;
    // "requeue": the owner says the queue changed.
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
            { u"end"_s, [&](const QStringList &) { player.end(); controller.playNext(); } },
            { u"requeue"_s, [&](const QStringList &) { controller.queueChanged(); } },
            { u"nogapless"_s, [&](const QStringList &) { controller.setGapless(false); } },
        };
        for (const QString &step : steps) {
            const QStringList words = step.split(u' ', Qt::SkipEmptyParts);
            const auto op = ops.find(words.value(0));
            QVERIFY2(op != ops.end(), qPrintable(step));
            op->second(words);
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
        QTest::addColumn<QString>("queued"); // what the player holds queued at the end
        const auto row = [](const char *name, const char *steps, const char *playing, const char *history,
                             const char *loads, const char *queued = "") {
            QTest::newRow(name) << list(QString::fromLatin1(steps)) << QString::fromLatin1(playing)
                                << list(QString::fromLatin1(history)) << list(QString::fromLatin1(loads))
                                << QString::fromLatin1(queued);
        };
        row("the queue is asked anew each time", "queue A B C,play A,queue C A,next", "C", "A", "A,C");
        row("previous takes the history, then stops at the queue start",
            "queue A B C,play A,play C,prev,prev", "A", "", "A,C,A");
        row("previous without history steps back in the queue", "queue A B C,start C,prev,prev,prev", "A", "",
            "C,B,A");
        row("automatic advances grow the history and wrap", "queue A B,play A,end,end,end", "B", "A,B,A", "A,B,A,B");
        row("shuffle with two songs always plays the other", "queue A B,shuffle,play A,next,next,next", "B",
            "A,B,A", "A,B,A,B");
        row("shuffle picks among the other songs in queue order", "queue A B C D,shuffle,play B,pick 2,next",
            "D", "B", "B,D");
        row("song not in the queue: next and previous do nothing", "queue A B C,play X,next,prev", "X", "", "X");
        row("failed next keeps the song, the history keeps the push", "queue A B C,fail B,play A,next", "A",
            "A", "A,B");
        // The song prepared as the end approaches.
        row("joins grow the history and wrap like loads", "queue A B,play A,near,end,near,end,near,end", "B",
            "A,B,A", "A");
        row("shuffle: the song drawn ahead is the one that plays",
            "queue A B C D,shuffle,play B,pick 2,near,pick 0,end", "D", "B", "B");
        row("shuffle: a drawn song that can't be joined is loaded at the end",
            "queue A B C D,unjoinable D,shuffle,play B,pick 2,near,pick 0,end", "D", "B", "B,D");
        row("next in the last seconds drops the prepared song",
            "queue A B C D,shuffle,play A,pick 0,near,pick 2,next", "D", "A", "A,D");
        row("a queue change in the last seconds chooses again",
            "queue A B C,play A,near,queue A C,requeue,end", "C", "A", "A");
        row("a vanished next file ends the chain", "queue A B C,play A,near,fail B,end", "A", "A", "A,B");
        row("as the end approaches the next song's file is queued", "queue A B C,play A,near", "A", "", "A", "B");
        row("without gapless nothing is queued", "queue A B,nogapless,play A,near", "A", "", "A");
    }

    void queueRules()
    {
        QFETCH(QStringList, steps);
        Rig rig;
        rig.run(steps);
        QTEST(rig.controller.playingTrack() ? nameOf(rig.controller.playingTrack()->url) : QString(), "playing");
        QStringList history;
        for (const Track &t : rig.controller.history())
            history.append(nameOf(t.url));
        QTEST(history, "history");
        QTEST(rig.player.loads, "loads");
        QTEST(rig.player.queued, "queued");
    }

    // Unknown lengths and fractions that aren't numbers seek nowhere, not to the start.
    void seek()
    {
        const struct { double length, fraction; QList<double> seeks; } cases[] {
            {200.0, 0.25, {50.0}}, {200.0, 1.0, {200.0}}, {0.0, 0.5, {}}, {200.0, std::nan(""), {}}, {200.0, HUGE_VAL, {}}};
        for (const auto &c : cases) {
            Rig rig;
            rig.player.length = c.length;
            rig.controller.seek(c.fraction);
            QCOMPARE(rig.player.seeks, c.seeks);
        }
    }
};

QTEST_GUILESS_MAIN(TestPlaybackController)
#include "tst_playback_controller.moc"
