// The account's lines: in which order they lie, where their badges and tags stand, and that a press hits what was drawn
// on top.
#include "chart/LineMarks.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

#include "chart/AxisLayer.h"
#include "chart/MarkedStrikeLayer.h"
#include "chart/PillLayer.h"
#include "chart/TradingLinesLayer.h"
#include "chart/TradingTexts.h"
#include "tests/chart/AllocationCount.h"
#include "tests/chart/ChartScene.h"
#include "tests/support/PlayedTrading.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;

/// A view in which a point of price is a point of height: the price 0 lies 855 points below the top.
struct LineMarksTest : RecordedScene {
    static constexpr Viewport viewport{0, 100, 0, 810};
    static double priceAt(double y) { return 855 - y; }
    static Uuid id(std::size_t n) { return Uuid{{static_cast<std::uint8_t>(n)}}; }

    PlayedTrading trading;
    FrameArena arena{gpu};
    AxisLayer axes{glyphs, session};
    TradingLinesLayer layer{glyphs};
    TradingTagsLayer tags{glyphs, layer};
    MarkedStrikeLayer marked{glyphs};
    std::vector<Candle> candles = bars(1);
    double lastPrice = 5000;  // out of view

    LineMarksTest() {
        width = 1200;
        layer.trading = &trading;
        layer.root = "NQ";
        layer.axes = marked.axes = &axes;
        marked.account = axes.account = &layer;
        axes.marked = &marked;
    }
    bool draw() override {
        gpu.beginFrame(width, height, 1);
        arena.beginFrame();
        ScreenFrame frame{{gpu, arena, width, height, 1}, viewport, candles, lastPrice};
        layer.drawBelow(frame);
        marked.drawBelow(frame);
        const bool animating = layer.drawAbove(frame) || tags.drawAbove(frame);
        gpu.endFrame();
        return animating;
    }
    /// The boxes of badges, rims without their grounds, and of tags, in the order of drawing.
    std::vector<PointRect> boxes() const {
        std::vector<PointRect> list;
        for (const auto& call : recorded.draws) {
            if (call.pipeline != Pipeline::flat) continue;
            const auto corners = recorded.vertices<ChartVertex>(call);
            for (std::size_t i = 0; i + 6 <= corners.size(); i += 6) {
                const auto &a = corners[i].position, &c = corners[i + 2].position;
                const PointRect box{a[0], a[1], double{c[0]} - a[0], double{c[1]} - a[1]};
                if (box.height == LineMarks::badgeHeight && box.width > 1) list.push_back(box);
            }
        }
        return list;
    }
    std::span<const LineMark> lines() const { return layer.marks().list(); }
    /// What a press there does: the label of what it closes or drags.
    std::string press(double x, double y) const {
        const LineMarks::Hit hit = layer.marks().hit(x, y);
        return hit.mark ? (hit.closes ? "x " : "") + hit.mark->label : "";
    }
    static bool same(const PointRect& a, const PointRect& b) {
        return std::abs(a.x - b.x) + std::abs(a.y - b.y) + std::abs(a.right() - b.right()) < 1e-3;
    }
    static bool meet(const PointRect& a, const PointRect& b) {
        return a.x < b.right() && b.x < a.right() && a.y < b.bottom() && b.y < a.bottom();
    }
};

TEST_F(LineMarksTest, LegsLieLowestThePositionHighestAndTheNewerOverTheOlder) {
    trading.shown = {PositionLine{-3, 400, "NQH6"},
                     {{id(1), 500, true, 2, "LMT"}, {id(2), 853, false, 12, "TP"}, {id(3), 900, true, 1, "STP"}},
                     {{id(1), "SL", 480}, {id(1), "TP", 530}}};
    frame();
    std::vector<std::string> found;
    for (const LineMark& mark : lines()) {
        found.push_back(mark.label + (mark.badge.width > 0 ? "" : " bare") + (mark.closeMark.width > 0 ? " x" : "") +
                        (mark.good ? " good" : ""));
        EXPECT_NEAR(mark.y, 855 - mark.price, 1e-9);
    }
    EXPECT_THAT(found,
                ElementsAre("TP good", "SL", "BUY 2 x good", "TP 12 x good", "BUY 1 bare good", "SHORT 3 NQH6 x"));
    EXPECT_EQ(lines()[3].badge.y, 0) << "a line near the edge keeps its badge in view";
    const double end = LineMarks::closeMarkEdge(width) + 2;
    EXPECT_EQ(lines()[2].closeMark, (PointRect{end - 18, 346, 18, 18}));
    EXPECT_EQ(lines()[2].tag, (PointRect{width - 74, 346, 74, 18}));
    EXPECT_EQ(lines()[2].tagText.text(), "500.00");
    const PointRect room = lines()[5].result;
    EXPECT_EQ(room.y, 446);
    EXPECT_GT(room.width, 50);
    trading.openResult = 1234567;
    frame();
    EXPECT_GT(lines()[5].result.width, room.width) << "a result of more digits gets more room";
    layer.root.clear();
    frame();
    EXPECT_TRUE(recorded.draws.empty() && lines().empty());
}

TEST_F(LineMarksTest, LinesOfOnePriceStandSideBySideTheNewestNearestToTheAxis) {
    trading.shown = {PositionLine{1, 400},
                     {{id(1), 500, true, 1, "LMT"},
                      {id(2), 500, false, 2, "LMT"},
                      {id(3), 509, true, 3, "STP"},
                      {id(4), 400, false, 1, "SL"}},
                     {{id(1), "SL", 500}}};
    frame();
    const auto badge = [&](const char* label) { return std::ranges::find(lines(), label, &LineMark::label)->badge; };
    const double end = LineMarks::closeMarkEdge(width) + 2;
    EXPECT_EQ(badge("BUY 3").right(), end);
    EXPECT_EQ(badge("SELL 2").right(), badge("BUY 3").x - 2) << "their heights meet";
    EXPECT_EQ(badge("BUY 1").right(), badge("SELL 2").x - 2);
    EXPECT_EQ(badge("SL").right(), badge("BUY 1").x - 2);
    EXPECT_EQ(badge("LONG 1").right(), end);
    EXPECT_EQ(badge("SL 1").right(), badge("LONG 1").x - 2);
    EXPECT_EQ(press(40, 355), "SELL 2") << "the newest lies on top";
    EXPECT_EQ(press(badge("BUY 1").x + 4, 355 + 9), "BUY 1");
    EXPECT_EQ(press(badge("BUY 1").right() - 4, 355 - 9), "x BUY 1");
    EXPECT_EQ(press(badge("BUY 1").right() - 4, 355 + 9.5), "");
    EXPECT_EQ(press(badge("LONG 1").x + 4, 455), "") << "over the stop's line";
    EXPECT_EQ(press(end - 4, 455 - 8), "x LONG 1");
    EXPECT_EQ(press(40, 455), "SL 1");
    // lines of one price have one tag, which takes the highest
    EXPECT_EQ(press(width - 1, 355 + 1), "SELL 2");
    EXPECT_EQ(press(width - 1, 455 + 1), "SL 1") << "the position's tag, which itself cannot be dragged";
    EXPECT_EQ(layer.tagBoxes().size(), 3U);
    layer.dragged = DraggedLine{id(1), {}};
    frame();
    EXPECT_EQ(lines().back().badge.right(), end) << "the others make room for what is dragged";
    EXPECT_EQ(badge("BUY 3").right(), lines().back().badge.x - 2);
}

TEST_F(LineMarksTest, TagsKeepOutOfEachOtherAndOfTheLastPrice) {
    trading.shown.orders = {{id(1), 500, true, 1, "LMT"}, {id(2), 505, true, 1, "LMT"}, {id(3), 404, true, 1, "LMT"}};
    lastPrice = 400;
    frame();
    ASSERT_EQ(layer.tagBoxes().size(), 3U);
    const PointRect price = axes.lastPriceBox({{gpu, arena, width, height, 1}, viewport, candles, lastPrice});
    EXPECT_EQ(price.y, 446);
    for (const PointRect& tag : layer.tagBoxes()) {
        EXPECT_FALSE(meet(tag, price));
        for (const PointRect& other : layer.tagBoxes()) EXPECT_TRUE(&tag == &other || !meet(tag, other));
        EXPECT_TRUE(std::ranges::count(boxes(), tag) == 1) << "drawn where it is hit";
    }
    EXPECT_EQ(lines()[1].tag.y, 350 - 9) << "the newer one stands at its price";
    EXPECT_EQ(lines()[0].tag.y, 350 + 9 + 1);
    EXPECT_EQ(press(width - 10, 350 + 12), "BUY 1");

    // as many as have room around the last price: the position is never the one without
    trading.shown.orders.clear();
    for (std::size_t i = 0; i < 7; ++i)
        trading.shown.orders.push_back({id(i), 388.0 + 4.0 * double(i), true, 1, "LMT"});
    trading.shown.position = PositionLine{1, 400};
    frame();
    EXPECT_LT(layer.tagBoxes().size(), 8U);
    EXPECT_EQ(lines().back().kind, LineMark::Kind::position);
    EXPECT_EQ(lines().back().tag.width, 74);
}

TEST_F(LineMarksTest, TheCountdownAndPricesGiveWayToTags) {
    axes.setCountdown(true);
    const auto countdownWith = [&](std::vector<double> prices, double last, std::optional<double> strike = {}) {
        trading.shown = {};
        for (std::size_t i = 0; i < prices.size(); ++i)
            trading.shown.orders.push_back({id(i), prices[i], true, 1, "LMT"});
        marked.set(strike, 1);
        lastPrice = last;
        frame();
        gpu.beginFrame(width, height, 1);
        ScreenFrame again{{gpu, arena, width, height, 1}, viewport, candles, lastPrice};
        axes.drawBelow(again);
        axes.drawAbove(again);
        gpu.endFrame();
        EXPECT_EQ(layer.tagBoxes().size(), prices.size()) << "none is left away for it";
        EXPECT_EQ(marked.tagBox().width > 0, strike.has_value());
        const auto& room = axes.labels().countdown;
        std::vector<PointRect> taken(layer.tagBoxes().begin(), layer.tagBoxes().end());
        taken.push_back(marked.tagBox());
        for (const PointRect& tag : taken) {
            EXPECT_TRUE(tag.bottom() <= room.from || tag.y >= room.to);
            for (const auto& price : axes.labels().prices) EXPECT_TRUE(tag.bottom() <= price.from || tag.y >= price.to);
            EXPECT_FALSE(meet(tag, axes.lastPriceBox(again)));
            for (const PointRect& other : taken) EXPECT_TRUE(&tag == &other || !meet(tag, other));
        }
        EXPECT_EQ(room.to - room.from, 16);
        return room.from;
    };
    EXPECT_EQ(countdownWith({}, 400), 466);
    EXPECT_EQ(countdownWith({398, 380}, 400), 486) << "below the last price and the tag there";
    EXPECT_EQ(countdownWith({}, -4.5), 832) << "above it at the axis' end";
    EXPECT_EQ(countdownWith({20}, -4.5), 808);
    EXPECT_EQ(countdownWith({}, 400, 398), 483) << "the marked strike's tag steps below the last price";
    EXPECT_EQ(countdownWith({}, 400, 401), 466) << "or above";
    EXPECT_EQ(countdownWith({398, 380}, 400, 397), 503) << "and below the account's";
    EXPECT_EQ(countdownWith({}, -4.5, 20), 809);
    EXPECT_EQ(countdownWith({}, 400, 0), 466) << "at the axis' end";
}

TEST_F(LineMarksTest, TheMarkedStrikesTitleKeepsOutOfOtherTexts) {
    OverlayRibbons ribbons;
    PillLayer pills{glyphs, ribbons};
    pills.account = &layer;
    pills.marked = &marked;
    width = 420;  // badges reach down to the left end
    for (std::size_t i = 0; i < 6; ++i) trading.shown.orders.push_back({id(i), 500, true, 1, "LMT"});
    marked.set(50, 10);
    frame();
    ASSERT_GT(marked.titleBox().width, 0);
    EXPECT_EQ(marked.shownAt(), 355);
    for (const PointRect& badge : layer.labelBoxes()) EXPECT_FALSE(meet(badge, marked.titleBox()));
    EXPECT_NE(marked.titleBox().y, 355 - 8) << "it stands beside its line";
    gpu.beginFrame(width, height, 1);
    ScreenFrame again{{gpu, arena, width, height, 1}, viewport, candles, lastPrice};
    pills.drawBelow(again);
    gpu.endFrame();
    EXPECT_THAT(pills.boxes(), testing::Contains(marked.titleBox())) << "what others leave free";
}

TEST_F(LineMarksTest, WhatAPressHitsIsWhatWasDrawnOnTop) {
    std::mt19937 random(11);
    const auto below = [&](std::size_t n) { return random() % n; };
    std::size_t closed = 0, badges = 0, dragged = 0;
    for (int round = 0; round < 300; ++round) {
        const auto price = [&] { return priceAt(static_cast<double>(400 + below(40))); };
        trading.shown = {};
        for (std::size_t i = below(4); i-- > 0;) trading.shown.orders.push_back({id(i), price(), i % 2 == 0, 1, "LMT"});
        for (std::size_t i = below(3); i-- > 0;) trading.shown.legs.push_back({id(i), i == 0 ? "SL" : "TP", price()});
        if (below(2) == 0) trading.shown.position = PositionLine{1, price()};
        frame();
        const auto drawn = boxes();
        const auto list = lines();
        for (const LineMark& mark : list) {
            ASSERT_TRUE(std::ranges::any_of(drawn, [&](const PointRect& box) { return same(box, mark.badge); }));
            for (const LineMark& other : list) ASSERT_TRUE(&mark == &other || !meet(mark.badge, other.badge));
        }
        for (int point = 0; point < 300; ++point) {
            const double x = 500 + static_cast<double>(below(450)), y = 385.25 + static_cast<double>(below(70));
            const LineMark* on = nullptr;
            for (const LineMark& mark : list)
                if (mark.badge.contains(x, y)) on = &mark;
            const LineMarks::Hit hit = layer.marks().hit(x, y);
            if (on) {
                ASSERT_EQ(hit.closes, on->closeMark.contains(x, y));
                ASSERT_EQ(hit.mark, hit.closes || on->draggable() ? on : nullptr);
                ++(hit.closes ? closed : badges);
                continue;
            }
            ASSERT_FALSE(hit.closes);
            const auto near = [&](const LineMark& mark) {
                return mark.draggable() && std::abs(mark.y - y) <= LineMarks::hitTolerance;
            };
            const auto highest = std::find_if(list.rbegin(), list.rend(), near);
            ASSERT_EQ(hit.mark, highest == list.rend() ? nullptr : &*highest);
            if (hit.mark) ++dragged;
        }
    }
    EXPECT_TRUE(closed > 1000 && badges > 3000 && dragged > 3000) << closed << " " << badges << " " << dragged;
}

TEST_F(LineMarksTest, AFrameOfTwentyOrdersAllocatesNothing) {
    trading.shown.position = PositionLine{-2, 420, "NQH6"};
    for (std::size_t i = 0; i < 20; ++i) {
        trading.shown.orders.push_back({id(i), 400 + static_cast<double>(i % 7) * 8, i % 2 == 0, 12, "LMT"});
        trading.shown.legs.push_back({id(i), "SL", 380});
    }
    layer.dragged = DraggedLine{id(3), {}};
    for (int i = 0; i < 10; ++i) frame();
    const long before = allocationCount();
    draw();
    EXPECT_EQ(allocationCount(), before);
}

// What the badge of a dragged line says, for each kind of line.
TEST_F(LineMarksTest, ADraggedLineTellsTicksAndMoneyFromItsEntry) {
    trading.lastPrice = 600;
    trading.tick = 0.25;
    const PositionLine longOf2{2, 500}, shortOf3{-3, 500.1};
    const struct {
        const char* name;
        std::optional<PositionLine> position;
        OrderLine order;
        std::string_view leg;
        const char* text;
    } rows[] = {
        {"stop of a long", longOf2, {id(1), 490, false, 2, "SL"}, {}, "SL 2 490.00 · −40 t · −$400"},
        {"target of a long", longOf2, {id(1), 510.25, false, 2, "TP"}, {}, "TP 2 510.25 · +41 t · +$410"},
        {"stop of a short", shortOf3, {id(1), 501, true, 3, "SL"}, {}, "SL 3 501.00 · −4 t · −$54"},
        {"target at the entry", longOf2, {id(1), 500, false, 2, "TP"}, {}, "TP 2 500.00 · 0 t · $0"},
        {"closes a part", longOf2, {id(1), 501, false, 1, "LMT"}, {}, "SELL 1 501.00 · +4 t · +$20"},
        {"closes more than there is", longOf2, {id(1), 501, false, 9, "LMT"}, {}, "SELL 9 501.00 · +4 t · +$40"},
        {"adds", longOf2, {id(1), 501, true, 1, "LMT"}, {}, "BUY 1 501.00 · −396 t"},
        {"opens", {}, {id(1), 601, false, 1, "LMT"}, {}, "SELL 1 601.00 · +4 t"},
        {"planned stop of a buy", {}, {id(1), 500, true, 2, "LMT"}, "SL", "SL 495.00 · −20 t · −$200"},
        {"planned stop of a sell", {}, {id(1), 490, false, 1, "LMT"}, "SL", "SL 495.00 · −20 t · −$100"},
    };
    for (const auto& [name, position, order, leg, text] : rows) {
        SCOPED_TRACE(name);
        trading.shown = {position, {order}, {}};
        if (!leg.empty()) trading.shown.legs = {{id(1), leg, 495}, {id(9), leg, 495}};
        layer.dragged = DraggedLine{id(1), leg};
        frame();
        EXPECT_EQ(lines().back().label, text);
        EXPECT_TRUE(lines().back().dragged);
    }
    for (const auto& [open, worth, text] : {std::tuple{12.49, 5.0, "+10.00"},
                                            {-12.51, 5.0, "-15.00"},
                                            {-2.0, 5.0, "+0.00"},
                                            {7.0, 0.0, "+7.00"},
                                            {12345.0, 12.5, "+12,350.00"}})
        EXPECT_EQ(TradingTexts::result(open, worth).text.text(), text);
}

}  // namespace
}  // namespace vmr::test
