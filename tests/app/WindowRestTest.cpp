// The whole client in a window on a closed market: connected, its timers running, and nothing drawn.
#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QQuickWindow>
#include <atomic>

#include "tests/app/WindowScript.h"
#include "ui/ChartItem.h"

namespace vmr {
namespace {

class Drawn {
 public:
    void watch() {
        window_ = qobject_cast<QQuickWindow*>(QGuiApplication::topLevelWindows().value(0));
        ASSERT_NE(window_, nullptr);
        QObject::connect(
            window_, &QQuickWindow::frameSwapped, window_, [this] { ++swaps_; }, Qt::DirectConnection);
    }
    ChartItem* chart() const { return window_->findChild<ChartItem*>(); }
    std::uint64_t frames() const { return chart() ? chart()->framesDrawn() : 0; }
    int swaps() const { return swaps_; }

 private:
    QQuickWindow* window_ = nullptr;
    std::atomic<int> swaps_ = 0;
};

TEST(WindowRest, AClosedMarketDrawsNothing) {
    test::WindowRun window("2026-06-13T12:00:00");
    ASSERT_FALSE(window.start->failure()) << *window.start->failure();
    const Clock& clock = window.start->clock();
    Drawn drawn;
    test::Script script;

    double since = 0;
    std::uint64_t frames = 0;
    int swaps = 0;
    const auto mark = [&] {
        since = clock.monotonic();
        frames = drawn.frames();
        swaps = drawn.swaps();
    };
    const auto passed = [&](double seconds) { return [&, seconds] { return clock.monotonic() - since >= seconds; }; };
    // Nothing drawn for a second and a half: the seconds' timers have run meanwhile.
    const auto settled = [&] {
        if (drawn.frames() != frames || drawn.swaps() != swaps) mark();
        return passed(1.5)();
    };
    const auto nothingDrawn = [&](const char* when) {
        EXPECT_EQ(drawn.frames(), frames) << when;
        EXPECT_EQ(drawn.swaps(), swaps) << when;
    };
    const auto set = [&](auto&& change) {
        GexConfig config = window.pane().config;
        change(config);
        window.pane().setConfig(config);
    };

    script.step([&] { return window.streaming() && drawn.frames() > 0; }, mark);
    script.step(settled, mark);
    script.step(passed(10), [&] {
        nothingDrawn("at rest");
        EXPECT_TRUE(window.pane().connected);
        EXPECT_GT(window.pane().strikes->size(), 5U) << "something to ease";
        // news that are none: another look at the same settings, another copy of the same rows
        set([](GexConfig& config) { config.hfPressure = !config.hfPressure; });
        window.pane().config.changed();
        window.pane().strikes.changed();
        window.pane().chartVersionChanged();
        mark();
    });
    script.step(passed(1.5), [&] {
        nothingDrawn("after changes that do not show");
        set([](GexConfig& config) { config.hfLateralMode = "net"; });
        mark();
    });
    script.step(passed(0.5), [&] { EXPECT_GT(drawn.frames(), frames + 1) << "the waves ease to their new shape"; });
    script.step(settled, mark);
    script.step(passed(3), [&] { nothingDrawn("after the easing"); });
    EXPECT_EQ(window.run(script, 90, [&] { drawn.watch(); }), 0) << "stopped at step " << script.finished();
}

}  // namespace
}  // namespace vmr
