// Recording a frame for the render node.
#include <gtest/gtest.h>

#include "tests/chart/AllocationCount.h"
#include "ui/CpuChart.h"
#include "ui/UiWindow.h"

namespace vmr::test {
namespace {

TEST(FrameRecorder, RecordingASteadyChartAsksForNoMemory) {
    RecordedFrame shown;
    SceneData data(syntheticBars(5000));
    StillAccount account(data.candles.back().close);
    CpuChart cpu(&account);
    ChartView& view = cpu.view;
    std::size_t published = 0, letters = 0;
    const auto following = view.viewportState()->changed.connect([&] { ++published; });
    ChartContent content = data.content();
    view.setContent(content);
    const auto play = [&](int frames) {
        for (int i = 0; i < frames; ++i) {
            data.candles.back().close += i % 2 == 0 ? 3.25 : -3.25;
            data.strikes[static_cast<std::size_t>(i) % 40].callGex *= i % 80 < 40 ? 1.5 : 1 / 1.5;
            ++content.revisions.candles;
            ++content.revisions.strikes;
            view.setContent(content);
            if (i % 3 > 0) view.renderer().pan(i % 40 < 20 ? -0.7 : 0.7);  // others ease
            if (i % 3 > 0) view.renderer().zoom(i % 2 == 0 ? 1.01 : 1 / 1.01);
            view.record(1400, 900, 1.5, 1000 + i / 120.0);
            EXPECT_TRUE(cpu.gpu.swapFrame(shown));
            for (const auto& draw : shown.draws)
                if (draw.pipeline == Pipeline::text) letters += draw.vertexCount / 4;
        }
    };
    play(400);
    const long before = allocationCount();
    play(400);
    EXPECT_EQ(allocationCount() - before, 0);
    EXPECT_GT(before, 0) << "the counter counts";
    EXPECT_GT(published, 500U);
    EXPECT_GT(letters, 800U * 100) << "labels, the account's lines and axes";
    EXPECT_GT(shown.draws.size(), 16U);
}

}  // namespace
}  // namespace vmr::test
