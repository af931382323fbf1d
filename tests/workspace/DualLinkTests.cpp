// Two panes in step: who moves whom, how far, in which frame, and that nothing comes back.
#include "workspace/DualLink.h"

#include <array>
#include <random>

#include "chart/ChartView.h"
#include "gpu/FrameRecorder.h"
#include "support/market/SyntheticMarket.h"
#include "support/pane/TestPane.h"
#include "tests/chart/FakeGlyphs.h"

namespace vmr::test {
namespace {

constexpr double height = 700;

// A pane with the chart that shows it, as a window holds them.
struct ShownPane {
    ShownPane(TestPane& at, double widthOfView)
        : width(widthOfView),
          model(std::make_unique<AppModel>(at.surroundings())),
          view({gpu, glyphs, at.session, at.time, at.main}) {
        view.setSize(width, height);
        view.onNeedsFrame = [this](ChartView::Need need) {
            asked = true;
            joins += need == ChartView::Need::join;
        };
        view.setSource(model.get());
        model->setChartPort(&view);
    }
    ~ShownPane() {
        if (model) model->setChartPort(nullptr);
        view.setSource(nullptr);
    }
    void open(const std::string& contract, Bars bars) {
        model->openChart("futures:" + contract, "derived:QQQ");
        show(std::move(bars));
    }
    void show(Bars bars) {
        model->bars.candles = std::move(bars);
        model->bars.rebuildDisplay();
    }
    void addBar() {
        Bars bars = model->bars.candles;
        Candle next = bars.back();
        next.time += 60;
        next.close += 1;
        next.high = std::max(next.high, next.close);
        bars.push_back(next);
        show(std::move(bars));
    }
    const Camera& camera() const { return renderer.camera(); }
    const Bars& shown() const { return model->bars.displayCandles.get(); }
    double timeAt(double place) const { return timeAtPlace(shown(), model->bars.timeframe, place); }
    double left() const { return timeAt(camera().firstVisible); }
    double right() const { return timeAt(camera().firstVisible + camera().visibleCount); }
    /// At an end of what its bars allow: the peer may show more.
    bool atItsLimit() const {
        const double count = camera().visibleCount, held = static_cast<double>(shown().size());
        const double first = camera().firstVisible;
        const double edge = camera().rightEdgeFirst(shown().size());
        return first == 0 || edge - first <= DualLink::timeTolerance || count <= 10 || count >= held;
    }

    double width;
    FrameRecorder gpu;
    FakeGlyphs glyphs;
    std::unique_ptr<AppModel> model;
    ChartView view;
    const ChartRenderer& renderer = view.renderer();
    bool asked = false;
    int joins = 0;  // frames that had to be the one of the other pane
};

struct DualLinkTest : testing::Test {
    TestPane at;
    // one pane has all minutes of two days, the other one lacks a few and the first of the days
    static constexpr auto now = static_cast<std::int64_t>(TestPane::wednesdayAt10);
    const Bars minutes = futuresMinutes(now - 2 * 86400, now, 3, 21000);
    std::mt19937 random{11};
    DualLink link{at.main};
    ShownPane left{at, 900}, right{at, 620};

    DualLinkTest() {
        left.open("NQM6", minutes);
        right.open("NQM6", fewer(minutes));
        link.link(*left.model, *right.model);
        settle();
    }

    static Bars fewer(const Bars& bars) {
        Bars out;
        for (std::size_t i = 1400; i < bars.size(); ++i)
            if (i % 37 != 0) out.push_back(bars[i]);
        return out;
    }
    /// One frame of the window: who joins while another one is recorded is recorded in the same pass.
    void frame() {
        at.time.advance(1.0 / 60);
        const std::array<ShownPane*, 2> order = random() % 2 ? std::array{&left, &right} : std::array{&right, &left};
        std::array<bool, 2> again{};
        for (int i = 0; left.asked || right.asked; ++i) {
            ASSERT_LT(i, 8) << "the panes ask each other for frames";
            for (std::size_t pane = 0; pane < 2; ++pane) {
                ShownPane& one = *order[pane];
                if (!std::exchange(one.asked, false)) continue;
                again[pane] = one.view.record(one.width, height, 1, at.time.monotonic());
            }
        }
        for (std::size_t pane = 0; pane < 2; ++pane) order[pane]->asked |= again[pane];
    }
    void settle() {
        for (int i = 0; i < 30; ++i) frame();
    }
    int edgesCompared = 0;
    ShownPane& peer(const ShownPane& of) { return &of == &left ? right : left; }
    std::array<std::uint64_t, 2> updates() const { return {link.updates(*left.model), link.updates(*right.model)}; }

    void expectInStep(const ShownPane& lead, const ShownPane& follow) {
        const Camera &a = lead.camera(), &b = follow.camera();
        const double bar = 60 * std::max(lead.model->bars.timeframe.get(), follow.model->bars.timeframe.get());
        if (link.crossSymbol()) {
            EXPECT_NEAR(a.priceLineFrac, b.priceLineFrac, DualLink::fracTolerance);
            if (follow.atItsLimit()) return;
            ++edgesCompared;
            const auto gap = [](const ShownPane& pane) {
                const double end = pane.camera().firstVisible + pane.camera().visibleCount;
                return (static_cast<double>(pane.shown().size()) - end) * pane.model->bars.timeframe;
            };
            EXPECT_NEAR(gap(lead), gap(follow), bar / 60 * 0.02);
            return;
        }
        EXPECT_FALSE(std::isfinite(a.priceLineFrac) || std::isfinite(b.priceLineFrac));
        EXPECT_NEAR(a.yMinManual, b.yMinManual, DualLink::priceTolerance);
        EXPECT_NEAR(a.yMaxManual, b.yMaxManual, DualLink::priceTolerance);
        if (follow.atItsLimit()) return;
        ++edgesCompared;
        // where one of them lacks the minute at an edge, the other one's edge lies within it
        EXPECT_NEAR(lead.right(), follow.right(), 1.02 * bar);
        EXPECT_NEAR(lead.left(), follow.left(), 1.02 * bar);
    }
};

TEST_F(DualLinkTest, AThousandGesturesMoveThePeerOnceAndNothingComesBack) {
    using Hand = std::function<void(ShownPane&)>;
    const auto place = [&](double size) { return 40 + std::fmod(static_cast<double>(random()), size - 140); };
    const auto delta = [&](int most) {
        return static_cast<double>(static_cast<int>(random() % (2 * most + 1)) - most);
    };
    const auto drag = [&](ShownPane& pane, double x) {
        const ChartPoint from{x, place(height)};
        ChartInput& input = pane.view.input();
        input.mouseDown(from);
        input.mouseDragged({x + delta(150), from.y + delta(90)});
        input.mouseUp({x + delta(150), from.y + delta(90)});
    };
    const std::pair<const char*, Hand> hands[] = {
        {"drag", [&](ShownPane& pane) { drag(pane, place(pane.width)); }},
        {"stretch on the axis", [&](ShownPane& pane) { drag(pane, pane.width - 20); }},
        {"wheel", [&](ShownPane& pane) { pane.view.input().scrollWheel(0, delta(4), false, false); }},
        {"wheel sideways", [&](ShownPane& pane) { pane.view.input().scrollWheel(delta(90), 0, true, false); }},
        {"price stretch", [&](ShownPane& pane) { pane.view.input().scrollWheel(0, delta(3), false, true); }},
        {"fit",
         [&](ShownPane& pane) {
             pane.view.input().mouseDown({200, 300});
             pane.view.input().doubleClick();
             pane.view.input().mouseUp({200, 300});
         }},
        {"live edge", [&](ShownPane& pane) { pane.view.input().toLiveEdge(); }},
        {"key", [&](ShownPane& pane) { pane.view.input().panBy(-0.1, 0.05); }},
    };
    const std::pair<const char*, Hand> charts[] = {
        {"symbol",
         [&](ShownPane& pane) {
             const bool toOther = pane.model->currentSymbol() == "NQ";
             Bars bars = toOther ? futuresMinutes(now - 86400, now, 9, 6000) : minutes;
             pane.open(toOther ? "ESM6" : "NQM6", std::move(bars));
         }},
        {"timeframe", [&](ShownPane& pane) { pane.model->setTimeframe(pane.model->bars.timeframe * 3 % 7); }},
        {"the same chart anew",
         [&](ShownPane& pane) {
             const Bars bars = pane.model->bars.candles;
             pane.model->reloadChart();
             pane.show(bars);
         }},
    };
    link.toggleSync(left.model.get());
    settle();
    int moves = 0, cross = 0;
    for (int gesture = 0; gesture < 1000; ++gesture) {
        ShownPane& pane = random() % 2 ? left : right;
        ShownPane& other = peer(pane);
        const auto before = updates();
        const Viewport view = pane.camera().viewport();
        const std::size_t own = &pane == &left ? 0 : 1;
        const unsigned kind = random() % 20;
        const bool byHand = kind < 15, newBar = kind == 15 || kind == 16;
        const auto& [name, act] = byHand ? hands[kind % 8] : charts[kind % 3];
        SCOPED_TRACE(testing::Message() << "gesture " << gesture << ": " << (newBar ? "new bar" : name) << " on the "
                                        << (own == 0 ? "left" : "right")
                                        << (link.crossSymbol() ? ", two symbols" : ", one symbol"));
        if (newBar)
            pane.addBar();
        else
            act(pane);
        frame();
        const bool leads = byHand && pane.camera().viewport() != view;
        moves += updates() != before;
        if (leads) expectInStep(pane, other);
        if (!byHand && !newBar) expectInStep(other, pane);
        settle();
        const auto after = updates();
        const auto onPeer = after[1 - own] - before[1 - own], back = after[own] - before[own];
        if (byHand) {
            EXPECT_LE(onPeer, 1U);
            EXPECT_EQ(back, 0U);
            if (leads) expectInStep(pane, other);
        } else if (newBar) {
            EXPECT_LE(onPeer + back, 1U);
        } else {
            EXPECT_EQ(onPeer, 0U) << "a new chart joins the other one's view";
            EXPECT_LE(back, 1U);
            expectInStep(other, pane);
        }
        cross += link.crossSymbol();
        if (HasFailure()) break;
    }
    EXPECT_GT(moves, 300);
    EXPECT_GT(cross, 100);
    EXPECT_GT(edgesCompared, 500);
    EXPECT_GE(left.joins + right.joins, moves);
}

TEST(BarTimes, APlaceIsAMomentAndAMomentAPlace) {
    const auto minutes = [](std::initializer_list<int> starts) {
        Bars bars;
        for (const int start : starts) bars.push_back({60 * start, 1, 1, 1, 1, 1});
        return bars;
    };
    const Bars ones = minutes({10, 11, 12, 15, 16}), fives = minutes({5, 10, 15});
    const struct {
        const char* name;
        double place, minute, inFives;
    } rows[] = {
        {"a bar begins half a bar before its middle", -0.5, 10, 0.5}, {"its middle", 1, 11.5, 0.8},
        {"the last bar before missing minutes", 2.4, 12.9, 1.08},     {"the first one after them", 2.5, 15, 1.5},
        {"beyond the last bar the timeframe goes on", 9.5, 22, 2.9},  {"and before the first one", -6.5, 4, -0.7},
    };
    for (const auto& [name, place, minute, inFives] : rows) {
        SCOPED_TRACE(name);
        EXPECT_NEAR(timeAtPlace(ones, 1, place), minute * 60, 1e-9);
        EXPECT_NEAR(placeOfTime(ones, 1, minute * 60), place, 1e-9);
        EXPECT_NEAR(placeOfTime(fives, 5, minute * 60), inFives, 1e-9);
        EXPECT_NEAR(timeAtPlace(fives, 5, inFives), minute * 60, 1e-9);
    }
    EXPECT_NEAR(placeOfTime(ones, 1, 14 * 60), 2.5, 1e-9) << "within the missing minutes";
}

TEST_F(DualLinkTest, WhatIsLessThanAPixelMovesNobodyUntilItAddsUp) {
    const auto pan = [&](double bars) { left.view.renderer().pan(bars); };
    const auto shift = [&](double price) {
        left.view.renderer().panByPrice(price, left.camera().yMaxManual - left.camera().yMinManual);
    };
    const auto pin = [&](double share) { left.view.renderer().panByPrice(-share * height, height); };
    const struct {
        const char* name;
        std::function<void(double)> move;
        double range;  // of prices; 0 for two symbols
        double less, more;
    } rows[] = {
        {"bars", pan, 100, 0.009, 0.011},
        {"price", shift, 100, 0.009, 0.011},
        {"small price", shift, 0.01, 4e-6, 6e-6},
        {"bars of two symbols", pan, 0, 0.009, 0.011},
        {"height of the last price", pin, 0, 0.0009, 0.0011},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        if (link.syncOn()) link.toggleSync();
        if (row.range == 0 && !link.crossSymbol()) right.open("ESM6", fewer(minutes));
        settle();
        link.toggleSync();
        left.view.input().toLiveEdge();
        pan(-300);
        if (row.range > 0) left.view.renderer().mirrorPrice(21000, 21000 + row.range);
        pan(-1);
        settle();
        const auto does = [&](double amount) {
            const auto before = updates();
            row.move(amount);
            settle();
            EXPECT_EQ(updates()[0], before[0]);
            return updates()[1] - before[1];
        };
        EXPECT_EQ(does(row.more), 1U);
        EXPECT_EQ(does(row.less), 0U);
        EXPECT_EQ(does(row.less), 1U);
        expectInStep(left, right);
    }
}

TEST_F(DualLinkTest, TurningItOnTakesTheViewFromWhereItWasAskedForAndOffFreesBoth) {
    EXPECT_EQ(link.peer(*left.model), right.model.get());
    EXPECT_EQ(link.peer(*right.model), left.model.get());
    int changes = 0;
    const auto counted = link.changed.connect([&] { ++changes; });
    left.view.renderer().pan(-400);
    right.view.renderer().pan(-900);
    settle();
    const Viewport before = right.camera().viewport();
    EXPECT_EQ(updates(), (std::array<std::uint64_t, 2>{0, 0})) << "off";
    link.toggleSync(right.model.get());
    EXPECT_TRUE(link.syncOn() && !link.crossSymbol() && changes == 1);
    EXPECT_EQ(right.model->notices.toast->value().title, "Sync");
    frame();
    expectInStep(right, left);
    EXPECT_EQ(right.camera().viewport(), before);

    right.open("ESM6", minutes);
    frame();
    EXPECT_TRUE(link.crossSymbol());
    for (const ShownPane* pane : {&left, &right}) EXPECT_EQ(pane->camera().priceLineFrac, 0.5);
    left.view.renderer().panByPrice(0.2 * height, height);
    frame();
    for (const ShownPane* pane : {&left, &right}) EXPECT_NEAR(pane->camera().priceLineFrac, 0.3, 1e-9);
    link.toggleSync();
    EXPECT_FALSE(link.syncOn());
    for (const ShownPane* pane : {&left, &right}) {
        EXPECT_FALSE(std::isfinite(pane->camera().priceLineFrac));
        EXPECT_TRUE(pane->camera().autoY);
    }
    const auto rest = updates();
    left.view.renderer().pan(-10);
    right.model->setTimeframe(5);
    settle();
    EXPECT_EQ(updates(), rest);
}

TEST_F(DualLinkTest, APaneThatClosesLeavesTheOtherOneFree) {
    right.open("ESM6", minutes);
    link.toggleSync();
    settle();
    right.model->camera.pointer = ChartSpot{static_cast<double>(now), 21000};
    right.model->setChartPort(nullptr);
    right.view.setSource(nullptr);
    left.view.renderer().pan(-10);
    frame();
    right.model.reset();
    EXPECT_FALSE(link.primary() || link.secondary() || link.syncOn() || link.peer(*left.model));
    EXPECT_FALSE(std::isfinite(left.camera().priceLineFrac));
    EXPECT_FALSE(left.view.peerCrosshair(left.width, height));
    left.view.renderer().pan(-10);
    left.addBar();
    link.toggleSync();
    settle();
    EXPECT_FALSE(link.syncOn());
    right.model = std::make_unique<AppModel>(at.surroundings());
    right.view.setSource(right.model.get());
    right.model->setChartPort(&right.view);
    link.link(*left.model, *right.model);
    link.toggleSync();
    right.open("NQM6", minutes);  // a pane whose first bars come while it is in step
    frame();
    expectInStep(left, right);
}

TEST_F(DualLinkTest, WhatTheFollowersOwnBarsDoToItIsPutRight) {
    link.toggleSync();
    left.view.renderer().pan(-200);
    frame();
    PaneCamera& follower = right.model->camera;
    EXPECT_TRUE(follower.mirrored() && !left.model->camera.mirrored());
    right.view.renderer().mirrorView(0, 50);  // no hand
    frame();
    EXPECT_EQ(right.camera().visibleCount, 50) << "not while it counts as moved by its peer";
    at.time.advance(PaneCamera::mirroredFor);
    EXPECT_FALSE(right.camera().visibleCount == 50);
    frame();
    expectInStep(left, right);
    at.time.advance(1);
    EXPECT_FALSE(follower.mirrored());
    right.view.renderer().mirrorView(0, 50);
    frame();
    frame();
    expectInStep(left, right);

    // a bar or two ahead of their history
    right.open("NQM6", Bars(minutes.end() - 2, minutes.end()));
    settle();
    right.show(minutes);
    settle();
    expectInStep(left, right);
    EXPECT_NEAR(right.camera().visibleCount, left.camera().visibleCount, 0.1);
    const Viewport alone = left.camera().viewport();
    right.width = 300;  // the divider
    right.view.redraw();
    settle();
    EXPECT_EQ(left.camera().viewport(), alone);
}

TEST_F(DualLinkTest, ThePointerOfOnePaneShowsInTheOther) {
    link.toggleSync();
    right.model->setTimeframe(5);
    settle();
    const ChartPoint point{300, 200};
    const auto peer = [&] { return right.view.peerCrosshair(right.width, height); };
    left.view.pointerAt(point, left.width, height);
    ASSERT_TRUE(peer());
    EXPECT_FALSE(left.asked || right.asked) << "it costs no frame";
    // both show the same times from edge to edge
    EXPECT_NEAR(peer()->x / right.width, point.x / left.width, 0.02);
    EXPECT_NEAR(peer()->y, point.y, 0.1);
    EXPECT_EQ(link.crosshair(*right.model), left.model->camera.pointer.get());
    EXPECT_FALSE(link.crosshair(*left.model));

    const std::pair<const char*, std::function<void()>> ends[] = {
        {"two symbols", [&] { right.open("ESM6", minutes); }},
        {"out of step", [&] { link.toggleSync(); }},
        {"the pointer leaves", [&] { left.view.pointerAt(std::nullopt, left.width, height); }},
        {"over an axis",
         [&] {
             left.view.pointerAt(ChartPoint{left.width - 20, 200}, left.width, height);
         }},
    };
    for (const auto& [name, end] : ends) {
        SCOPED_TRACE(name);
        end();
        settle();
        EXPECT_FALSE(peer());
        if (link.crossSymbol()) right.open("NQM6", minutes);
        if (!link.syncOn()) link.toggleSync();
        settle();
        left.view.pointerAt(point, left.width, height);
        EXPECT_TRUE(peer());
    }
}

}  // namespace
}  // namespace vmr::test
