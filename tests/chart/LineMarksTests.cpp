// The account's lines: in which order they lie, and that a press hits what was drawn on top.
#include "chart/LineMarks.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

#include "chart/TradingLinesLayer.h"
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
    TradingLinesLayer layer{glyphs};

    LineMarksTest() {
        width = 1200;
        layer.trading = &trading;
        layer.root = "NQ";
    }
    bool draw() override {
        gpu.beginFrame(width, height, 1);
        arena.beginFrame();
        ScreenFrame frame{{gpu, arena, width, height, 1}, viewport, {}};
        layer.drawBelow(frame);
        const bool animating = layer.drawAbove(frame);
        gpu.endFrame();
        return animating;
    }
    /// The labels' boxes in the order of drawing. Each has a rim and, within it, its ground; the rims are as high as
    /// close marks.
    std::vector<PointRect> boxes() const {
        std::vector<PointRect> list;
        for (const auto& call : recorded.draws) {
            if (call.pipeline != Pipeline::flat) continue;
            const auto corners = recorded.vertices<ChartVertex>(call);
            for (std::size_t i = 0; i + 6 <= corners.size(); i += 6) {
                const auto &a = corners[i].position, &c = corners[i + 2].position;
                const PointRect box{a[0], a[1], double{c[0]} - a[0], double{c[1]} - a[1]};
                if (box.height == LineMarks::closeMarkHeight && box.width > 1) list.push_back(box);
            }
        }
        return list;
    }
};

TEST_F(LineMarksTest, LegsLieLowestThePositionHighestAndTheEarlierOverTheLater) {
    trading.shown = {PositionLine{-3, 400},
                     {{id(1), 500, true, 2, "LMT"}, {id(2), 847.5, false, 12, "STP LMT"}},
                     {{id(1), "SL", 480}, {id(1), "TP", 530}}};
    frame();
    std::vector<std::string> found;
    for (const LineMark& mark : layer.marks().list()) {
        const bool marked = mark.closeMark.width > 0;
        found.push_back(mark.label + (mark.labelled ? "" : " bare") + (marked ? " x" : ""));
        EXPECT_NEAR(mark.y, 855 - mark.price, 1e-9);
    }
    EXPECT_THAT(found, ElementsAre("TP", "SL", "SELL 12 STP LMT bare", "BUY 2 LMT x", "SHORT 3 x"))
        << "a line near the edge has no room for a label";
    EXPECT_EQ(boxes().size(), 4U);
    const PointRect mark = layer.marks().list()[3].closeMark;
    EXPECT_EQ(mark, (PointRect{LineMarks::closeMarkEdge(width) - 16, 347, 18, 16}));
    layer.root.clear();
    frame();
    EXPECT_TRUE(recorded.draws.empty() && layer.marks().list().empty());
}

TEST_F(LineMarksTest, WhatAPressClosesIsWhatWasDrawnOnTop) {
    std::mt19937 random(11);
    const auto below = [&](std::size_t n) { return random() % n; };
    const double column = LineMarks::closeMarkEdge(width) - 7;
    std::size_t closed = 0, covered = 0, dragged = 0;
    for (int round = 0; round < 400; ++round) {
        const auto price = [&] { return priceAt(static_cast<double>(400 + below(40))); };
        trading.shown = {};
        for (std::size_t i = below(4); i-- > 0;) trading.shown.orders.push_back({id(i), price(), i % 2 == 0, 1, "LMT"});
        for (std::size_t i = below(3); i-- > 0;) trading.shown.legs.push_back({id(i), i == 0 ? "SL" : "TP", price()});
        if (below(2) == 0) trading.shown.position = PositionLine{1, price()};
        frame();
        const auto drawn = boxes();
        const auto list = layer.marks().list();
        ASSERT_EQ(drawn.size(), list.size());
        for (double y = 385.25; y < 455; y += 1) {
            std::size_t top = drawn.size();  // of the boxes at the place of the press, beginning with the highest
            while (top-- > 0 && !drawn[top].contains(column, y)) {
            }
            const LineMarks::Hit hit = layer.marks().hit(column, y);
            if (hit.closes) {
                ASSERT_EQ(hit.mark, &list[top]) << y;
                ASSERT_LE(std::abs(hit.mark->y - y), LineMarks::hitTolerance);
                ++closed;
            } else if (top < list.size()) {
                ASSERT_EQ(hit.mark, nullptr) << "through a mark";
                ASSERT_GT(std::abs(list[top].y - y), LineMarks::hitTolerance);
                ++covered;
            }
            const LineMarks::Hit beside = layer.marks().hit(40, y);
            ASSERT_FALSE(beside.closes);
            ASSERT_EQ(beside.mark, layer.marks().draggableAt(40, y));
            if (!beside.mark) continue;
            ++dragged;
            for (const LineMark* over = beside.mark + 1; over < list.data() + list.size(); ++over)
                ASSERT_TRUE(!over->draggable() || std::abs(over->y - y) > LineMarks::hitTolerance);
        }
    }
    EXPECT_TRUE(closed > 3000 && covered > 500 && dragged > 3000) << closed << " " << covered << " " << dragged;
}

}  // namespace
}  // namespace vmr::test
