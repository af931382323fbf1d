// The rules of pointer and menu in virtual time, over a chart whose price range is known to the point.
#include "chart/ChartInput.h"

#include <gmock/gmock.h>

#include <tuple>

#include "chart/AxisScale.h"
#include "chart/TradingLinesLayer.h"
#include "tests/chart/ChartScene.h"
#include "tests/support/PlayedTrading.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;

struct InputTest : ChartScene {
    PlayedTrading trading;
    ChartInput input{renderer, session, time, queue, nullptr};
    std::vector<bool> live;
    int moves = 0, closed = 0;
    std::optional<ChartPoint> last;

    InputTest() {
        time.setNow(firstBarTime);  // Wednesday 08:00 New York
        input.simRoot = "NQ";
        input.trading = &trading;
        input.setSize(width, height);
        input.onLiveRefresh = [this](bool on) { live.push_back(on); };
        input.pointer.onReport = [this](auto point) { last = point, ++moves; };
        input.onMarketClosedOrder = [this] { ++closed; };
        renderer.setCandles(bars(2000));
        renderer.mirrorPrice(20900, 21100);
        frame();
    }
    const Camera& camera() const { return renderer.camera(); }
    double span() const { return camera().yMaxManual - camera().yMinManual; }
    double priceAt(double y) const { return AxisScale::priceAtY(camera().viewport(), y, height); }
    double yOf(double price) const { return AxisScale::yFor(camera().viewport(), price, height); }
    ChartPoint at(double x, double price) const { return {x, yOf(price)}; }
    std::vector<std::string> done() { return std::exchange(trading.done, {}); }
    static Uuid id(std::uint8_t n) { return Uuid{{n}}; }
};

TEST_F(InputTest, DragAddsEventsUpAndMovesTheCameraAtMost120TimesASecond) {
    const double first = camera().firstVisible, perPoint = camera().visibleCount / width;
    int ended = 0, steps = 0;
    renderer.onInteractionEnd = [&] { ++ended; };
    input.mouseDown({500, 400});
    double before = first;
    for (int i = 1; i <= 105; ++i) {  // 1000 events a second
        time.advance(0.001);
        input.mouseDragged({500.0 + i, 400});
        steps += std::exchange(before, camera().firstVisible) != camera().firstVisible;
    }
    EXPECT_EQ(steps, 12);
    EXPECT_TRUE(renderer.interacting());
    input.mouseUp({605, 400});
    EXPECT_NEAR(camera().firstVisible, first - 105 * perPoint, 1e-9);  // nothing of the drag is lost
    EXPECT_EQ(ended, 1);
    EXPECT_FALSE(renderer.interacting());
    EXPECT_THAT(live, ElementsAre(true, false));

    const double low = camera().yMinManual;
    renderer.setAutoY(true);
    input.mouseDown({500, 400});  // clicks of a trembling hand
    input.mouseDragged({501, 402});
    input.mouseUp({501, 402});
    EXPECT_EQ(ended, 1);
    EXPECT_TRUE(camera().autoY);
    EXPECT_EQ(camera().yMinManual, low);
}

TEST_F(InputTest, DragDecidesBetweenRulerAndChartAtEachStep) {
    const double whole = span(), first = camera().firstVisible;
    const auto drag = [&](ChartPoint to) {
        time.advance(0.02);
        input.mouseDragged(to);
    };
    input.mouseDown({width - 10, 400});
    drag({width - 10, 420});  // down widens
    EXPECT_NEAR(span(), whole * 1.1, 1e-6);
    drag({width - 10, 300});  // clamped
    EXPECT_NEAR(span(), whole * 1.1 * 0.6, 1e-6);
    EXPECT_EQ(camera().firstVisible, first);
    const double low = camera().yMinManual;
    drag({width - 110, 309});  // over the chart: time, and price with it
    EXPECT_GT(camera().firstVisible, -1);
    EXPECT_NEAR(camera().yMinManual - low, 9 / height * whole * 0.66, 1e-6);
    input.mouseUp({width - 110, 309});
    EXPECT_FALSE(camera().autoY);
    const double count = camera().visibleCount;
    input.scrollWheel(3, 3, true, false);
    EXPECT_EQ(camera().visibleCount, count) << "as far sideways as up is sideways";
    input.mouseDown({400, 400});
    input.doubleClick();
    EXPECT_TRUE(camera().autoY);
}

TEST_F(InputTest, LiveRefreshEndsSoonAfterTheLastInput) {
    for (int i = 0; i <= 10; ++i) {
        input.scrollWheel(0, 1, true, false);
        time.advance(i < 10 ? 0.1 : 0.179);
        EXPECT_TRUE(input.liveRefresh());
    }
    time.advance(0.034);
    EXPECT_FALSE(input.liveRefresh());
    EXPECT_THAT(live, ElementsAre(true, false));
}

TEST_F(InputTest, PointerReportsKeepThePaceAndTheCursorDoesNot) {
    using enum ChartCursor;
    ChartCursor cursor = arrow;
    input.onCursor = [&](ChartCursor next) { EXPECT_NE(std::exchange(cursor, next), next); };
    trading.shown = {PositionLine{2, 21000},
                     {{id(1), 21040, true, 1, "LMT"}, {id(2), priceAt(height - 24), true, 1, "LMT"}},
                     {{id(1), "SL", 20980}}};
    const double edge = 1400 - 74 - 208 - 80;
    EXPECT_EQ(LineMarks::closeMarkEdge(width), edge);
    for (const auto& [place, shown, ruler, readOnly] : {std::tuple{ChartPoint{400, 100}, arrow, false, false},
                                                        {ChartPoint{width - 74, 100}, resizeUpDown, true, false},
                                                        {at(400, 21040), resizeUpDown, true, false},
                                                        {{400, height - 22}, arrow, false, false},
                                                        {{400, height - 23}, resizeUpDown, true, false},
                                                        {at(edge, 21040), pointingHand, true, false},
                                                        {at(400, 20980), resizeUpDown, true, false},
                                                        {at(400, 20980), arrow, true, true},
                                                        {{width - 74, 100}, resizeUpDown, true, true},
                                                        {at(edge, 21040), arrow, true, true},
                                                        {at(edge, 21000), pointingHand, false, false},
                                                        {at(400, 21000), arrow, false, false}}) {
        trading.readOnly = readOnly;
        input.mouseMoved(place);
        EXPECT_EQ(cursor, shown);
        EXPECT_EQ(input.cursorOnRuler(), ruler);
    }
    EXPECT_EQ(moves, 1);
    time.advance(0.0084);
    EXPECT_EQ(moves, 2) << "where the pointer came to rest is told";
    EXPECT_EQ(last, at(400, 21000));
    input.mouseMoved({400, 100});
    input.mouseExited();
    time.advance(0.1);
    EXPECT_EQ(moves, 3) << "nothing after it left";
    EXPECT_EQ(last, std::nullopt);
}

TEST_F(InputTest, LinesAreHitWithinSixPointsAndDraggedOrClosed) {
    const double edge = LineMarks::closeMarkEdge(width);
    trading.shown = {PositionLine{-1, 21000},
                     {{id(1), 21040, true, 1, "LMT"}, {id(2), 21040, true, 1, "STP"}},
                     {{id(1), "SL", 20980}, {id(1), "TP", 20980}, {id(2), "TP", 21080}}};
    const auto press = [&](ChartPoint from, double toPrice) {
        input.mouseDown(from);
        input.doubleClick();  // is nothing more on a line
        time.advance(0.02);
        input.mouseDragged(at(from.x, toPrice));
        input.mouseDragged(at(from.x, toPrice + 1));
        input.mouseUp(at(from.x, toPrice));
        return done();
    };
    const auto below = [&](double price, double points) { return ChartPoint{400, yOf(price) + points}; };
    const double first = camera().firstVisible, low = camera().yMinManual;
    EXPECT_THAT(press(below(21040, 6), 21060), ElementsAre("modify 2 21060", "modify 2 21061"));
    EXPECT_THAT(press(below(20980, -6), 20970), ElementsAre("leg 1 SL 20970", "leg 1 SL 20971"));
    EXPECT_THAT(press(below(21080, 0), 21070), ElementsAre("leg 2 TP 21070", "leg 2 TP 21071"));
    input.mouseDown(below(21040, 1));
    input.mouseDragged(below(21040, -1));
    input.mouseUp(below(21040, -1));
    EXPECT_THAT(done(), ElementsAre()) << "a trembling hand moves no order";
    EXPECT_THAT(press(at(edge - 16, 21040), 21050), ElementsAre("cancel 2"));
    EXPECT_THAT(press({edge + 2, yOf(21000) + 9}, 21000), ElementsAre("flatten NQ"));
    EXPECT_FALSE(input.draggingLine());
    EXPECT_EQ(camera().firstVisible, first);
    EXPECT_EQ(camera().yMinManual, low);
    EXPECT_FALSE(camera().autoY);
    EXPECT_THAT(press({width - 74, yOf(21040) + 8}, 21060), ElementsAre("modify 2 21062", "modify 2 21063"))
        << "by its tag, from where it was taken";
    const double whole = span();  // the axis of a position, which cannot be moved
    EXPECT_THAT(press({width - 74, yOf(21000)}, 21010), ElementsAre());
    EXPECT_NE(span(), whole);
    renderer.mirrorPrice(20900, 21100);
    EXPECT_THAT(press({edge, yOf(21000) + 10}, 21010), ElementsAre());  // beside the badge: the chart moves
    EXPECT_NE(camera().yMinManual, low);
    while (yOf(21000) > 2) renderer.panByPrice(-1, height);
    ASSERT_GE(yOf(21000), 0);
    EXPECT_THAT(press({edge, 17}, 21000), ElementsAre("flatten NQ")) << "the badge stays in view";
    input.simRoot.clear();
    EXPECT_THAT(press(below(21040, 0), 21060), ElementsAre());
}

// A line is gone, or its prices are another contract's: what the hand still does changes nothing.
TEST_F(InputTest, ALineThatGoesEndsItsDrag) {
    using Shown = TradingLines&;
    const TradingLines before{
        PositionLine{1, 21000},
        {{id(1), 21040, true, 1, "LMT"}, {id(2), 20960, false, 1, "SL"}, {id(3), 21060, false, 1, "TP"}},
        {{id(1), "SL", 21030}, {id(1), "TP", 21080}},
        "NQM6"};
    const std::tuple<const char*, std::function<void(Shown)>, std::vector<double>> ends[] = {
        {"the entry fills",
         [](Shown now) { now.orders.erase(now.orders.begin()), now.legs.clear(); },
         {21040, 21030, 21080}},
        {"the stop fills", [](Shown now) { now.orders.resize(1), now.position.reset(); }, {20960, 21060}},
        {"the planned target is given up", [](Shown now) { now.legs.pop_back(); }, {21080}},
        {"a reset", [](Shown now) { now = {}; }, {21040, 20960, 21060, 21030}},
        {"a roll", [](Shown now) { now.contract = "NQU6"; }, {21040, 20960, 21060, 21030}},
    };
    for (const auto& [name, change, prices] : ends) {
        for (const double price : prices) {
            SCOPED_TRACE(std::string(name) + " " + std::to_string(price));
            trading.shown = before;
            input.mouseDown(at(400, price));
            input.mouseDragged(at(400, price + 3));
            EXPECT_EQ(done().size(), 1U);
            EXPECT_TRUE(input.draggedLine());
            change(trading.shown);
            input.mouseDragged(at(400, price - 10));
            EXPECT_FALSE(input.draggingLine());
            trading.shown = before;  // the same line again is another press'
            input.mouseDragged(at(400, price - 20));
            input.mouseUp(at(400, price - 20));
            EXPECT_FALSE(input.takeBack());
            EXPECT_THAT(done(), ElementsAre());
        }
    }
    trading.shown = before;
    input.mouseDown(at(400, 21040));
    trading.shown.orders.pop_back();
    input.mouseDragged(at(400, 21050));
    EXPECT_THAT(done(), ElementsAre("modify 1 21050")) << "another order's fill";
    input.letGo();  // the chart changes its symbol
    input.mouseDragged(at(400, 21055));
    EXPECT_THAT(done(), ElementsAre());
}

TEST_F(InputTest, ADragIsTakenBackToWhereItBegan) {
    trading.shown = {{}, {{id(1), 21040, true, 1, "LMT"}}, {{id(1), "SL", 21030}}};
    for (const auto& [price, back] : {std::pair{21040.0, "back 1  21040"}, {21030.0, "back 1 SL 21030"}}) {
        EXPECT_FALSE(input.takeBack());
        input.mouseDown(at(400, price));
        EXPECT_TRUE(input.draggingLine() && !input.draggedLine()) << "it has not moved";
        last = ChartPoint{};
        input.mouseDragged(at(width - 20, price + 40));  // over the axis the price counts as well
        input.mouseDragged(at(width - 20, price + 50));
        EXPECT_EQ(done().size(), 2U);
        EXPECT_FALSE(last) << "the crosshair makes room for the line's texts";
        EXPECT_TRUE(input.takeBack());
        input.mouseDragged(at(400, price + 20));
        input.mouseUp(at(400, price + 20));
        EXPECT_THAT(done(), ElementsAre(back));
        EXPECT_EQ(camera().yMinManual, 20900) << "nor does the rest of the drag move the chart";
    }
    trading.readOnly = true;
    input.mouseDown(at(400, 21040));
    input.mouseDragged(at(400, 21060));
    EXPECT_FALSE(input.draggingLine());
    EXPECT_THAT(done(), ElementsAre()) << "of an account that cannot be changed no line is taken";
    input.mouseDown({400, 100});
    EXPECT_FALSE(input.takeBack()) << "the chart's drag is none of a line";
}

TEST_F(InputTest, APressIsMeantForTheLinesOfTheLastFrame) {
    TradingLinesLayer layer{glyphs};
    layer.trading = &trading;
    layer.root = "NQ";
    renderer.addScreenLayer(layer);
    input.drawnMarks = &layer.marks();
    std::uint8_t order = 0;  // an even one before each step, the next odd one after it
    const std::tuple<const char*, std::function<void()>, const char*> steps[] = {
        {"before any frame, the account's", [] {}, "cancel 1"},
        {"as it was seen", [&] { frame(); }, "cancel 2"},
        {"the camera moved on", [&] { renderer.panByPrice(25, height); }, "cancel 5"},
        {"another size", [&] { frame(), input.setSize(width, height - 1); }, "cancel 7"},
        {"the size as it was seen", [&] { input.setSize(width, height); }, "cancel 6"},
        {"an empty chart has none", [&] { renderer.setCandles({}); }, ""},
        {"another root's", [&] { renderer.setCandles(bars(2000)), frame(), input.simRoot = "ES"; }, "cancel 13"}};
    for (const auto& [name, change, closes] : steps) {
        SCOPED_TRACE(name);
        trading.shown.orders = {{id(order++), 21040, true, 1, "LMT"}};
        change();
        trading.shown.orders = {{id(order++), 21040, true, 1, "LMT"}};
        const ChartPoint place = at(LineMarks::closeMarkEdge(width), 21040);
        input.mouseDown(place);
        input.mouseUp(place);
        EXPECT_EQ(done(), *closes ? std::vector<std::string>{closes} : std::vector<std::string>{});
    }
}

TEST_F(InputTest, MenuOffersWhatThePriceAllows) {
    const auto texts = [&](double price) {
        std::vector<std::string> list;
        for (const auto& item : input.orderMenu(at(400, price))) list.push_back(item.text);
        return list;
    };
    EXPECT_THAT(texts(20950.3), ElementsAre("Buy 2 Limit @ 20950.25", "", "Sell 2 Stop @ 20950.25"));
    EXPECT_THAT(texts(21050), ElementsAre("Sell 2 Limit @ 21050", "", "Buy 2 Stop @ 21050"));
    EXPECT_EQ(texts(21000).size(), 5U) << "at the last price everything can be ordered";
    trading.lastPrice.reset();
    trading.shown = {PositionLine{-3, 21000}, {{id(1), 21040, true, 1, "LMT"}}, {}};
    EXPECT_THAT(texts(21050),
                ElementsAre("Set SL @ 21050", "Set TP @ 21050", "", "Buy 2 Limit @ 21050", "Sell 2 Limit @ 21050", "",
                            "Buy 2 Stop @ 21050", "Sell 2 Stop @ 21050", "", "Cancel All (1)"));
    trading.lastPrice = 21000;
    EXPECT_EQ(texts(21050).at(0), "Set SL @ 21050") << "a short's stop is above the market";
    EXPECT_EQ(texts(20950).at(0), "Set TP @ 20950");
    trading.staleAge = 212;
    EXPECT_EQ(texts(21050).at(0), "The last price is 3 min old");
    trading.staleAge.reset();
    trading.shown.position->qty = 3;
    const auto menu = input.orderMenu(at(400, 21050));
    ASSERT_EQ(menu.at(0).text, "Set TP @ 21050");
    for (const auto& item : menu) input.choose(item);
    EXPECT_THAT(done(), ElementsAre("protect TP 21050", "place NQ sell limit 21050", "place NQ buy stop 21050",
                                    "cancelAll NQ"));
    EXPECT_TRUE(input.orderMenu(at(width - 74, 21050)).empty());
    input.simRoot.clear();
    EXPECT_TRUE(input.orderMenu({400, 400}).empty());
}

TEST_F(InputTest, TheMenuTellsPricesToTheLastDigitOfTheirTick) {
    trading.lastPrice = 500;
    for (const auto& [tick, price, text] : {std::tuple(0.25, 100.0, "100"),
                                            {0.25, 99.0, "99.00"},
                                            {0.25, 110.5, "110.50"},
                                            {0.005, 32.0, "32.00"},
                                            {0.005, 32.005, "32.005"},
                                            {1.0 / 32, 110.5, "110.50"},
                                            {1.0 / 32, 110.03125, "110.03125"},
                                            {1.0 / 3, 100 + 2.0 / 3, "100.67"}}) {
        trading.tick = tick;
        renderer.mirrorPrice(price - tick, price + tick);
        EXPECT_EQ(input.orderMenu(at(400, price)).at(0).text, std::string("Buy 2 Limit @ ") + text);
    }
}

TEST_F(InputTest, AClosedMarketTakesNoOrders) {
    constexpr double hour = 3600, day = 86400;
    for (const auto& [later, open] : {std::pair{9 * hour - 1, true},
                                      {9 * hour, false},
                                      {10 * hour, true},
                                      {3 * day, false},
                                      {4 * day + 10 * hour, true}}) {
        time.setNow(static_cast<double>(firstBarTime) + later);
        closed = 0;
        input.choose({OrderMenuItem::Action::order, "", 21000, "buy", "limit"});
        EXPECT_EQ(done().size(), open ? 1U : 0U) << later;
        EXPECT_EQ(closed, open ? 0 : 1);
    }
}

}  // namespace
}  // namespace vmr::test
