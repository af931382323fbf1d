// The oscillator below a chart: which values are drawn and where, its labels, and the frame as it is recorded.
#include <gmock/gmock.h>

#include <map>

#include "chart/OscColumns.h"
#include "chart/OscillatorPane.h"
#include "tests/chart/ChartScene.h"

namespace vmr::test {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pointwise;

constexpr std::int64_t start = 1781092800;  // a whole number of hours

/// Bars of `minutes` from `start` on, without those whose numbers are left out.
std::vector<Candle> barsWithout(int count, std::int64_t minutes, const std::vector<int>& out = {}) {
    std::vector<Candle> list;
    for (int i = 0; i < count; ++i)
        if (std::ranges::find(out, i) == out.end()) list.push_back({start + i * minutes * 60, 1, 2, 0, 1, 1});
    return list;
}
OscPt at(int minute, double value) { return {start + minute * 60, value}; }

struct OscillatorTest : RecordedScene {
    OscLines lines;
    std::vector<Candle> candles = barsWithout(100, 1);
    OscContent content{&lines};
    double timeframe = 1;
    Viewport view{0, 100, 0, 1};
    OscillatorPane pane{gpu, glyphs};

    OscillatorTest() { width = 1000, height = 200; }
    OscInput input() { return {content, candles, timeframe, view}; }
    bool draw() override { return pane.record(input(), width, height, pixelRatio); }
    /// A series as it is drawn, its lines one after the other.
    std::vector<OscFacts::Line> drawn(std::string_view name) {
        for (const auto& [series, list] : OscillatorPane::facts(input(), height).lines)
            if (series == name) return list;
        return {};
    }
    RecordedFrames::DrawCall call(Pipeline pipeline) const {
        for (const auto& one : recorded.draws)
            if (!one.opaque && one.pipeline == pipeline) return one;
        return {};
    }
};

TEST_F(OscillatorTest, OneValueABarAtTheBarsOwnPlace) {
    candles = barsWithout(3, 5);
    timeframe = 5;
    lines.nq = {{start - 1, 9}, at(1, 2), {start + 299, 5}, {start + 300, 6}, at(15, 9)};
    EXPECT_THAT(drawn("nq"), ElementsAre(OscFacts::Line{{0, 5}, {1, 6}})) << "the last of each, none before and after";
    const auto bars = barsWithout(5, 1, {2});
    for (const std::size_t near : {0, 2, 9}) {
        EXPECT_EQ(OscGeometry::indexFor(bars, start + 60 + 59, 60, near), 1U);
        EXPECT_EQ(OscGeometry::indexFor(bars, start + 180, 60, near), 2U);
        EXPECT_EQ(OscGeometry::indexFor(bars, start + 120, 60, near), std::nullopt) << near;
    }
}

// Point by point, with a division and a search for each.
std::vector<OscFacts::Line> plainly(const OscInput& input, const std::vector<OscPt>& points, bool breaks) {
    std::vector<OscFacts::Line> lines;
    const auto range = *OscGeometry::visibleRange(input);
    const std::int64_t seconds = OscGeometry::barSeconds(input.timeframe);
    const OscPt* before = nullptr;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const OscPt& point = points[i];
        const auto bar = OscGeometry::indexFor(input.candles, point.t, seconds);
        const bool last = i + 1 == points.size() || points[i + 1].t / seconds != point.t / seconds;
        if (!last || !bar || *bar < range.first || *bar > range.last || !std::isfinite(point.v)) continue;
        if (!before || (breaks && point.t - before->t > range.maxGap)) lines.emplace_back();
        lines.back().emplace_back(static_cast<double>(*bar), point.v);
        before = &point;
    }
    return lines;
}

TEST_F(OscillatorTest, RunsOfPointsAreWhatThePointsAreOneByOne) {
    std::uint32_t state = 7;
    const auto chance = [&](unsigned of) { return ((state = state * 1664525U + 1013904223U) >> 16U & 255U) < of; };
    for (int round = 0; round < 200 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        const int minutes = std::array{1, 1, 2, 5}[static_cast<std::size_t>(round) % 4];
        timeframe = minutes;
        std::vector<int> out;
        for (int i = 0; i < 400; ++i)
            if (chance(8)) out.push_back(i);
        candles = barsWithout(400, minutes, out);
        lines.vix.clear();
        for (std::int64_t t = start - 600; t < start + 410 * minutes * 60; t += chance(4) ? 37 : 60) {
            if (chance(6)) t += 60 * (chance(128) ? 3 : 40);
            lines.vix.push_back({t, chance(3) ? NAN : static_cast<double>(state >> 24U) - 128});
        }
        lines.nq = lines.vix;
        const double count = round % 3 ? 30 + round : 390;
        view = {-20.5 + 2 * round, count, 0, 1};
        EXPECT_EQ(drawn("vix"), plainly(input(), lines.vix, true));
        EXPECT_EQ(drawn("nq"), plainly(input(), lines.nq, false));

        // in columns each has its highest and lowest, in their order
        const double wide = 1.5 + round % 7;
        OscFacts::Line seen, expected;
        OscColumns columns(view.first, wide, [&](double bar, double value, bool) { seen.emplace_back(bar, value); });
        const auto range = *OscGeometry::visibleRange(input());
        OscGeometry::eachRun(lines.nq, input(), range, false,
                             [&](std::size_t bar, auto run, bool begins) { columns.add(bar, run, begins); });
        columns.flush();
        std::map<double, OscFacts::Line> byColumn;
        for (const auto& line : plainly(input(), lines.nq, false))
            for (const auto& point : line) byColumn[std::floor((point.first - view.first) / wide)].push_back(point);
        for (const auto& [column, points] : byColumn) {
            const auto value = [](const auto& point) { return point.second; };
            const auto low = *std::ranges::min_element(points, {}, value);
            const auto high = *std::ranges::max_element(points, {}, value);
            expected.push_back(std::min(low, high));
            if (low != high) expected.push_back(std::max(low, high));
        }
        EXPECT_EQ(seen, expected);
    }
}

TEST_F(OscillatorTest, OnlyWhatIsInViewAndTwoBarsMoreIsDrawn) {
    for (int i = 0; i < 100; ++i) lines.net.push_back(at(i, i));
    view = {40.9, 20, 0, 1};
    ASSERT_EQ(drawn("net").size(), 1U);
    EXPECT_EQ(drawn("net")[0].front(), std::pair(38.0, 38.0));
    EXPECT_EQ(drawn("net")[0].back(), std::pair(62.0, 62.0));
    view = {-30, 20, 0, 1};
    EXPECT_THAT(drawn("net"), ElementsAre(OscFacts::Line{{0, 0}}));
    candles.resize(1);
    EXPECT_THAT(drawn("net"), IsEmpty());
}

TEST_F(OscillatorTest, ALongTimeWithoutAPointEndsTheLinesThatBreak) {
    const struct {
        double timeframe;
        int gap;  // minutes
        std::size_t pieces;
    } cases[] = {{1, 30, 1}, {1, 31, 2}, {5, 30, 1}, {5, 35, 2}, {10, 40, 1}, {10, 50, 2}};
    for (const auto& [minutes, gap, pieces] : cases) {
        SCOPED_TRACE(gap);
        timeframe = minutes;
        candles = barsWithout(100, static_cast<std::int64_t>(minutes));
        for (const OscSeries& series : oscSeries) lines.*series.points = {at(10, 1), at(10 + gap, 2)};
        for (const char* breaks : {"vix", "call", "put", "net"}) EXPECT_EQ(drawn(breaks).size(), pieces) << breaks;
        for (const char* bridged : {"nq", "es"}) EXPECT_EQ(drawn(bridged).size(), 1U) << bridged;
    }
}

TEST(OscillatorLabels, MoveApartWithinThePaneAndTheTopWins) {
    const struct {
        const char* name;
        double height;
        std::vector<double> wanted, y;
    } cases[] = {
        {"none", 200, {}, {}},
        {"apart", 200, {40, 120, 60}, {40, 60, 120}},
        {"five close", 200, {102, 100, 104, 101, 103}, {100, 120, 140, 160, 180}},
        {"five close, low", 200, {120, 121, 122, 123, 124}, {109, 129, 149, 169, 189}},
        {"above the pane", 200, {-33, 60}, {11, 104}},
        {"below it", 200, {250}, {189}},
        {"seven in 100", 100, {50, 50, 50, 50, 50, 50, 50}, {11, 31, 51, 71, 91, 111, 131}},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.name);
        std::vector<OscGeometry::Label> labels;
        for (const double y : one.wanted) labels.push_back({0, 0, y, y});
        OscGeometry::spread(labels, one.height);
        std::vector<double> y;
        for (const auto& label : labels) y.push_back(label.y);
        EXPECT_THAT(y, Pointwise(DoubleNear(1e-9), one.y));
    }
}

TEST_F(OscillatorTest, LegendAndLabelsNameWhatIsShown) {
    const auto facts = [this] { return OscillatorPane::facts(input(), height); };
    EXPECT_EQ(facts().notice, "Waiting for oscillator data");
    lines.nq = {at(0, 50), at(1, -0.4)};
    lines.es = {at(0, 99.5)};
    lines.put = {at(0, 200)};
    EXPECT_EQ(facts().notice, "");
    EXPECT_THAT(facts().legend, ElementsAre("NQ 0", "ES 100", "VIX --", "CALL --", "PUT 200", "NET --"));
    ASSERT_EQ(facts().labels.size(), 3U);
    const auto top = facts().labels[0], last = facts().labels[2];
    EXPECT_EQ(top.text, "200.00");
    EXPECT_NEAR(top.wanted, -33.33, 0.01);
    EXPECT_EQ(top.y, 11) << "pulled back inside";
    EXPECT_EQ(last.text, "-0.40");

    content.single = true;
    content.primaryTitle = "AAPL";
    content.shown[2] = false;
    EXPECT_THAT(facts().legend, ElementsAre("AAPL 0", "CALL --", "PUT 200", "NET --"));
    EXPECT_EQ(facts().labels.size(), 2U);
    EXPECT_THAT(drawn("es"), IsEmpty());
    content.lines = nullptr;
    EXPECT_EQ(facts().notice, "No oscillator for this symbol");
}

TEST_F(OscillatorTest, ALineCurvesThroughTheMiddlesFromItsFirstPointToItsLast) {
    lines.vix = {at(10, 0), at(20, 120), at(30, -120), at(31, -120)};
    frame();
    const auto ribbon = call(Pipeline::ribbon);
    std::vector<std::array<double, 2>> spots;  // where segments begin, and the end
    const auto vertices = recorded.vertices<LineVertex>(ribbon);
    for (std::size_t i = 0; i < vertices.size(); i += segmentVertices)
        spots.push_back(recorded.screen(ribbon, vertices[i].pos[0], vertices[i].pos[1]));
    spots.push_back(recorded.screen(ribbon, vertices.back().pos[0], vertices.back().pos[1]));
    const auto isAt = [](double x, double y) { return ElementsAre(DoubleNear(x, 0.01), DoubleNear(y, 0.01)); };
    EXPECT_THAT(spots.front(), isAt(100, 100));
    EXPECT_THAT(spots[1], isAt(150, 60)) << "straight to the first middle";
    EXPECT_THAT(spots, testing::Contains(isAt(250, 100)));
    EXPECT_THAT(spots, testing::Contains(isAt(305, 180)));
    EXPECT_THAT(spots.back(), isAt(310, 180));
    for (const auto& [x, y] : spots) {
        EXPECT_TRUE(y >= 20 && y <= 180) << "beyond no value";
        if (x > 150 && x < 250) {
            const double t = (x - 150) / 100;  // the curve that bends to (200, 20)
            EXPECT_NEAR(y, 60 * (1 - t) * (1 - t) + 40 * t * (1 - t) + 100 * t * t, 0.2);
        }
    }
    for (std::size_t i = segmentVertices; i < vertices.size(); i += segmentVertices)
        EXPECT_NE(vertices[i].joined[0], 0) << "segment " << i / segmentVertices << " joins the one before";
    EXPECT_EQ(vertices[0].halfWidth(), 1);
    EXPECT_EQ(vertices[0].color, Rgba8(Rgba({0, 1, 1, 1})));
    const auto caps = recorded.vertices<MarkerVertex>(call(Pipeline::disc));
    ASSERT_EQ(caps.size(), 2 * discVertices);
    EXPECT_EQ(caps[0].center[0], 100);
    EXPECT_EQ(caps[discVertices].center[0], 310);
}

TEST_F(OscillatorTest, AFrameHoldsGridLinesAndLabelsAndNothingWithoutBars) {
    for (const OscSeries& series : oscSeries)
        for (int i = 0; i < 100; ++i)
            (lines.*series.points).push_back(at(i, 20.0 * static_cast<double>(&series - oscSeries.data()) + i % 7));
    frame();
    std::vector<float> gridY;
    for (const auto& one : recorded.draws)
        if (!one.opaque && one.pipeline == Pipeline::dashed)
            for (const auto& vertex : recorded.vertices<LineVertex>(one))
                if (vertex.beside == vertex.halfWidth()) gridY.push_back(vertex.pos[1]);
    EXPECT_THAT(gridY, ElementsAre(46.5, 153.5, 100.5)) << "on whole pixels at 80, -80 and 0";
    const auto boxes = recorded.vertices<RoundVertex>(call(Pipeline::rounded));
    ASSERT_EQ(boxes.size() % 4, 0U);
    const auto& first = boxes[0];
    EXPECT_EQ(std::max(first.corner[0], first.opposite[0]), 999);
    EXPECT_EQ(std::abs(first.corner[1] - first.opposite[1]), 18);
    EXPECT_EQ(first.color, Rgba8(oscSeries[5].color)) << "the highest";

    const std::size_t many = recorded.vertices<LineVertex>(call(Pipeline::ribbon)).size();
    candles = barsWithout(20000, 1);
    for (const OscSeries& series : oscSeries)
        for (int i = 100; i < 20000; ++i) (lines.*series.points).push_back(at(i, i % 97));
    view = {0, 20000, 0, 1};
    frame();
    const auto dense = recorded.vertices<LineVertex>(call(Pipeline::ribbon));
    EXPECT_LE(dense.size(), 6 * 1000 * segmentVertices) << "two places in the width of a line";
    EXPECT_GT(dense.size(), many);
    const auto [low, high] =
        std::ranges::minmax_element(dense, {}, [](const LineVertex& vertex) { return vertex.pos[1]; });
    EXPECT_NEAR(low->pos[1], OscGeometry::yFor(105, 200), 1) << "no extreme is lost";
    EXPECT_NEAR(high->pos[1], OscGeometry::yFor(0, 200), 1);

    candles.resize(1);
    frame();
    EXPECT_EQ(recorded.draws.size(), 1U) << "the ground alone";
}

}  // namespace
}  // namespace vmr::test
