// Recording a frame for the render node.
#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "chart/AxisLayer.h"
#include "chart/BarLabelLayer.h"
#include "gpu/FrameRecorder.h"
#include "tests/chart/AllocationCount.h"
#include "ui/UiWindow.h"
#include "ui/gpu/GlyphAtlas.h"

namespace vmr::test {
namespace {

TEST(FrameRecorder, RecordingASteadyChartAsksForNoMemory) {
    SystemClock clock;
    FrameRecorder gpu;
    RecordedFrame shown;
    GlyphAtlas atlas(QStringLiteral("Saira"));
    SessionTime session;
    AxisLayer axes(atlas, session);
    BarLabelLayer barLabels(atlas);
    std::function<void()> task;
    ChartRenderer renderer(gpu, clock, [&](std::function<void()> posted) { task = std::move(posted); });
    renderer.addScreenLayer(barLabels);
    renderer.addScreenLayer(axes);
    std::size_t published = 0, labels = 0;
    renderer.onViewport = [&](double, double, double, double) { ++published; };
    renderer.onBarLabels = [&](const std::vector<BarLabel>& list) { labels += list.size(); };
    SceneData data(syntheticBars(5000));
    data.give(renderer);
    const auto play = [&](int frames) {
        for (int i = 0; i < frames; ++i) {
            data.candles.back().close += i % 2 == 0 ? 3.25 : -3.25;
            data.strikes[static_cast<std::size_t>(i) % 40].callGex *= i % 80 < 40 ? 1.5 : 1 / 1.5;
            data.give(renderer, false);
            if (i % 3 > 0) renderer.pan(i % 40 < 20 ? -0.7 : 0.7);  // others ease
            if (i % 3 > 0) renderer.zoom(i % 2 == 0 ? 1.01 : 1 / 1.01);
            renderer.drawFrame(1400, 900, 1.5, 1000 + i / 120.0);
            EXPECT_TRUE(gpu.swapFrame(shown));
            if (task) std::exchange(task, nullptr)();
        }
    };
    play(400);
    const long before = allocationCount();
    play(400);
    EXPECT_EQ(allocationCount() - before, 0);
    EXPECT_GT(before, 0) << "the counter counts";
    EXPECT_GT(published, 500U);
    EXPECT_GT(labels, 1000U);
    EXPECT_GT(shown.draws.size(), 16U);
}

}  // namespace
}  // namespace vmr::test
