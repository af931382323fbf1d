// The simulator's panel in the running program, from within: what it costs the charts, and the way through it by keys.
#include <gtest/gtest.h>

#include <QAccessible>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <algorithm>
#include <atomic>
#include <set>

#include "tests/app/WindowScript.h"
#include "ui/chart/ChartItem.h"

namespace vmr {
namespace {

class SimPanelScript {
 public:
    explicit SimPanelScript(test::WindowRun& run) : run_(run) {}

    SimEngine& sim() { return run_.program->sim(); }
    AppModel& pane() { return run_.pane(); }
    test::WindowRun& run() { return run_; }
    QQuickWindow* window() const { return qobject_cast<QQuickWindow*>(QGuiApplication::topLevelWindows().value(0)); }
    QList<ChartItem*> charts() const { return window()->findChildren<ChartItem*>(); }
    std::uint64_t framesOf(qsizetype chart) const { return charts().at(chart)->framesDrawn(); }
    template <class Condition>
    static bool soon(Condition condition) {
        return QTest::qWaitFor(condition, 15000);
    }
    /// Waits until nothing has been drawn in the charts for a second.
    void rest() {
        const auto all = [&] {
            std::uint64_t sum = 0;
            for (const ChartItem* chart : charts()) sum += chart->framesDrawn();
            return sum;
        };
        for (int i = 0; i < 20; ++i) {
            const auto before = all();
            QTest::qWait(1000);
            if (all() == before) return;
        }
        ADD_FAILURE() << "the charts never come to rest";
    }

 private:
    test::WindowRun& run_;
};

// Prices reach the account and not the chart; the panel follows them, and no chart is drawn for it.
void pricesCostTheChartNothing(SimPanelScript& script) {
    script.pane().panels.simPanelOpen = true;
    script.rest();
    auto* equity = script.window()->findChild<QQuickItem*>("simEquity");
    ASSERT_TRUE(equity);
    const double shown = equity->property("target").toDouble(), last = *script.sim().last("NQ");
    const auto frames = script.framesOf(0);
    for (int i = 1; i <= 60; ++i) {
        for (int trade = 0; trade < 100; ++trade) script.sim().onTrade("NQ", last + 0.25 * (i + trade % 3));
        QTest::qWait(50);
    }
    EXPECT_GT(equity->property("target").toDouble(), shown + 60) << "3 s have passed";
    EXPECT_EQ(script.framesOf(0), frames);
}

// One order moves in both charts of its root in one and the same frame of the window.
void bothPanesMoveInOneFrame(SimPanelScript& script) {
    ASSERT_TRUE(script.run().program->windows().all().at(0)->toggleDual());
    ASSERT_TRUE(SimPanelScript::soon([&] { return script.charts().size() == 2 && script.framesOf(1) > 3; }));
    script.rest();
    const auto charts = script.charts();
    const sim::Order order = script.sim().orders().at(0);
    for (int i = 1; i <= 20; ++i) {
        const std::uint64_t before[]{script.framesOf(0), script.framesOf(1)};
        std::uint64_t behind[2]{};
        std::atomic<bool> drawn = false;
        const auto watch = QObject::connect(
            script.window(), &QQuickWindow::afterRendering, script.window(),
            [&] {
                if (drawn) return;
                for (const int chart : {0, 1}) behind[chart] = charts.at(chart)->framesDrawn();
                if (behind[0] > before[0] || behind[1] > before[1]) drawn = true;
            },
            Qt::DirectConnection);
        script.sim().modify(order.id, *order.limitPrice + i);
        EXPECT_TRUE(SimPanelScript::soon([&] { return drawn.load(); }));
        QObject::disconnect(watch);
        QTest::qWait(50);
        for (const int chart : {0, 1}) EXPECT_GT(behind[chart], before[chart]) << chart << ", move " << i;
    }
    script.run().program->windows().all().at(0)->toggleDual();
}

// Every stop has a name for those who do not see it, and the way ends where it began.
void everyStopIsNamed(SimPanelScript& script) {
    auto* panel = script.window()->findChild<QQuickItem*>("simPanel");
    ASSERT_TRUE(panel);
    panel->forceActiveFocus(Qt::TabFocusReason);
    std::vector<std::string> names;
    std::set<const QObject*> stops;
    for (int i = 0; i < 60; ++i) {
        auto* at = qobject_cast<QQuickItem*>(script.window()->focusObject());
        ASSERT_TRUE(at);
        if (!panel->isAncestorOf(at)) break;
        if (!stops.insert(at).second) break;
        QAccessibleInterface* told = QAccessible::queryAccessibleInterface(at);
        names.push_back(told ? told->text(QAccessible::Name).toStdString() : "");
        EXPECT_NE(names.back(), "") << at->metaObject()->className() << " behind " << testing::PrintToString(names);
        QTest::keyClick(script.window(), Qt::Key_Tab);
    }
    const auto place = [&](const std::string& name) { return std::ranges::find(names, name) - names.begin(); };
    std::ptrdiff_t before = -1;
    for (const char* name : {"Trade Simulator — NQ",
                             "Quantity",
                             "Bracket",
                             "Stop distance",
                             "Target distance",
                             "Ticks",
                             "Points",
                             "BUY MKT",
                             "SELL MKT",
                             "limit price",
                             "BUY LMT",
                             "SELL LMT",
                             "stop price",
                             "BUY STP",
                             "SELL STP",
                             "Close the position of NQ",
                             "+ SL (40t)",
                             "+ TP (80t)",
                             "CANCEL ALL",
                             "Today",
                             "All fills",
                             "Reset account…"}) {
        EXPECT_LT(place(name), std::ssize(names)) << name << " in " << testing::PrintToString(names);
        EXPECT_GT(place(name), before) << name << " in " << testing::PrintToString(names);
        before = place(name);
    }
}

TEST(WindowSimPanel, CostsTheChartsNothingAndIsWalkedByKeys) {
    test::WindowRun run("2026-06-10T10:00:30");
    ASSERT_FALSE(run.start->failure()) << *run.start->failure();
    SimPanelScript script(run);
    bool busy = true;
    run.step(
        [&] { return run.streaming() && script.sim().last("NQ"); },
        [&] {
            script.window()->resize(1200, 800);
            GexConfig config = run.pane().config;
            config.simEnabled = true;
            run.pane().setConfig(config);
            script.sim().place("NQ", sim::Side::buy, sim::OrderType::market, 1);
            script.sim().place("NQ", sim::Side::buy, sim::OrderType::limit, 1, *script.sim().last("NQ") - 20);
            run.pane().panels.simPanelOpen = true;
            QTest::qWait(500);
            everyStopIsNamed(script);
            ASSERT_TRUE(run.start->steering().setNow(1781366400));  // a Saturday: the market rests, the clock goes on
            QTest::qWait(3000);
            pricesCostTheChartNothing(script);
            bothPanesMoveInOneFrame(script);
            busy = false;
        });
    run.step([&] { return !busy; }, [] {});
    EXPECT_EQ(run.run(100, [] {}), 0U);
}

}  // namespace
}  // namespace vmr
