// What lies in screen space around the chart: axes over many cameras and sizes, and the labels beside the strike bars.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

#include "chart/AxisLayer.h"
#include "chart/AxisScale.h"
#include "chart/BarLabelLayer.h"
#include "tests/chart/ChartScene.h"

namespace vmr::test {
namespace {

struct AxisLayerTest : ChartScene {
    AxisLayer axes{glyphs, session};
    std::mt19937 random{7};

    AxisLayerTest() { renderer.addScreenLayer(axes); }

    double between(double lo, double hi) { return std::uniform_real_distribution(lo, hi)(random); }
    /// A text as drawn, in points.
    struct Drawn {
        double left, top, right, bottom;
        float alpha;
    };
    /// Glyphs gathered into texts: those on one line that stand one pen step from each other, or two over a blank.
    std::vector<Drawn> texts() const {
        std::vector<Drawn> list;
        double previous = 0;
        for (const Draw& call : calls(Pipeline::text, false, Primitive::quads)) {
            const auto vertices = recorded.vertices<TextVertex>(call);
            for (std::size_t i = 0; i < vertices.size(); i += 4) {
                const auto &a = vertices[i].position, &c = vertices[i + 2].position;
                const Drawn glyph{a[0] / pixelRatio, a[1] / pixelRatio, c[0] / pixelRatio, c[1] / pixelRatio,
                                  vertices[i].color.shares()[3]};
                const double step = glyph.left - std::exchange(previous, glyph.left);
                const bool near = (step > 4 && step < 8) || (step > 11.5 && step < 14);
                if (near && !list.empty() && list.back().top == glyph.top)
                    list.back().right = glyph.right;
                else
                    list.push_back(glyph);
            }
        }
        return list;
    }

    /// The countdown's room touches no price and not the last one's box. Gives where it is: beside the box, at an end
    /// of the axis, or nowhere.
    std::string expectRoomForCountdown() const {
        const AxisLayer::Labels& shown = axes.labels();
        const auto &box = shown.lastPrice, &room = shown.countdown;
        const double bottom = PlotArea{width, height}.bottom();
        if (room.to == 0) {
            EXPECT_TRUE(bottom < 18 + 2 * 18 || width < 74 + 18 + 1) << "there is room";
            return "none";
        }
        EXPECT_TRUE(room.from >= 0 && room.to <= bottom && room.to - room.from == 16);
        for (const auto& label : shown.prices) EXPECT_TRUE(label.to <= room.from || room.to <= label.from);
        if (box.to == 0) return room.from < bottom / 2 ? "first" : "last";
        EXPECT_TRUE(room.from >= box.to || room.to <= box.from);
        if (room.from > box.to) return "below";
        EXPECT_GT(box.to + 18, bottom - 2) << "there is room below";
        return "above";
    }

    /// Any bars under any camera in a view of any size.
    void showAnything(int round) {
        const int minutes = std::array{1, 5, 15, 60, 240}[static_cast<std::size_t>(round % 5)];
        auto list = bars(static_cast<std::size_t>(between(1, 1500)));
        std::int64_t at = firstBarTime;
        for (Candle& c : list) {
            c.time = std::exchange(at, at + minutes * 60);
            const bool night = round % 2 == 0 && AxisScale::fmtTime(session, at, false).text() >= "16:00";
            if (night) at += 17 * 3600 + 1800;
        }
        axes.setTimeframe(minutes);
        renderer.setCandles({});
        renderer.setCandles(list);
        width = between(80, 3000);
        height = between(30, 2000);
        pixelRatio = 1 + round / 5 % 4 * 0.25;
        frame();
        if (round % 3 == 0) return;
        renderer.zoom(std::exp(between(-4, 3)));
        renderer.pan(between(-1500, 100));
        renderer.zoomPrice(std::exp(between(-7, 3)));
        renderer.panByPrice(between(-0.6, 0.6) * height, height);
        frame();
    }
};

TEST_F(AxisLayerTest, LabelsNeverMeetEachOtherTheEdgesOrTheTag) {
    std::size_t seen = 0;
    std::map<std::string, int> counted;
    for (int round = 0; round < 1500 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        const bool countdown = round % 4 > 1;
        axes.setCountdown(countdown);
        showAnything(round);
        const auto labels = texts();
        if (countdown) {
            ++counted[expectRoomForCountdown()];
        } else {
            EXPECT_EQ(axes.labels().countdown.to, 0);
        }
        seen += labels.size();
        const double slack = 1.01 / pixelRatio;  // rounding to pixels
        const double right = PlotArea{width, height}.right(), bottom = PlotArea{width, height}.bottom();
        const auto onPriceAxis = [&](const Drawn& d) { return d.left > right && d.bottom < bottom; };
        const bool tagged = !labels.empty() && labels.back().alpha == 1.0F && labels.back().top < bottom;
        for (std::size_t i = 0; i < labels.size(); ++i) {
            const Drawn& a = labels[i];
            EXPECT_TRUE(a.left >= -slack && a.right <= width + slack && a.top >= -slack && a.bottom <= height + slack);
            if (a.bottom > bottom + slack)
                EXPECT_TRUE(a.top >= bottom - slack && a.right <= right + slack) << "time label outside its axis";
            else
                EXPECT_GE(a.left, right - slack) << "price label outside its axis";
            for (std::size_t j = i + 1; j < labels.size(); ++j) {
                const Drawn& b = labels[j];
                EXPECT_TRUE(a.right <= b.left || b.right <= a.left || a.bottom <= b.top || b.bottom <= a.top)
                    << a.left << "," << a.top << " and " << b.left << "," << b.top;
                if (!onPriceAxis(a) || !onPriceAxis(b)) continue;
                EXPECT_GE(std::abs(a.top - b.top), 16 - slack) << "lines of text crowd";
                const bool isTag = tagged && j + 1 == labels.size();  // its box is 18 points high around its text
                EXPECT_GT(std::abs(a.top + a.bottom - b.top - b.bottom) / 2, isTag ? 9 + 3.5 : 0);
            }
        }
    }
    EXPECT_GT(seen, 15000U);
    for (const char* place : {"below", "above", "first", "last", "none"}) EXPECT_GT(counted[place], 0) << place;
}

TEST_F(AxisLayerTest, TimesAreNamedAtTheStepThatFits) {
    const struct {
        const char* name;
        double width, first, count;
        std::vector<std::string> times;
    } cases[] = {
        {"half hours", 1000, 100, 60, {"10:00", "10:30"}},
        {"one of which the plot's edge cuts", 1000, 125, 60, {"10:15", "10:30", "10:45"}},
        {"the first finer step that gives two", 1000, 128, 12, {"10:10", "10:15"}},
        {"no room for a finer step", 250, 125, 60, {"10:30"}},
        {"another day", 1000, 900, 200, {"23:30", "Jun 11", "00:30", "01:00", "01:30", "02:00"}},
        {"a coarser one", 400, 0, 1400, {"12:00", "16:00", "20:00", "Jun 11"}},
    };
    renderer.setCandles(bars(1500));
    for (const auto& [name, points, first, count, times] : cases) {
        SCOPED_TRACE(name);
        width = points;
        frame();
        renderer.mirrorView(first, count);
        frame();
        std::vector<std::string> named;
        for (const auto& tick : axes.labels().timeTexts) named.emplace_back(tick.text.text());
        EXPECT_EQ(named, times);
    }
}

// Bars, prices and their names, all at where the camera of the very frame has them.
TEST_F(AxisLayerTest, TextsAndBarsAgreeInEveryFrameOfAFastGesture) {
    const auto list = bars(300);
    renderer.setCandles(list);
    frame();
    std::size_t named = 0;
    for (int round = 0; round < 240 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        pixelRatio = std::array{1.0, 1.5, 2.0}[static_cast<std::size_t>(round) % 3];
        switch (round / 4 % 4) {
            case 0:
                renderer.pan(between(-9, 8));
                break;
            case 1:
                renderer.zoom(between(0.9, 1.12));
                break;
            case 2:
                renderer.panByPrice(between(-40, 40), height), renderer.zoomPrice(between(0.9, 1.1));
                break;
            default:
                width = between(900, 1600), height = between(500, 1100);
                break;
        }
        frame();
        const Viewport view = renderer.camera().viewport();
        const auto yOf = [&](double price) { return AxisScale::yFor(view, price, height); };
        const Draw closed = candles();
        const std::size_t first = closed.offset / sizeof(CandleVertex) / candleVertices;
        for (const std::size_t k : {first, first + closed.count / candleVertices - 1}) {
            const Box box = body(closed, k);
            EXPECT_NEAR((box.left + box.right) / 2, AxisScale::xForIndex(view, static_cast<double>(k), width), 0.02);
            const auto [low, high] = std::minmax({yOf(list[k].open), yOf(list[k].close)});
            EXPECT_NEAR(std::min(box.top, box.bottom), low, 0.02);
            EXPECT_NEAR(std::max(box.top, box.bottom), high, 0.02);
        }
        const auto drawn = texts();
        for (const auto& [text, at] : axes.labels().priceTexts) {
            std::string price(text.text());
            std::erase(price, ',');
            EXPECT_NEAR(at, yOf(std::stod(price)), 1e-6);
            const double pixel = 1 / pixelRatio;
            EXPECT_TRUE(std::ranges::any_of(drawn, [&, at = at](const Drawn& one) {
                return one.left > PlotArea{width, height}.right() && one.top <= at - 2 && one.bottom >= at + 2 &&
                       std::abs((one.top + one.bottom) / 2 - at) <= 1.5 + pixel;
            })) << text.text();
            ++named;
        }
    }
    EXPECT_GT(named, 1000U);
}

TEST(AxisScale, PlacesAndTicks) {
    const Viewport view{10, 50, 100, 200};
    for (const auto& [price, y] : {std::pair(100.0, 950.0), {150, 500}, {200, 50}, {0, 1850}}) {
        EXPECT_NEAR(AxisScale::yFor(view, price, 1000), y, 1e-9);
        EXPECT_NEAR(AxisScale::priceAtY(view, y, 1000), price, 1e-9);
    }
    EXPECT_TRUE(std::isnan(AxisScale::yFor({0, 1, 5, 5}, 5, 100)) && std::isnan(AxisScale::priceAtY(view, 5, 0)));
    for (const auto& [bar, x] : {std::pair(10.0, 0.0), {35, 250}, {60, 500}, {-10, -200}})
        EXPECT_NEAR(AxisScale::xForIndex(view, bar, 500), x, 1e-9);
    EXPECT_EQ(AxisScale::xForIndex({10, 0, 1, 2}, 35, 500), 0);

    for (const auto& [range, step] : {std::pair(14.0, 1.0), {15, 2}, {30, 5}, {69, 5}, {70, 10}})
        EXPECT_EQ(AxisScale::priceTicks({0, 1, 100, 100 + range}, 500).step, step) << range;
    const auto prices = [](const Viewport& at, double height) {
        const auto ticks = AxisScale::priceTicks(at, height);
        return std::vector<double>(ticks.span().begin(), ticks.span().end());
    };
    EXPECT_EQ(prices({0, 1, 100, 110}, 100), (std::vector<double>{100, 105, 110})) << "two is the least to aim at";
    EXPECT_TRUE(prices({0, 1, 100, 100}, 100).empty() && prices(view, 0).empty() && prices({0, 1, 2, 1}, 9).empty());
    const auto most = prices({0, 1, 100, 300}, 10000);
    EXPECT_TRUE(most.size() == 89 && most.front() == 89 && most.back() == 177) << "after 90 rounds it ends";
}

TEST(AxisScale, TimesOnHalfHours) {
    const auto onTime = bars(200), minuteLate = bars(200, 1);
    struct Case {
        const char* name;
        Viewport view;
        double width;
        std::span<const Candle> bars;
        std::vector<std::size_t> ticks;
    };
    for (const Case& c : {Case{"each", {10.5, 100, 0, 1}, 1000, onTime, {30, 60, 90}},
                          {"only whole ones", {10.5, 100, 0, 1}, 1000, minuteLate, {29, 59, 89}},
                          {"the last bar in view", {20, 100, 0, 1}, 1000, onTime, {30, 60, 90, 120}},
                          {"each fourth", {0, 125, 0, 1}, 125, onTime, {0, 120}},
                          {"past the bars", {150, 100, 0, 1}, 1000, onTime, {150, 180}},
                          {"beyond them", {500, 100, 0, 1}, 1000, onTime, {}},
                          {"no view", {0, 0, 0, 1}, 1000, onTime, {}},
                          {"no bars", {0, 100, 0, 1}, 1000, {}, {}}}) {
        std::vector<std::size_t> ticks;
        AxisScale::timeTickIndices(c.view, c.width, c.bars, 1, ticks);
        EXPECT_EQ(ticks, c.ticks) << c.name;
    }
    for (const auto& [minutes, halfHours] : {std::pair(0.5, 1), {1, 1}, {5, 2}, {60, 16}, {240, 96}, {1440, 96}})
        EXPECT_EQ(AxisScale::timeTickStep({0, 100, 0, 1}, 1000, minutes), halfHours * 1800) << minutes;
}

TEST(AxisScale, PricesAreGrouped) {
    const std::pair<double, const char*> prices[] = {
        {0, "0.00"},           {-0.001, "0.00"},       {999.99, "999.99"},
        {999.999, "1,000.00"}, {-1234.5, "-1,234.50"}, {1234567.891, "1,234,567.89"},
        {NAN, "--"},           {HUGE_VAL, "--"},       {1e15, "1.00e+15"}};
    for (const auto& [price, text] : prices) EXPECT_EQ(AxisScale::fmtPrice(price).text(), text);
}

TEST(BarLabelLayerTest, TextsNeverMeetNorLeaveThePlot) {
    FrameRecorder gpu;
    RecordedFrames recorded;
    FrameArena arena{gpu};
    FakeGlyphs glyphs;
    BarLabelLayer layer{glyphs};
    std::mt19937 random(3);
    const auto between = [&](double lo, double hi) { return std::uniform_real_distribution(lo, hi)(random); };
    std::size_t seen = 0;
    for (int round = 0; round < 300; ++round) {
        std::vector<BarLabel> labels;
        for (int i = 0; i < 60; ++i) {  // each wears its number as its red, so that glyphs tell whose they are
            const auto value = i % 10 == 0 ? std::nullopt : std::optional(between(-9, 9));
            labels.push_back({between(-40, 640), between(-40, 440), value ? "21000.5 " : "Gamma Flip",
                              std::round(between(9, 13)), i % 2 == 0, i / 64.0, 0, 0.5, value});
        }
        const double ratio = round % 2 == 0 ? 1 : 1.5;
        gpu.beginFrame(600, 400, ratio);
        arena.beginFrame();
        ScreenFrame frame{{gpu, arena, 600, 400, ratio}, {}, {}, 0, true, labels};
        layer.drawAbove(frame);
        gpu.endFrame();
        ASSERT_TRUE(recorded.take(gpu));
        const auto corners = recorded.vertices<TextVertex>(recorded.draws.back());
        for (std::size_t i = 0; i < corners.size(); i += 4) {
            const auto &a = corners[i], &c = corners[i + 2];
            for (const float place : a.position) ASSERT_EQ(place, std::round(place)) << "between two pixels";
            if (a.color.b != 128) continue;  // a shadow
            ++seen;
            ASSERT_TRUE(a.position[0] >= -ratio && c.position[0] <= (600 - 74 + 1) * ratio) << round;
            ASSERT_TRUE(a.position[1] >= 0 && c.position[1] <= (400 - 22) * ratio) << round;
            for (std::size_t j = 0; j < corners.size(); j += 4) {
                const auto &b = corners[j], &d = corners[j + 2];
                if (b.color.b != 128 || b.color.r == a.color.r) continue;
                const bool besides = a.position[0] >= d.position[0] || b.position[0] >= c.position[0];
                ASSERT_TRUE(besides || a.position[1] >= d.position[1] || b.position[1] >= c.position[1]) << round;
            }
        }
    }
    EXPECT_GT(seen, 300U * 50) << "most of what fits is drawn";
}

}  // namespace
}  // namespace vmr::test
