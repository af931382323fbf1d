// Overlay ribbons and the paired instrument's candles in a recorded frame.
#include <gmock/gmock.h>

#include <algorithm>

#include "tests/chart/ChartScene.h"

namespace vmr::test {
namespace {

using OverlayFrame = ChartScene;

OverlayLists someLists(const std::vector<Candle>& list) {
    OverlayLists out;
    out.origin = {static_cast<double>(list.size() - 1), 20990.0};
    out.lines.resize(30, {{0, 5, 1, 1}, {1, 0, 0, 0}, {1, 1, 0, 1}});
    out.sessionLines.resize(12, {{0, 7, 1, 0.5F}, {1, 0, 0, 0}, {1, 1, 1, 1}});
    out.second.resize(18, {{0, 3, 0, 1}, {1, 0.5F, 0, 1}});
    out.secondBorders.resize(24, {{0, 3, 1, 0.5F}, {1, 0, 0, 0}, {1, 0.5F, 0, 1}});
    out.sessionRevision = 1;
    return out;
}

TEST_F(OverlayFrame, LieBetweenThePriceLineAndTheCandlesAndFollowTheCamera) {
    const auto list = bars(300);
    renderer.setCandles(list);
    renderer.setOverlayGeometry(someLists(list));
    settle();
    std::vector<std::size_t> counts;
    for (const auto& draw : gpu.draws) counts.push_back(draw.count);
    const auto lines = std::find(counts.begin(), counts.end(), 30U);
    ASSERT_NE(lines, counts.end());
    const auto at = static_cast<std::size_t>(lines - counts.begin());
    ASSERT_GE(at, 2U);
    EXPECT_EQ(gpu.draws[at - 1].primitive, Primitive::lines);  // the price line
    EXPECT_THAT(std::vector(lines, lines + 4), testing::ElementsAre(30, 12, 18, 24));
    EXPECT_EQ(gpu.draws[at].pipeline, Pipeline::ribbon);
    EXPECT_EQ(gpu.draws[at + 2].pipeline, Pipeline::flat);
    EXPECT_EQ(gpu.draws[at + 3].pipeline, Pipeline::ribbon);
    EXPECT_EQ(gpu.draws[at + 4].pipeline, Pipeline::flat);  // the candles' bodies
    EXPECT_EQ(gpu.draws[at + 4].count, 299U * 6U);

    // a point at the last bar and a price of 20,995 lies where the camera has it
    const Camera& camera = renderer.camera();
    const auto& u = gpu.draws[at].uniforms;
    const double clipX = -1 + (299 - camera.firstVisible) * 2 / camera.visibleCount;
    const double clipY = -0.9 + (20995 - camera.yMinManual) * 1.8 / (camera.yMaxManual - camera.yMinManual);
    EXPECT_NEAR(0 * u[0] + u[1], clipX, 1e-5);
    EXPECT_NEAR(5 * u[2] + u[3], clipY, 1e-4);
    EXPECT_EQ(u[4], 1400);
    EXPECT_EQ(u[5], 900);
}

TEST_F(OverlayFrame, OnlyWhatDiffersIsUploadedAndAsksForAFrameAndAllGoWhenEmpty) {
    const auto list = bars(300);
    renderer.setCandles(list);
    auto lists = someLists(list);
    renderer.setOverlayGeometry(lists);
    settle();
    const int before = gpu.buffersMade;
    int asked = 0;
    renderer.onNeedsDisplay = [&] { ++asked; };
    renderer.setOverlayGeometry(lists);
    ++lists.sessionRevision;
    renderer.setOverlayGeometry(lists);
    EXPECT_EQ(gpu.buffersMade, before);
    EXPECT_EQ(asked, 0);
    lists.lines.back().pos[1] += 1;
    renderer.setOverlayGeometry(lists);
    EXPECT_EQ(gpu.buffersMade, before + 1);
    lists.sessionLines.back().pos[1] += 1;  // not looked at under the same revision
    renderer.setOverlayGeometry(lists);
    EXPECT_EQ(asked, 1);
    ++lists.sessionRevision;
    renderer.setOverlayGeometry(lists);
    EXPECT_EQ(gpu.buffersMade, before + 2);
    lists.origin.bar += 1;
    renderer.setOverlayGeometry(lists);
    EXPECT_EQ(gpu.buffersMade, before + 2);
    EXPECT_EQ(asked, 3);
    frame();
    const auto drawn = gpu.draws.size();
    OverlayLists none;
    none.sessionRevision = lists.sessionRevision + 1;
    renderer.setOverlayGeometry(none);
    frame();
    EXPECT_EQ(gpu.draws.size(), drawn - 4);
}

}  // namespace
}  // namespace vmr::test
