// The running window driven by a real pointer: what its camera shows and what its account did.
#include <algorithm>
#include <array>
#include <cmath>

#include "tests/app/DrivenWindow.h"

namespace vmr {
namespace {

using nlohmann::json;

constexpr double width = 1200, windowHeight = 800, toolbarHeight = 44;
constexpr double height = windowHeight - toolbarHeight;  // of the chart
constexpr double closeMarkX = 1200 - 74 - 168 - 80 - 7;
constexpr double tick = 0.25;

struct Point {
    double x, y;  // in the chart, whole numbers
};

// The camera as the state document tells it.
struct View {
    double first, count, minP, maxP;

    explicit View(const json& pane)
        : first(pane["viewport"]["first"]),
          count(pane["viewport"]["count"]),
          minP(pane["viewport"]["minP"]),
          maxP(pane["viewport"]["maxP"]) {}
    double span() const { return maxP - minP; }
    double priceAt(double y) const { return minP + (1.9 - 2 * y / height) * span() / 1.8; }
    double yOf(double price) const { return std::round(height * (1.9 - (price - minP) * 1.8 / span()) / 2); }
    void zoomPrice(double factor) {
        const double middle = (minP + maxP) / 2, half = span() / 2 * factor;
        minP = middle - half;
        maxP = middle + half;
    }
    void move(double dx, double dy) {
        const double up = dy / height * span();
        first -= dx * count / width;
        minP += up;
        maxP += up;
    }
    std::array<double, 4> all() const { return {first, count, minP, maxP}; }
    bool near(const View& other) const {
        return std::ranges::equal(all(), other.all(), [](double a, double b) { return std::abs(a - b) < 1e-6; });
    }
};

class WindowInput : public DrivenWindow {
 protected:
    void SetUp() override {
        DrivenWindow::SetUp();
        if (IsSkipped()) return;
        startMarket();
        program_->ask("set oscEnabled false");
        settle();
    }

    // To a place in the chart.
    static std::string move(Point at) { return to(at.x, at.y + toolbarHeight); }
    void drag(Point from, const std::vector<Point>& over) {
        std::string events = move(from) + " mousedown 1";
        for (const Point& to : over) events += move(to);
        act(events + " mouseup 1");
    }
    void wheelWithShift(int button, int times) {
        act(move({400, 400}) + " keydown shift click --repeat " + std::to_string(times) + " --delay 20 " +
            std::to_string(button) + " keyup shift");
    }
    // Opens the order menu and clicks its first row.
    void chooseFirstOfMenu(Point at) {
        act(move(at) + " click 3 sleep 0.4" + move({at.x + 30, at.y + 6 + 14}) + " click 1");
    }

    const json& account() { return state_["sim"]; }

    // The camera, its bars counted from one bar of the history whatever comes or goes at the ends.
    View view() {
        View out(pane());
        const json& bars = pane()["displayCandles"];
        if (anchor_.is_null()) anchor_ = bars[50][0];
        for (std::size_t i = 0; i < bars.size(); ++i)
            if (bars[i][0] == anchor_) out.first -= static_cast<double>(i);
        return out;
    }
    // The camera once nothing has moved it for a while.
    View settle() {
        std::optional<View> before;
        int same = 0;
        EXPECT_TRUE(until([&](const json&) {
            same = before && before->near(view()) ? same + 1 : 0;
            before = view();
            return same >= 3;
        }));
        return *before;
    }
    void expectView(const View& expected, const char* after) {
        EXPECT_TRUE(until([&](const json&) { return view().near(expected); }))
            << after << ": " << testing::PrintToString(view().all()) << ", expected "
            << testing::PrintToString(expected.all());
    }
    // Brings the market to 250 points below the top, a point being 0.3 of price, and ends the automatic range.
    View standStill() {
        wheelWithShift(4, 1);
        for (int i = 0; i < 10; ++i) {
            const View now = settle();
            const double factor = 0.3 * height * 0.9 / now.span(), off = 250 - now.yOf(account()["lasts"]["NQ"]);
            if (factor < 0.94)
                wheelWithShift(4, std::max(1, static_cast<int>(std::log(factor) / std::log(0.94))));
            else if (factor > 1.07)
                wheelWithShift(5, std::max(1, static_cast<int>(std::log(factor) / std::log(1.06))));
            else if (std::abs(off) > 30)
                drag({300, 300}, {{300, 300 + std::clamp(off, -200.0, 200.0)}});
            else
                return now;
        }
        ADD_FAILURE() << "the market does not stand still";
        return View(pane());
    }

    json anchor_;
};

TEST_F(WindowInput, ThePointerAndTheKeysMoveTheCamera) {
    const double liveFirst = view().first;
    drag({200, 200}, {{400, 220}, {600, 240}, {900, 260}});  // off the live edge, and the range is fixed
    View expected = settle();
    EXPECT_LT(expected.first, liveFirst - 0.3 * expected.count);

    drag({800, 300}, {{750, 310}, {600, 350}, {500, 380}});
    expected.move(-300, 80);
    expectView(expected, "a drag");

    drag({1160, 300}, {{1160, 340}});
    expected.zoomPrice(1.2);
    expectView(expected, "a drag on the ruler");

    act(" windowfocus --sync $W key Home");
    EXPECT_TRUE(until([&](const json& state) {
        const View now(state["panes"][0]);  // at this width half of the view stays free
        return std::abs(now.first + now.count / 2 - static_cast<double>(pane()["displayCandles"].size())) < 1e-6;
    }));
}

TEST_F(WindowInput, OrdersAreEnteredMovedAndClosedOnTheChart) {
    const View at = standStill();
    const double last = account()["lasts"]["NQ"];
    const double entryY = at.yOf(last) + 260;
    const auto rounded = [](double price) { return std::round(price / tick) * tick; };
    const auto order = [&](const char* tag) -> json {
        for (const json& one : account()["orders"])
            if (one["tag"] == tag) return one;
        return {};
    };
    const auto near = [](const json& price, double expected) {
        return price.is_number() && std::abs(price.get<double>() - expected) <= tick;
    };

    chooseFirstOfMenu({300, entryY});
    ASSERT_TRUE(until([&](const json&) { return account()["orders"].size() == 1; })) << account()["orders"];
    EXPECT_EQ(order("")["side"], "buy");
    EXPECT_EQ(order("")["type"], "limit");
    EXPECT_EQ(order("")["qty"], 1);
    EXPECT_TRUE(near(order("")["limitPrice"], at.priceAt(entryY))) << order("");
    EXPECT_EQ(order("")["bracket"], (json{{"slTicks", 40}, {"tpTicks", 80}}));

    // the planned stop through the entry: it comes back on its own side
    const double entry = order("")["limitPrice"];
    const double legY = at.yOf(entry - 40 * tick), throughY = entryY - 90;
    const double slTicks = std::round((rounded(at.priceAt(throughY)) - entry) / tick);
    drag({300, legY}, {{300, legY - 20}, {300, entryY}, {300, throughY}});
    EXPECT_TRUE(until([&](const json&) { return order("")["bracket"]["slTicks"] == slTicks; })) << order("");
    EXPECT_GT(slTicks, 60);
    EXPECT_EQ(order("")["bracket"]["tpTicks"], 80);
    EXPECT_EQ(order("")["limitPrice"], entry);

    drag({300, at.yOf(entry)}, {{300, entryY + 20}, {300, entryY + 60}});
    EXPECT_TRUE(until([&](const json&) { return near(order("")["limitPrice"], at.priceAt(entryY + 60)); }));
    EXPECT_LT(order("")["limitPrice"], entry - 10);

    const json first = order("");
    // over the market in one move: the next trade fills it at its limit
    const double fillY = at.yOf(account()["lasts"]["NQ"]) - 30;
    drag({300, at.yOf(first["limitPrice"])}, {{300, fillY}});
    const auto position = [&]() -> json { return account()["positions"].value("NQ", json{{"qty", 0}}); };
    ASSERT_TRUE(until([&](const json&) { return position()["qty"] == 1; })) << account()["orders"];
    const double average = position()["avg"];
    EXPECT_TRUE(near(average, at.priceAt(fillY))) << average;
    EXPECT_EQ(account()["orders"].size(), 2u);
    EXPECT_TRUE(near(order("SL")["stopPrice"], average - slTicks * tick)) << order("SL");
    EXPECT_TRUE(near(order("TP")["limitPrice"], average + 80 * tick)) << order("TP");
    EXPECT_EQ(order("SL")["ocoId"], order("TP")["id"]);

    chooseFirstOfMenu({300, entryY});  // "Set SL"
    EXPECT_TRUE(until([&](const json&) { return near(order("SL")["stopPrice"], at.priceAt(entryY)); })) << order("SL");

    act(move({closeMarkX, at.yOf(average)}) + " click 1");
    ASSERT_TRUE(until([&](const json&) { return position()["qty"] == 0; })) << position();
    EXPECT_TRUE(account()["orders"].empty()) << account()["orders"];
    ASSERT_EQ(account()["fills"].size(), 2u);
    ASSERT_EQ(account()["trades"].size(), 1u);
    const double exit = account()["fills"][0]["price"], commission = account()["commission"];
    EXPECT_EQ(account()["fills"][0]["side"], "sell");
    EXPECT_NEAR(account()["balance"], 50000 + (exit - average) / tick * 5 - 2 * commission, 1e-6);
}

}  // namespace
}  // namespace vmr
