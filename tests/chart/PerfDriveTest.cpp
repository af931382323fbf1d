#include "chart/PerfDrive.h"

#include <gmock/gmock.h>

#include "chart/OverlayLists.h"
#include "tests/chart/ChartScene.h"

namespace vmr::test {
namespace {

using testing::Contains;
using testing::HasSubstr;

struct PerfDriveTest : ChartScene {
    std::vector<std::string> lines;
    Perf perf{time, [this](const std::string& line) { lines.push_back(line); }};
    SessionTime session;
    ChartInput input{renderer, session, time, queue, &perf};
    int ended = 0;

    PerfDriveTest() {
        renderer.perf = &perf;
        input.setSize(width, height);
        renderer.setCandles(bars(3000));
        renderer.mirrorView(1000, 240);
        renderer.mirrorPrice(20900, 21100);
        frame();
    }
    void addOverlays() {
        OverlayLists lists;
        lists.lines.resize(12);
        lists.second.resize(18);
        renderer.setOverlayGeometry(lists);
    }
    std::unique_ptr<PerfDrive> drive(const BenchSettings& settings) {
        return std::make_unique<PerfDrive>(
            renderer, input, queue, perf, settings, [this](const std::string& line) { lines.push_back(line); },
            [this] { ++ended; });
    }
};

TEST_F(PerfDriveTest, MovesToAndFroOnceTheOverlaysAreThereAndStaysInPlace) {
    auto driving = drive({.drive = true});
    time.advance(3);
    EXPECT_EQ(renderer.camera().firstVisible, 1000);
    addOverlays();
    double least = 1000, greatest = 1000;
    for (int i = 0; i < 2000; ++i) {
        time.advance(0.008);
        least = std::min(least, renderer.camera().firstVisible);
        greatest = std::max(greatest, renderer.camera().firstVisible);
    }
    EXPECT_GE(least, 995);
    EXPECT_LE(greatest, 1065);
    EXPECT_GT(greatest, 1030);
    EXPECT_TRUE(renderer.interacting());
    driving.reset();
    const double there = renderer.camera().firstVisible;
    time.advance(10);
    EXPECT_EQ(renderer.camera().firstVisible, there);
}

TEST_F(PerfDriveTest, MeasuresAfterTheWarmUpAndEnds) {
    addOverlays();
    auto driving = drive({.bench = true, .warmup = 4, .secs = 2});
    time.advance(5);
    EXPECT_FALSE(input.liveRefresh());
    frame();
    frame();
    time.advance(2);
    EXPECT_EQ(ended, 1);
    EXPECT_THAT(lines, Contains("[bench] dataset: candles=3000 visible=240 strikes=0 bubbles=0 triangles=0 "
                                "overlayLineVerts=12 2ndVerts=18"));
    EXPECT_THAT(lines, Contains(HasSubstr("[bench] DONE  2.0s  frames=2")));
}

}  // namespace
}  // namespace vmr::test
