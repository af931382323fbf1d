// The whole client in a window: huge messages never hold up the main thread, from the socket to the drawn bar.
#include <gtest/gtest.h>

#include <QAbstractEventDispatcher>
#include <QElapsedTimer>
#include <algorithm>
#include <future>

#include "tests/app/WindowScript.h"

namespace vmr {
namespace {

// Measures how long the event loop stays away from waiting (with QT_NO_GLIB: GLib dispatches between the two signals).
class TurnProbe {
 public:
    void watch(QAbstractEventDispatcher* dispatcher) {
        QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, [this] { timer_.start(); });
        QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, [this] {
            if (timer_.isValid()) longest_ = std::max(longest_, static_cast<double>(timer_.nsecsElapsed()) * 1e-6);
            timer_.invalidate();
        });
    }
    void reset() { longest_ = 0; }
    double longestMs() const { return longest_; }

 private:
    QElapsedTimer timer_;
    double longest_ = 0;
};

TEST(WindowTurns, HugeSnapshotsLeaveTheMainThreadFree) {
    test::WindowRun window("2026-06-10T10:00:30");
    ProgramStart& start = *window.start;
    ASSERT_FALSE(start.failure()) << *start.failure();

    TurnProbe probe;
    test::Script script;
    double barsMs = -1, derivedMs = -1, freeingMs = -1;
    const auto pane = [&]() -> AppModel& { return window.pane(); };
    const auto streaming = [&] { return window.streaming(); };
    const auto snapshots = [&](const std::string& channel) {
        return std::count_if(pane().logLines.begin(), pane().logLines.end(),
                             [&](const LogLine& line) { return line.text.starts_with(channel + " [snapshot]"); });
    };
    double settled = 0;  // a rest after each step, so that its frames and its freeing are in the measure
    const auto rest = [&] { return start.clock().monotonic() > settled; };
    const auto then = [&](std::function<void()> act, double seconds = 1.0) {
        return [&, act, seconds] {
            act();
            settled = start.clock().monotonic() + seconds;
        };
    };
    std::future<std::string> told;  // the relay writes the message on the thread that asks for it
    const auto tell = [&](const std::string& fault) {
        told = std::async(std::launch::async, [&start, fault] { return start.practice()->command(fault); });
    };
    script.step(streaming, then([] {}));
    std::ptrdiff_t before = 0;
    script.step(rest, then([&] {
                    before = snapshots(pane().chartChannel);
                    probe.reset();
                    tell("big-bars 60000000 " + pane().chartChannel.get());
                }));
    script.step([&] { return rest() && snapshots(pane().chartChannel) > before; }, then([] {}));
    script.step(rest, then([&] {
                    barsMs = probe.longestMs();
                    before = snapshots(pane().levelsChannel);
                    probe.reset();
                    tell("big-derived 60000000 " + pane().levelsChannel.get());
                }));
    script.step([&] { return snapshots(pane().levelsChannel) > before; }, then([] {}));
    script.step(rest, then([&] {
                    derivedMs = probe.longestMs();
                    probe.reset();
                    pane().reloadChart();
                }));
    script.step([&] { return rest() && streaming(); }, [&] { freeingMs = probe.longestMs(); });

    EXPECT_EQ(window.run(script, 60, [&] { probe.watch(QAbstractEventDispatcher::instance()); }), 0)
        << "stopped at step " << script.finished();
    std::printf("longest turns: bars %.1f ms, derived %.1f ms, freeing %.1f ms\n", barsMs, derivedMs, freeingMs);
    for (const double ms : {barsMs, derivedMs, freeingMs}) {
        EXPECT_GT(ms, 0);
        EXPECT_LT(ms, 50);
    }
}

}  // namespace
}  // namespace vmr
