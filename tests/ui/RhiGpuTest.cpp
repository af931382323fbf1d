// Recording a frame for the render node.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <functional>
#include <memory>

#include "base/Clock.h"
#include "chart/AxisLayer.h"
#include "chart/ChartRenderer.h"
#include "market/SessionTime.h"
#include "tests/chart/AllocationCount.h"
#include "ui/GlyphAtlas.h"
#include "ui/RhiGpu.h"
#include "ui/SyntheticBars.h"

namespace vmr::test {
namespace {

std::array<ChartVertex, 3> triangle(float x) {
    std::array<ChartVertex, 3> out{};
    for (auto& vertex : out) vertex.position[0] = x;
    return out;
}

float firstX(const RecordedFrame& frame, std::size_t draw) {
    const auto& call = frame.draws.at(draw);
    const auto& bytes =
        call.source < 0 ? frame.stream : frame.retained.at(static_cast<std::size_t>(call.source))->bytes;
    float out = 0;
    std::memcpy(&out, bytes.data() + call.byteOffset, sizeof out);
    return out;
}

TEST(RhiGpu, AFrameHoldsWhatItDrawsFrom) {
    RhiGpu gpu;
    const auto kept = triangle(1);
    const GpuBuffer retained = gpu.makeBuffer(std::as_bytes(std::span(kept)));
    GpuBuffer arena = gpu.makeArena(256);
    const auto write = [&](GpuBuffer to, float x) {
        const auto vertices = triangle(x);
        std::memcpy(gpu.arenaBytes(to).data(), vertices.data(), sizeof vertices);
    };
    gpu.beginFrame(100, 50, 2);
    gpu.setPipeline(Pipeline::flat);
    gpu.setUniforms(std::array{1.0F, 2.0F, 3.0F, 4.0F});
    gpu.draw(Primitive::triangles, retained, 0, 3);
    write(arena, 2);
    gpu.draw(Primitive::lines, arena, 0, 2);
    gpu.release(arena);  // grown: what was drawn from it stays
    arena = gpu.makeArena(512);
    write(arena, 3);
    gpu.draw(Primitive::triangles, arena, 0, 3);
    gpu.release(retained);
    gpu.draw(Primitive::triangles, arena, 0, 0);
    gpu.endFrame();
    write(arena, 9);

    RecordedFrame frame;
    ASSERT_TRUE(gpu.swapFrame(frame));
    ASSERT_EQ(frame.draws.size(), 3U) << "a draw of nothing is none";
    EXPECT_EQ(firstX(frame, 0), 1);
    EXPECT_EQ(firstX(frame, 1), 2);
    EXPECT_EQ(firstX(frame, 2), 3);
    EXPECT_EQ(frame.draws[1].primitive, Primitive::lines);
    EXPECT_EQ(frame.uniforms.at(frame.draws[2].uniforms)[3], 4.0F);
    EXPECT_EQ(frame.pixelRatio, 2);
    EXPECT_FALSE(gpu.swapFrame(frame)) << "a repaint draws the same frame again";
    EXPECT_EQ(frame.draws.size(), 3U);
}

TEST(RhiGpu, OnlyTheNewestWholeFrameIsGivenAway) {
    RhiGpu gpu;
    const GpuBuffer arena = gpu.makeArena(96);
    for (const int draws : {1, 2}) {
        gpu.beginFrame(1, 1, 1);
        for (int i = 0; i < draws; ++i) gpu.draw(Primitive::triangles, arena, 0, 3);
        gpu.endFrame();
    }
    RecordedFrame frame;
    ASSERT_TRUE(gpu.swapFrame(frame));
    EXPECT_EQ(frame.draws.size(), 2U);
    gpu.beginFrame(1, 1, 1);
    EXPECT_FALSE(gpu.swapFrame(frame)) << "half a frame is none";
}

TEST(RhiGpu, RecordingASteadyChartAsksForNoMemory) {
    SystemClock clock;
    RhiGpu gpu;
    GlyphAtlas atlas(QStringLiteral("Saira"));
    SessionTime session;
    AxisLayer axis(atlas, session);
    ChartRenderer renderer(gpu, clock, [](const std::function<void()>&) {});
    renderer.addScreenLayer(axis);
    auto bars = syntheticBars(1000);
    RecordedFrame shown;
    const auto play = [&](int frames) {
        for (int i = 0; i < frames; ++i) {
            bars.back().close += i % 2 == 0 ? 3.25 : -3.25;
            renderer.setCandles(bars);
            renderer.pan(i % 40 < 20 ? -0.7 : 0.7);
            renderer.drawFrame(1400, 900, 1.5, 1000 + i / 120.0);
            EXPECT_TRUE(gpu.swapFrame(shown));
        }
    };
    play(400);
    const long before = allocationCount();
    play(200);
    EXPECT_EQ(allocationCount() - before, 0);
    EXPECT_GT(shown.draws.size(), 8U);
}

TEST(RhiGpuDeathTest, MisuseEndsTheProcess) {
    RhiGpu gpu;
    const GpuBuffer arena = gpu.makeArena(96);
    gpu.beginFrame(1, 1, 1);
    EXPECT_DEATH(gpu.draw(Primitive::triangles, arena, 32, 3), "beyond");
    EXPECT_DEATH(gpu.draw(Primitive::triangles, 77, 0, 3), "does not exist");
}

}  // namespace
}  // namespace vmr::test
