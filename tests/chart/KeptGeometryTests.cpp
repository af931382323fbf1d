// What a chart keeps beside its bars: overlay series and levels as ribbons, and markers at their bars.
#include <gmock/gmock.h>

#include <random>
#include <sstream>

#include "chart/Markers.h"
#include "chart/OverlayGeometry.h"
#include "tests/chart/ChartScene.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;

constexpr Rgba red{1, 0, 0, 1}, blue{0, 0, 1, 1};
constexpr DataOrigin none;

// Checks the make of every quad and gives their ends, with "on" where a quad joins the next.
std::vector<std::string> pieces(const std::vector<LineVertex>& verts, float halfWidth) {
    constexpr float sides[segmentVertices] = {1, -1, -1, 1}, ends[segmentVertices] = {0, 0, -1, 1};
    constexpr float nothing[2] = {0, 0};
    const auto joins = [](const LineVertex& vertex) { return vertex.joined[0] != 0 || vertex.joined[1] != 0; };
    std::vector<std::string> found;
    EXPECT_EQ(verts.size() % segmentVertices, 0U);
    for (std::size_t q = 0; q + segmentVertices <= verts.size(); q += segmentVertices) {
        const LineVertex &a = verts[q], &b = verts[q + 2];
        const bool on = joins(b), follows = q > 0 && joins(verts[q - 1]);
        for (std::size_t i = 0; i < segmentVertices; ++i) {
            const auto& end = i < 2 ? a.pos : b.pos;
            const auto& other = i < 2 ? (follows ? verts[q - 1].dir : nothing) : on ? verts.at(q + 4).dir : nothing;
            const LineVertex expected{{end[0], end[1]},
                                      {a.dir[0], a.dir[1]},
                                      {other[0], other[1]},
                                      sides[i] * halfWidth + ends[i] * segmentEnd,
                                      a.color};
            EXPECT_EQ(verts[q + i], expected);
        }
        EXPECT_NEAR(a.dir[0], b.pos[0] - a.pos[0], 1e-4);
        EXPECT_NEAR(a.dir[1], b.pos[1] - a.pos[1], 1e-4);
        std::ostringstream text;
        text << (a.color == red ? "red " : a.color == blue ? "blue " : "");
        text << a.pos[0] << " " << a.pos[1] << " to " << b.pos[0] << " " << b.pos[1] << (on ? " on" : "");
        found.push_back(text.str());
    }
    return found;
}

TEST(OverlayGeometry, LinesJoinBreakAtGapsAndChangeColourAtTheirBase) {
    std::vector<LineVertex> line, flow;
    const std::vector<OvPoint> gaps{{0, 1}, {1, 2}, {2.5, 3}, {4.5, 4}, {4.5, 5}, {4, 6}, {5, 7}};
    for (std::size_t i = 0; i < gaps.size(); ++i) OverlayGeometry::lineTo(line, gaps, i, 2, red, none);
    EXPECT_THAT(pieces(line, 1), ElementsAre("red 0 1 to 1 2 on", "red 1 2 to 2.5 3", "red 4 6 to 5 7"));
    const auto at = [](double idx, double v) { return OvColorPoint{idx, v, v >= 100, 100, v - 100}; };
    const std::vector<OvColorPoint> crossing{at(0, 101), at(1, 103), at(2, 97), at(3, 99), at(5, 101)};
    for (std::size_t i = 0; i < crossing.size(); ++i) OverlayGeometry::flowTo(flow, crossing, i, 2, blue, red, none);
    EXPECT_THAT(pieces(flow, 1), ElementsAre("blue 0 101 to 1 103 on", "blue 1 103 to 1.5 100 on",
                                             "red 1.5 100 to 2 97 on", "red 2 97 to 3 99"));
}

TEST(OverlayGeometry, LevelsSpanTheirBars) {
    std::vector<Candle> list;
    for (int i = 0; i < 6; ++i) list.push_back({100 + i * 10, 1, 1, 1, 1, 0});
    const OverlayLine lines[] = {{7, 0, {}, "", false},
                                 {7, 119, 999, "", false},
                                 {7, 120, 149, "", false},
                                 {7, 150, {}, "", false},  // nothing after the last bar
                                 {7, 0, 100, "", false},   // ends at the first bar
                                 {std::nan(""), 0, {}, "", false},
                                 {8, 110, 130, "", true},
                                 {7, 140, {}, "", false}};  // where the last one without dashes ended
    std::vector<LineVertex> verts, dashed;
    OverlayGeometry::srLines(verts, dashed, lines, list, 0.25, none);
    EXPECT_THAT(pieces(verts, 0.5), ElementsAre("0 7 to 5 7", "1 7 to 5 7", "2 7 to 4 7 on", "4 7 to 5 7"));
    EXPECT_THAT(pieces(dashed, 0.5), ElementsAre("1 8 to 3 8"));
    EXPECT_EQ(verts[0].color.a, 64);
}

TEST(Markers, EachMinuteFindsItsBarInAnyOrderAndWhatHasNoPlaceIsLeftOut) {
    std::vector<Candle> candles = bars(400);
    candles.erase(candles.begin() + 120, candles.begin() + 180);  // an hour without trade
    std::mt19937 random(7);
    std::uniform_int_distribution<std::int64_t> seconds(-4000, 28000);
    for (const bool ascending : {true, false}) {
        std::vector<TrianglePt> triangles;
        for (int i = 0; i < 3000; ++i) triangles.push_back({firstBarTime + seconds(random), 512, 1, 1});
        if (ascending) std::ranges::sort(triangles, {}, &TrianglePt::minuteTs);
        triangles.push_back({firstBarTime, 512, 1, 0});
        triangles.push_back({firstBarTime, HUGE_VAL, 1, 1});
        const BubblePt nowhere{firstBarTime, std::nan(""), 1, true, 0};
        Markers::Lists lists;
        const auto& out = lists.triangles;
        Markers::build(lists, {{&nowhere, 1}, triangles, candles, 41.0, {}, {399, 21000}});
        ASSERT_EQ(out.size(), 3000U * triangleVertices);
        for (std::size_t i = 0; i < 3000; ++i) {
            std::size_t bar = 0;
            while (bar + 1 < candles.size() && candles[bar + 1].time <= triangles[i].minuteTs) ++bar;
            ASSERT_EQ(out[i * triangleVertices].center[0], static_cast<float>(bar) - 399.0F) << triangles[i].minuteTs;
        }
    }
}

TEST(Markers, BubblesFadeByTheirRankAndTrianglesGrowByTheirSize) {
    const std::vector<Candle> candles = bars(2);
    const std::vector<BubblePt> bubbles{
        {firstBarTime, 512, 0.5, true, 0}, {firstBarTime, 513, 0.5, true, 1}, {firstBarTime, 514, 0.5, true, 2}};
    Markers::Lists lists;
    const auto& [out, triangles] = lists;
    const TrianglePt falling{firstBarTime, 512, -5, 10};
    Markers::build(lists, {bubbles, {&falling, 1}, candles, 41.0, {}, {}});
    ASSERT_EQ(out.size(), 3 * discVertices);
    ASSERT_EQ(triangles.size(), triangleVertices);
    EXPECT_EQ(triangles[0].radius, 2 + 18 / 2);
    EXPECT_TRUE(triangles[0].isDown());
    EXPECT_NEAR(out[4].alpha / out[0].alpha, 0.7, 1e-6);
    EXPECT_NEAR(out[8].alpha / out[0].alpha, 0.5, 1e-6);
}

}  // namespace
}  // namespace vmr::test
