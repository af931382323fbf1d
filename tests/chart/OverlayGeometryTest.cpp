// Overlay series as ribbons and candles.
#include "chart/OverlayGeometry.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr Rgba red{1, 0, 0, 1}, blue{0, 0, 1, 1};
constexpr DataOrigin none;

// A quad's ends, to a ten-thousandth.
struct Piece {
    double x0, y0, x1, y1;
    Rgba color;
    bool operator==(const Piece& o) const {
        const auto near = [](double a, double b) { return std::abs(a - b) < 1e-4; };
        return near(x0, o.x0) && near(y0, o.y0) && near(x1, o.x1) && near(y1, o.y1) && color == o.color;
    }
};

void PrintTo(const Piece& p, std::ostream* out) {
    *out << "(" << p.x0 << ", " << p.y0 << ") to (" << p.x1 << ", " << p.y1 << ")";
}

// Checks the make of every quad and gives their ends.
std::vector<Piece> pieces(const std::vector<LineVertex>& verts, float halfWidth) {
    constexpr float sides[] = {1, -1, -1, 1, -1, 1};
    constexpr int ends[] = {0, 0, 1, 0, 1, 1};
    std::vector<Piece> found;
    EXPECT_EQ(verts.size() % 6, 0U);
    for (std::size_t q = 0; q + 6 <= verts.size(); q += 6) {
        const LineVertex& a = verts[q];
        const LineVertex& b = verts[q + 2];
        for (std::size_t i = 0; i < 6; ++i) {
            const LineVertex& end = ends[i] ? b : a;
            const LineVertex expected{
                {end.pos[0], end.pos[1], sides[i], halfWidth}, {a.dir[0], a.dir[1], 0, 0}, a.color};
            EXPECT_EQ(verts[q + i], expected);
        }
        EXPECT_NEAR(a.dir[0], b.pos[0] - a.pos[0], 1e-4);
        EXPECT_NEAR(a.dir[1], b.pos[1] - a.pos[1], 1e-4);
        found.push_back({a.pos[0], a.pos[1], b.pos[0], b.pos[1], a.color});
    }
    return found;
}

std::vector<Piece> line(const std::vector<OvPoint>& points, std::optional<OverlayGeometry::Dash> dash = {}) {
    std::vector<LineVertex> verts;
    OverlayGeometry::polyline(verts, points, 2, red, dash, none);
    return pieces(verts, 1);
}

TEST(OverlayGeometry, LinesBreakAtGapsAndMayBeDashed) {
    EXPECT_THAT(line({{0, 1}, {1, 2}, {2.5, 3}, {4.5, 4}, {4.5, 5}, {4, 6}, {5, 7}}),
                ElementsAre(Piece{0, 1, 1, 2, red}, Piece{1, 2, 2.5, 3, red}, Piece{4, 6, 5, 7, red}));
    EXPECT_THAT(line({{0, 1}, {std::nan(""), 2}, {1, 2}}), IsEmpty());
    // dashes begin anew at each point
    EXPECT_THAT(line({{0, 10}, {1, 20}, {1.2, 30}}, {{0.5, 0.4}}),
                ElementsAre(Piece{0, 10, 0.5, 15, red}, Piece{0.9, 19, 1, 20, red}, Piece{1, 20, 1.2, 30, red}));
}

TEST(OverlayGeometry, FlowChangesColourAtItsBase) {
    const auto flow = [](const std::vector<OvColorPoint>& points) {
        std::vector<LineVertex> verts;
        OverlayGeometry::hfPolyline(verts, points, 2, blue, red, none);
        return pieces(verts, 1);
    };
    const auto at = [](double idx, double v, double base = 100) {
        return OvColorPoint{idx, v, v >= base, base, v - base};
    };
    EXPECT_THAT(flow({at(0, 101), at(1, 103), at(2, 97), at(3, 99), at(5, 101)}),
                ElementsAre(Piece{0, 101, 1, 103, blue}, Piece{1, 103, 1.5, 100, blue}, Piece{1.5, 100, 2, 97, red},
                            Piece{2, 97, 3, 99, red}));
}

TEST(OverlayGeometry, LevelsSpanTheirBars) {
    std::vector<Candle> bars;
    for (int i = 0; i < 6; ++i) bars.push_back({100 + i * 10, 1, 1, 1, 1, 0});
    const auto levels = [&bars](std::vector<OverlayLine> lines, double opacity = 1) {
        std::vector<LineVertex> verts;
        OverlayGeometry::srLines(verts, lines, bars, opacity, none);
        return pieces(verts, 0.5);
    };
    const Rgba gray{0.667F, 0.667F, 0.667F, 1};
    EXPECT_THAT(levels({{7, 0, {}, "", false},
                        {7, 119, 999, "", false},
                        {7, 120, 149, "", false},
                        {7, 150, {}, "", false},  // nothing after the last bar
                        {7, 0, 100, "", false},   // ends at the first bar
                        {std::nan(""), 0, {}, "", false}}),
                ElementsAre(Piece{0, 7, 5, 7, gray}, Piece{1, 7, 5, 7, gray}, Piece{2, 7, 4, 7, gray}));
    EXPECT_THAT(levels({{7, 110, 130, "", true}}),
                ElementsAre(Piece{1, 7, 1.46, 7, gray}, Piece{1.92, 7, 2.38, 7, gray}, Piece{2.84, 7, 3, 7, gray}));
    EXPECT_EQ(levels({{7, 0, {}, "", false}}, 0.25)[0].color[3], 0.25F);
}

TEST(OverlayGeometry, DrawsTheSecondInstrumentsCandles) {
    std::vector<ChartVertex> verts;
    std::vector<LineVertex> borders;
    const std::vector<OvCandle> candles = {{1, 10, 12, 10, 11, 0}, {2, 20, 20, 15, 18, 0}, {3, 5, 5, 5, 5, 0}};
    OverlayGeometry::secondCandles(verts, borders, candles, none);
    const auto box = [&verts](std::size_t n) {
        const ChartVertex& from = verts[n * 6];
        const ChartVertex& to = verts[n * 6 + 2];
        return Piece{from.position[0], from.position[1], to.position[0], to.position[1], from.color};
    };
    const Rgba rising{1, 0.478F, 0, 0.85F}, falling{1, 0.478F, 0, 0.4F}, solid{1, 0.478F, 0, 1};
    ASSERT_EQ(verts.size(), 5U * 6);
    EXPECT_EQ(box(0), (Piece{0.95, 12, 1.05, 11, rising}));  // the upper wick alone: the low is the body's
    EXPECT_EQ(box(1), (Piece{0.7, 11, 1.3, 10, rising}));
    EXPECT_EQ(box(2), (Piece{1.95, 18, 2.05, 15, solid}));
    EXPECT_EQ(box(3), (Piece{1.7, 20, 2.3, 18, falling}));
    EXPECT_EQ(box(4), (Piece{2.7, 5, 3.3, 5, rising}));
    EXPECT_THAT(pieces(borders, 0.5),
                testing::UnorderedElementsAre(Piece{1.7, 20, 2.3, 20, solid}, Piece{1.7, 18, 2.3, 18, solid},
                                              Piece{1.7, 18, 1.7, 20, solid}, Piece{2.3, 18, 2.3, 20, solid}));
}

}  // namespace
}  // namespace vmr::test
