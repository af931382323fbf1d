// The whole client in a window: huge messages never hold up the main thread, from the socket to the drawn bar.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <filesystem>
#include <future>
#include <memory>

#include "app/Program.h"
#include "app/WindowShell.h"

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

// Steps that wait for a condition, looked at every 5 ms; the window ends after the last, or after `limit` seconds.
class Script {
 public:
    void step(std::function<bool()> done, std::function<void()> then) {
        steps_.push_back({std::move(done), std::move(then)});
    }
    void start(MainLoop& loop, std::function<void(int)> quit, double limit) {
        loop.every(0, 0.005, [this, quit] {
            if (at_ == steps_.size() || !steps_[at_].done()) return;
            auto then = steps_[at_++].then;
            then();
            if (at_ == steps_.size()) quit(0);
        });
        loop.after(limit, [quit] { quit(1); });
    }
    std::size_t finished() const { return at_; }

 private:
    struct Step {
        std::function<bool()> done;
        std::function<void()> then;
    };
    std::vector<Step> steps_;
    std::size_t at_ = 0;
};

TEST(WindowTurns, HugeSnapshotsLeaveTheMainThreadFree) {
    const auto home = std::filesystem::temp_directory_path() / ("velmora-turns-" + UuidSource().next().text());
    ::setenv("XDG_CONFIG_HOME", (home / "config").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (home / "data").c_str(), 1);
    Options options;
    options.practice = true;
    options.clock = parseClockSetting("2026-06-10T10:00:30");
    ProgramStart start(options);
    ASSERT_FALSE(start.failure()) << *start.failure();

    std::unique_ptr<Program> program;
    TurnProbe probe;
    Script script;
    double barsMs = -1, derivedMs = -1, freeingMs = -1;
    const auto pane = [&]() -> AppModel& { return program->pane(); };
    const auto streaming = [&] { return pane().catFutures->size() == 6 && pane().candles.size() > 100; };
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

    WindowShellOptions shell;
    shell.width = 800;
    shell.height = 500;
    WindowShellHooks hooks;
    hooks.makePane = [&](MainLoop& main) {
        program = std::make_unique<Program>(start, main);
        return WindowPane{program->pane(), program->sim(), start.clock(), {}};
    };
    hooks.started = [&](std::function<void(int)> quit) {
        probe.watch(QAbstractEventDispatcher::instance());
        script.start(program->main(), quit, 60);
        program->signInToPractice();
    };
    hooks.ending = [&] { program.reset(); };
    int argc = 1;
    char name[] = "velmora";
    char* argv[] = {name, nullptr};
    EXPECT_EQ(runWindow(argc, argv, shell, hooks), 0) << "stopped at step " << script.finished();
    std::printf("longest turns: bars %.1f ms, derived %.1f ms, freeing %.1f ms\n", barsMs, derivedMs, freeingMs);
    for (const double ms : {barsMs, derivedMs, freeingMs}) {
        EXPECT_GT(ms, 0);
        EXPECT_LT(ms, 50);
    }
    std::error_code ignored;
    std::filesystem::remove_all(home, ignored);
}

}  // namespace
}  // namespace vmr
