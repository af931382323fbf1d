// The simulator's panel in the running program, from within: what hands do in it at random, the way through it by keys,
// and what it costs the charts.
#include <QAccessible>
#include <cstdlib>
#include <set>

#include "sim/SimTexts.h"
#include "tests/app/RandomPanelHands.h"

namespace vmr::test {
namespace {

using sim::OrderType;
using sim::Side;

constexpr double tick = 0.25;

// Frames of the charts that are shown.
std::uint64_t chartFrames(SimPanelScript& script) {
    std::uint64_t sum = 0;
    for (const ChartItem* chart : script.window()->findChildren<ChartItem*>()) sum += chart->framesDrawn();
    return sum;
}

// Until nothing has been drawn in the charts for a second.
void rest(SimPanelScript& script) {
    for (int i = 0; i < 20; ++i) {
        const auto before = chartFrames(script);
        QTest::qWait(1000);
        if (chartFrames(script) == before) return;
    }
    ADD_FAILURE() << "the charts never come to rest";
}

// What the keyboard stops at, from the title on; then the same way `back`.
struct Stop {
    const QQuickItem* item;
    std::string name, card;
    QRectF place;  // the panel's head is above all that it shows
};
std::vector<Stop> walk(SimPanelScript& script, bool back) {
    std::vector<Stop> stops;
    QQuickItem* const view = script.item("simView")->property("contentItem").value<QQuickItem*>();
    if (back) script.hands.key("shift+Tab");
    for (int i = 0; i < 80; ++i) {
        auto* at = qobject_cast<QQuickItem*>(script.window()->focusObject());
        if (!at || !script.panel()->isAncestorOf(at)) return stops;
        const bool within = view->isAncestorOf(at);
        QRectF place = at->mapRectToItem(within ? view : script.panel(), at->boundingRect());
        if (!within) place.translate(0, -1000);
        std::string card;
        for (const QQuickItem* one = at; one != script.panel() && card.empty(); one = one->parentItem())
            if (const QVariant title = one->property("title"); title.isValid()) card = title.toString().toStdString();
        QAccessibleInterface* told = QAccessible::queryAccessibleInterface(at);
        stops.push_back({at, told ? told->text(QAccessible::Name).toStdString() : "", card, place});
        script.hands.key(back ? "shift+Tab" : "Tab");
    }
    ADD_FAILURE() << "the way through the panel does not end";
    return stops;
}

// Every stop has a name of its own, and the way is that of the eye.
void walkIsNamedAndOrdered(SimPanelScript& script, const std::vector<std::string>& names) {
    QAccessible::setActive(true);  // buttons give their names only to those who ask
    script.click(script.item("panelTitle"), 0.3);
    rest(script);
    const auto frames = chartFrames(script);
    const std::vector<Stop> way = walk(script, false), back = walk(script, true);
    EXPECT_EQ(chartFrames(script), frames);
    std::set<std::pair<std::string, std::string>> seen;
    std::vector<std::string> listed;
    for (std::size_t i = 0; i < way.size(); ++i) {
        const Stop& stop = way[i];
        listed.push_back(stop.name);
        EXPECT_NE(stop.name, "") << stop.item->metaObject()->className();
        EXPECT_TRUE(seen.insert({stop.card, stop.name}).second) << stop.name << " is there twice in " << stop.card;
        if (i == 0) continue;
        const QRectF &place = stop.place, &before = way[i - 1].place;
        const bool besides = place.top() < before.bottom() && before.top() < place.bottom();
        EXPECT_TRUE(besides ? place.left() >= before.right() - 1 || i == 1 : place.top() >= before.bottom() - 1)
            << stop.name << " comes behind " << way[i - 1].name;
    }
    for (const std::string& name : names) EXPECT_TRUE(std::ranges::count(listed, name)) << name;
    EXPECT_EQ(listed.size(), names.size()) << testing::PrintToString(listed);
    ASSERT_EQ(back.size(), way.size());
    for (std::size_t i = 0; i < way.size(); ++i)
        EXPECT_EQ(back[i].item, way[way.size() - 1 - i].item) << back[i].name << " on the way back";
}

constexpr double hour = 3600, closing = 1781038800, opening = closing + hour;

const std::vector<std::string> always{"Trade Simulator — NQ", "Close Trade Simulator — NQ", "Today", "Reset account…"};
const std::vector<std::string> ticket{"Quantity", "Bracket",    "Stop distance", "Target distance", "Ticks",
                                      "Points",   "BUY MKT",    "SELL MKT",      "limit price",     "BUY LMT",
                                      "SELL LMT", "stop price", "BUY STP",       "SELL STP"};
const std::vector<std::string> heldInES{"Close the position of ES",
                                        "+ SL (40t) for ES",
                                        "+ TP (80t) for ES",
                                        "CANCEL ALL",
                                        "Cancel BUY 1 ES limit 4,980.00, order 1",
                                        "Cancel BUY 1 ES limit 4,980.00, order 2",
                                        "All fills"};
std::vector<std::string> together(std::initializer_list<std::vector<std::string>> lists) {
    std::vector<std::string> out;
    for (const auto& list : lists) out.insert(out.end(), list.begin(), list.end());
    return out;
}

// A root that no chart shows trades 2,000 times a second: the panel follows its position once a second. No other list
// is touched, and no chart is drawn.
void pricesCostNoListAndNoChart(SimPanelScript& script) {
    SimViewModel& view = script.view();
    int moved = 0, results = 0;
    for (RowsModel* rows : {&view.positions, &view.orders, &view.metrics, &view.days, &view.history, &view.fills}) {
        using M = QAbstractItemModel;
        const auto counts = [&](auto notice, int& sum) {
            QObject::connect(rows, notice, &script.hands, [&sum] { ++sum; });
        };
        counts(&M::rowsInserted, moved);
        counts(&M::rowsRemoved, moved);
        counts(&M::rowsMoved, moved);
        counts(&M::modelReset, moved);
        counts(&M::dataChanged, rows == &view.positions ? results : moved);
    }
    rest(script);
    const auto frames = chartFrames(script);
    const double equity = view.equity();
    for (int i = 1; i <= 60; ++i) {
        for (int trade = 0; trade < 100; ++trade) script.sim().onTrade("ES", 5000 + tick * (i + trade % 3));
        QTest::qWait(50);
    }
    EXPECT_GT(view.equity(), equity + 200) << "3 s have passed";
    EXPECT_GE(results, 2);
    EXPECT_LE(results, 5) << "once a second";
    EXPECT_EQ(moved, 0);
    EXPECT_EQ(chartFrames(script), frames);
}

// An order is dragged by its tag in one of two charts of its root: no frame of the window shows it at two prices.
void bothChartsMoveInOneFrame(SimPanelScript& script) {
    WindowPanes& panes = *script.run.program->windows().all().at(0);
    ASSERT_TRUE(panes.toggleDual());
    const auto order = [&](const AppModel& pane) {
        const auto facts = pane.camera.port() ? pane.camera.port()->tradingFacts() : std::nullopt;
        if (facts)
            for (const auto& line : facts->lines)
                if (line.kind == "order" && line.shown) return line;
        return TradingFacts::Line{};
    };
    ASSERT_TRUE(SimPanelScript::soon([&] { return order(panes.primary()).shown && order(*panes.dual()).shown; }));
    rest(script);
    // while the main thread is still blocked
    std::vector<std::array<double, 2>> shown;
    const auto watch = QObject::connect(
        script.window(), &QQuickWindow::afterSynchronizing, script.window(),
        [&] {
            const std::array now{order(panes.primary()).price, order(*panes.dual()).price};
            if (shown.empty() || shown.back() != now) shown.push_back(now);
        },
        Qt::DirectConnection);
    const PointRect tag = order(panes.primary()).tag;
    const auto* chart = script.window()->findChildren<ChartItem*>().at(0);
    const QPointF from = chart->mapToScene({tag.x + 5, tag.y + tag.height / 2});
    script.hands.move(from);
    script.hands.press();
    for (int i = 1; i <= 25; ++i) {
        script.hands.move(from + QPointF(0, -6 * i));
        script.settle();
    }
    script.hands.release();
    script.settle();
    QObject::disconnect(watch);
    EXPECT_GT(shown.size(), 15U);
    for (const auto& [one, other] : shown) EXPECT_EQ(one, other);
    EXPECT_EQ(shown.back()[0], *script.sim().orders().back().limitPrice);
    panes.toggleDual();
}

// The clock runs over the moment at which the market opens or closes, and stands still again.
void runOver(SimPanelScript& script, double moment) {
    SteerableClock& clock = script.run.start->steering();
    const bool wasOpen = !script.view().marketClosed();
    ASSERT_TRUE(clock.setNow(moment - 1));
    clock.resume();
    EXPECT_TRUE(SimPanelScript::soon([&] { return (script.item("simClosed") != nullptr) == wasOpen; }));
    EXPECT_GE(clock.now(), moment);
    clock.pause();
    rest(script);
}

void randomHands(SimPanelScript& script) {
    RandomPanelHands hands(script);
    hands.work(130);
    if (script.sim().positions().at("NQ").qty == 0) hands.press(true, 0);
    script.sim().cancelAll();  // so that what is held is still held when the clock has gone on
    runOver(script, closing);
    hands.compare();
    hands.work(15);
    script.sim().cancelAll();
    runOver(script, opening);
    hands.moveMarket(0);
    hands.work(55);
    if (testing::Test::HasFailure()) return;
    for (const auto& [what, atLeast] : Counts{{"market orders", 15},
                                              {"limit orders", 15},
                                              {"stop orders", 15},
                                              {"questions", 2},
                                              {"without a price", 2},
                                              {"flattened", 4},
                                              {"kept", 1},
                                              {"protected", 8},
                                              {"cancelled", 8},
                                              {"by keys", 8},
                                              {"fills", 50},
                                              {"reversals", 4},
                                              {"partial closes", 2}})
        EXPECT_GE(hands.counts()[what], atLeast) << what;
}

void playAll(SimPanelScript& script) {
    SimEngine& sim = script.sim();
    const auto open = [&](bool opens) {
        script.run.pane().panels.simPanelOpen = opens;
        ASSERT_TRUE(SimPanelScript::soon([&] { return (script.panel() != nullptr) == opens; }));
    };
    script.run.start->steering().pause();
    script.window()->resize(1200, 1250);
    open(true);
    QMetaObject::invokeMethod(script.panel(), "resizeTo", Q_ARG(QVariant, 360), Q_ARG(QVariant, 1180));
    rest(script);
    walkIsNamedAndOrdered(script, together({always, ticket}));
    randomHands(script);

    open(false);
    sim.resetAccount(50000);
    const double last = std::round(script.run.pane().bars.candles.back().close);
    for (const auto& [root, price] : {std::pair("ES", 5000.0), std::pair("NQ", last)}) {
        sim.onQuote(root, price, price + tick);
        sim.onTrade(root, price);
        sim.place(root, Side::buy, OrderType::market, 1);
        sim.place(root, Side::buy, OrderType::limit, 1, price - 20);
        if (root[0] == 'E') sim.place(root, Side::buy, OrderType::limit, 1, price - 20);
    }
    open(true);
    walkIsNamedAndOrdered(script, together({always,
                                            ticket,
                                            heldInES,
                                            {"Close the position of NQ", "+ SL (40t) for NQ", "+ TP (80t) for NQ",
                                             "Cancel BUY 1 NQ limit " + sim::num(last - 20) + ", order 3"}}));
    open(false);
    bothChartsMoveInOneFrame(script);
    sim.flatten("NQ");
    sim.cancelAll("NQ");
    open(true);
    runOver(script, closing + 24 * hour);
    walkIsNamedAndOrdered(script, together({always, heldInES, {"All trades"}}));
    script.run.start->steering().resume();
    pricesCostNoListAndNoChart(script);
}

TEST(WindowSimPanel, IsWorkedByHandsAndWalkedByKeysAndCostsTheChartsNothing) {
    if (std::system("command -v xdotool > /dev/null") != 0)
        GTEST_SKIP() << "xdotool is not installed, so there are no hands to work the panel with";
    WindowRun run("2026-06-09T16:40:00");
    ASSERT_FALSE(run.start->failure()) << *run.start->failure();
    bool busy = true;
    run.step([&] { return run.streaming() && run.program->sim().last("NQ"); },
             [&] {
                 GexConfig config = run.pane().config;
                 config.simEnabled = true;
                 run.pane().setConfig(config);
                 SimPanelScript script(run);
                 playAll(script);
                 busy = false;
             });
    run.step([&] { return !busy; }, [] {});
    EXPECT_EQ(run.run(280, [] {}), 0U);
}

}  // namespace
}  // namespace vmr::test
