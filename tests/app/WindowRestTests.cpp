// The whole client in a window on a closed market: connected, its timers running, and nothing drawn.
#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <atomic>

#include "tests/app/WindowScript.h"
#include "ui/chart/ChartItem.h"
#include "workspace/ActionTable.h"

namespace vmr {
namespace {

TEST(WindowRest, AClosedMarketDrawsNothing) {
    test::WindowRun window("2026-06-13T12:00:00");
    ASSERT_FALSE(window.start->failure()) << *window.start->failure();
    const Clock& clock = window.start->clock();
    QQuickWindow* shown = nullptr;
    std::atomic<int> swapped = 0;
    const auto drawn = [&]() -> std::uint64_t {
        const auto* chart = shown->findChild<ChartItem*>();
        return chart ? chart->framesDrawn() : 0;
    };

    double since = 0;
    std::uint64_t frames = 0;
    int swaps = 0;
    const auto mark = [&] {
        since = clock.monotonic();
        frames = drawn();
        swaps = swapped;
    };
    const auto passed = [&](double seconds) { return [&, seconds] { return clock.monotonic() - since >= seconds; }; };
    // Nothing drawn for a second and a half: the seconds' timers have run meanwhile.
    const auto settled = [&] {
        if (drawn() != frames || swapped != swaps) mark();
        return passed(1.5)();
    };
    const auto nothingDrawn = [&](const char* when) {
        EXPECT_EQ(drawn(), frames) << when;
        EXPECT_EQ(swapped, swaps) << when;
    };
    const auto set = [&](auto&& change) {
        GexConfig config = window.pane().config;
        change(config);
        window.pane().setConfig(config);
    };

    window.step([&] { return window.streaming() && drawn() > 0; }, mark);
    window.step(settled, mark);
    window.step(passed(10), [&] {
        nothingDrawn("at rest");
        for (const char* name : {"countdown", "nyClock"})
            EXPECT_TRUE(shown->findChild<QQuickItem*>(QLatin1String(name))->isVisible()) << name << " ticks";
        EXPECT_TRUE(window.pane().session.connected);
        EXPECT_GT(window.pane().options.strikes->size(), 5U) << "something to ease";
        // news that are none: another look at the same settings, another copy of the same rows
        set([](GexConfig& config) { config.simBalance += 1; });
        window.pane().config.changed();
        window.pane().options.strikes.changed();
        window.pane().bars.chartVersionChanged();
        mark();
    });
    window.step(passed(1.5), [&] {
        nothingDrawn("after changes that do not show");
        set([](GexConfig& config) { config.hfLateralMode = "net"; });
        mark();
    });
    window.step(passed(0.5), [&] { EXPECT_GT(drawn(), frames + 1) << "the waves ease to their new shape"; });
    window.step(settled, mark);
    window.step(passed(3), [&] {
        nothingDrawn("after the easing");
        window.pane().setGex3DActive(true);
        mark();
    });
    window.step(passed(0.5), [&] {
        EXPECT_EQ(swapped > swaps, gex3DViewBuilt()) << "the 3D view opens";
        EXPECT_FALSE(window.pane().surface.view->loading());
    });
    window.step(settled, mark);
    window.step(passed(3), [&] { nothingDrawn("with the 3D view open"); });
    EXPECT_EQ(window.run(90,
                         [&] {
                             shown = qobject_cast<QQuickWindow*>(QGuiApplication::topLevelWindows().value(0));
                             QObject::connect(
                                 shown, &QQuickWindow::frameSwapped, shown, [&] { ++swapped; }, Qt::DirectConnection);
                         }),
              0u);
}

}  // namespace
}  // namespace vmr
