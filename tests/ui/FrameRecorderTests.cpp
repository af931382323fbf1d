// Recording a frame for the render node.
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "chart/ChartView.h"
#include "gpu/FrameRecorder.h"
#include "support/TestTime.h"
#include "tests/chart/AllocationCount.h"
#include "ui/UiWindow.h"
#include "ui/gpu/GlyphAtlas.h"

namespace vmr::test {
namespace {

float firstX(const RecordedFrame& frame, std::size_t draw) {
    const auto& call = frame.draws.at(draw);
    const auto& bytes =
        call.source < 0 ? frame.stream : frame.retained.at(static_cast<std::size_t>(call.source))->bytes;
    float out = 0;
    std::memcpy(&out, bytes.data() + call.byteOffset, sizeof out);
    return out;
}

TEST(FrameRecorder, AFrameHoldsWhatItDrawsFrom) {
    FrameRecorder gpu;
    const ChartVertex kept[3] = {{{1, 0, 0, 1}, {}}};
    const GpuBuffer retained = gpu.makeBuffer(std::as_bytes(std::span(kept)));
    GpuBuffer arena = gpu.makeArena(256);
    const auto write = [&](float x) { std::memcpy(gpu.arenaBytes(arena).data(), &x, sizeof x); };
    gpu.beginFrame(100, 50, 2);
    gpu.setPipeline(Pipeline::flat);
    gpu.setUniforms(std::array{1.0F, 2.0F, 3.0F, 4.0F});
    gpu.draw(Primitive::triangles, retained, 0, 3);
    write(2);
    gpu.draw(Primitive::lines, arena, 0, 2);
    gpu.release(arena);  // grown: what was drawn from it stays
    arena = gpu.makeArena(512);
    write(3);
    gpu.draw(Primitive::triangles, arena, 0, 3);
    gpu.release(retained);
    gpu.draw(Primitive::triangles, arena, 0, 0);
    RecordedFrame frame;
    EXPECT_FALSE(gpu.swapFrame(frame)) << "half a frame is none";
    gpu.endFrame();
    write(9);

    ASSERT_TRUE(gpu.swapFrame(frame));
    ASSERT_EQ(frame.draws.size(), 3U) << "a draw of nothing is none";
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(firstX(frame, i), i + 1);
    EXPECT_EQ(frame.draws[1].primitive, Primitive::lines);
    EXPECT_EQ(frame.uniforms.at(frame.draws[2].uniforms)[3], 4.0F);
    EXPECT_EQ(frame.pixelRatio, 2);
    EXPECT_FALSE(gpu.swapFrame(frame)) << "a repaint draws the same frame again";
    EXPECT_EQ(frame.draws.size(), 3U);
}

TEST(FrameRecorder, RecordingASteadyChartAsksForNoMemory) {
    TestTime time;
    TestQueue queue(time);
    FrameRecorder gpu;
    RecordedFrame shown;
    GlyphAtlas atlas(QStringLiteral("Saira"));
    SessionTime session;
    SceneData data(syntheticBars(5000));
    StillAccount account(data.candles.back().close);
    ChartView view({gpu, atlas, session, time, queue, nullptr, &account});
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
            EXPECT_TRUE(gpu.swapFrame(shown));
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
