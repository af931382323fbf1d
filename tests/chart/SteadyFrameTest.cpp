// A frame in steady state asks for no memory.
#include "chart/AxisLayer.h"
#include "chart/BarLabelLayer.h"
#include "tests/chart/AllocationCount.h"
#include "tests/chart/ChartScene.h"
#include "tests/chart/FakeGlyphs.h"
#include "tests/chart/FullScene.h"

namespace vmr::test {
namespace {

TEST(SteadyFrameTest, AsksForNoMemory) {
    TestTime time;
    RecordingGpu gpu;
    FakeGlyphs glyphs;
    SessionTime session;
    AxisLayer axes{glyphs, session};
    BarLabelLayer barLabels{glyphs};
    std::vector<std::function<void()>> tasks;
    tasks.reserve(4);
    ChartRenderer renderer{gpu, time, [&](std::function<void()> task) { tasks.push_back(std::move(task)); }};
    renderer.addScreenLayer(barLabels);
    renderer.addScreenLayer(axes);
    int published = 0;
    renderer.onViewport = [&](double, double, double, double) { ++published; };
    std::size_t labels = 0;
    renderer.onBarLabels = [&](const std::vector<BarLabel>& list) { labels += list.size(); };
    SceneData data(bars(5000));
    data.give(renderer);

    double now = 1000;
    const auto play = [&](int frames) {
        for (int i = 0; i < frames; ++i) {
            data.candles[4999].close += i % 2 == 0 ? 3.25 : -3.25;
            data.strikes[static_cast<std::size_t>(i) % 40].callGex *= i % 80 < 40 ? 1.5 : 1 / 1.5;
            data.give(renderer, false);
            if (i % 3 > 0) renderer.pan(i % 40 < 20 ? -0.7 : 0.7);  // others ease
            if (i % 3 > 0) renderer.zoom(i % 2 == 0 ? 1.01 : 1 / 1.01);
            renderer.drawFrame(1400, 900, 2, now += 1.0 / 120);
            for (auto& task : tasks) task();
            tasks.clear();
        }
    };
    play(400);
    const long before = allocationCount();
    play(400);
    EXPECT_EQ(allocationCount() - before, 0);
    EXPECT_GT(before, 0) << "the counter counts";
    EXPECT_GT(published, 500);
    EXPECT_GT(labels, 1000U);
    EXPECT_TRUE(gpu.faults.empty());
}

}  // namespace
}  // namespace vmr::test
