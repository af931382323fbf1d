// The whole client in a window: huge messages never hold up the main thread, from the socket to the drawn bar.
#include <gtest/gtest.h>

#include <QAbstractEventDispatcher>
#include <QElapsedTimer>
#include <algorithm>
#include <future>

#include "tests/app/WindowScript.h"

namespace vmr {
namespace {

TEST(WindowTurns, HugeSnapshotsLeaveTheMainThreadFree) {
    test::WindowRun window("2026-06-10T10:00:30");
    ProgramStart& start = *window.start;
    ASSERT_FALSE(start.failure()) << *start.failure();

    // how long the event loop stays away from waiting (with QT_NO_GLIB: GLib dispatches between the two signals)
    QElapsedTimer turn;
    double longestMs = 0;
    const auto watch = [&] {
        auto* dispatcher = QAbstractEventDispatcher::instance();
        QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, [&] { turn.start(); });
        QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, [&] {
            if (turn.isValid()) longestMs = std::max(longestMs, static_cast<double>(turn.nsecsElapsed()) * 1e-6);
            turn.invalidate();
        });
    };
    const auto pane = [&]() -> AppModel& { return window.pane(); };
    const auto snapshots = [&](const std::string& channel) {
        return std::count_if(pane().log.logLines.begin(), pane().log.logLines.end(),
                             [&](const LogLine& line) { return line.text.starts_with(channel + " [snapshot]"); });
    };
    double restedAt = 0;  // a second after each step, so that its frames and its freeing are in the measure
    const auto rested = [&] { return start.clock().monotonic() > restedAt; };
    const auto step = [&](std::function<bool()> done, std::function<void()> act) {
        window.step([&, done] { return rested() && done(); },
                    [&, act] {
                        act();
                        restedAt = start.clock().monotonic() + 1;
                    });
    };
    std::vector<std::pair<const char*, double>> longest;
    std::future<std::string> told;  // the relay writes the message on the thread that asks for it
    std::string channel;
    std::ptrdiff_t before = 0;
    const auto big = [&](const std::string& fault, const std::string& name) {
        channel = name;
        before = snapshots(channel);
        longestMs = 0;
        told = std::async(std::launch::async,
                          [&start, fault, name] { return start.practice()->command(fault + " 60000000 " + name); });
    };
    const auto came = [&] { return snapshots(channel) > before; };
    step([&] { return window.streaming(); }, [] {});
    step([] { return true; }, [&] { big("big-bars", pane().channels->chartChannel); });
    step(came, [] {});
    step(came, [&] {
        longest.emplace_back("bars", longestMs);
        big("big-derived", pane().channels->levelsChannel);
    });
    step(came, [] {});
    step(came, [&] {
        longest.emplace_back("derived", longestMs);
        longestMs = 0;
        pane().reloadChart();
    });
    step([&] { return window.streaming(); }, [&] { longest.emplace_back("freeing", longestMs); });

    EXPECT_EQ(window.run(60, watch), 0u);
    ASSERT_EQ(longest.size(), 3u);
    for (const auto& [name, ms] : longest) {
        std::printf("longest turn, %s: %.1f ms\n", name, ms);
        EXPECT_GT(ms, 0);
        EXPECT_LT(ms, 50);
    }
}

}  // namespace
}  // namespace vmr
