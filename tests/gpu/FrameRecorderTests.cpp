// What a recorded frame keeps, and what the recorder refuses.
#include "gpu/FrameRecorder.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <functional>

#include "support/gpu/RecordedFrames.h"

namespace vmr::test {
namespace {

constexpr std::array<float, 8> uniforms{1, 2, 3, 4, 5, 6, 7, 8};

TEST(FrameRecorder, AFrameHoldsWhatItDrawsFrom) {
    FrameRecorder gpu;
    const ChartVertex kept[3] = {{{1, 0}, {}}};
    const GpuBuffer retained = gpu.makeBuffer(std::as_bytes(std::span(kept)));
    GpuBuffer arena = gpu.makeArena(256);
    const auto write = [&](float x) { std::memcpy(gpu.arenaBytes(arena).data(), &x, sizeof x); };
    gpu.beginFrame(100, 50, 2);
    gpu.setPipeline(Pipeline::flat);
    gpu.setUniforms(std::span(uniforms).first(4));
    gpu.draw(Primitive::triangles, retained, 0, 3);
    write(2);
    gpu.draw(Primitive::lines, arena, 0, 2);
    gpu.release(arena);  // grown: what was drawn from it stays
    arena = gpu.makeArena(512);
    write(3);
    gpu.draw(Primitive::triangles, arena, 0, 3);
    gpu.release(retained);
    gpu.draw(Primitive::triangles, arena, 0, 0);
    RecordedFrames shown;
    EXPECT_FALSE(shown.take(gpu)) << "half a frame is none";
    gpu.endFrame();
    write(9);

    ASSERT_TRUE(shown.take(gpu));
    ASSERT_EQ(shown.draws.size(), 3U) << "a draw of nothing is none";
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(shown.vertices<ChartVertex>(shown.draws[i])[0].position[0], static_cast<float>(i + 1));
    EXPECT_EQ(shown.draws[1].primitive, Primitive::lines);
    EXPECT_EQ(shown.draws[2].uniforms[3], 4.0F);
    EXPECT_EQ(shown.frame.pixelRatio, 2);
    EXPECT_EQ(gpu.buffersHeld(), 1U);
    EXPECT_FALSE(shown.take(gpu)) << "a repaint draws the same frame again";
    EXPECT_EQ(shown.draws.size(), 3U);
}

TEST(FrameRecorder, ClearsAndClipsCoverWholePixels) {
    const std::array<std::byte, 96> bytes{};
    FrameRecorder gpu;
    const GpuBuffer kept = gpu.makeBuffer(bytes);
    const struct {
        double ratio;
        PointRect clip;
        PixelRect pixels;
    } cases[] = {{1, {10, 20, 30, 5}, {10, 20, 40, 25}},
                 {1.5, {0.2, 0.4, 3, 3}, {0, 1, 5, 5}},
                 {1.5, {90, 40, 11, 11}, {135, 60, 152, 77}},  // to the end of the view's last pixel
                 {1, {-5, -5, 10, 10}, {0, 0, 5, 5}},
                 {1, {10, 10, 0, 10}, {}},
                 {1, {std::nan(""), 0, 9, 9}, {}},
                 {1, {0, 0, HUGE_VAL, 9}, {}}};
    for (const auto& [ratio, clip, pixels] : cases) {
        SCOPED_TRACE(clip.x);
        gpu.beginFrame(101, 51, ratio);
        gpu.setPipeline(Pipeline::text);
        gpu.setUniforms(std::span(uniforms).first(4));
        gpu.clear({0, 0, 1, 1});
        gpu.setClip(clip);
        gpu.draw(Primitive::triangles, kept, 0, 3);
        gpu.clear({0, 0, 1, 1});
        gpu.resetClip();
        gpu.draw(Primitive::triangles, kept, 0, 3);
        gpu.endFrame();
        RecordedFrames shown;
        ASSERT_TRUE(shown.take(gpu));
        ASSERT_EQ(shown.draws.size(), 4U);
        const PixelRect whole{0, 0, static_cast<int>(std::ceil(101 * ratio)), static_cast<int>(std::ceil(51 * ratio))};
        for (std::size_t i = 0; i < 4; ++i) {
            const auto& call = shown.draws[i];
            const bool clears = i % 2 == 0;
            EXPECT_EQ(call.opaque, clears);
            EXPECT_EQ(call.clip, i == 0 || i == 3 ? whole : pixels);
            EXPECT_EQ(call.pipeline, clears ? Pipeline::flat : Pipeline::text);
            EXPECT_EQ(call.uniforms[1], clears ? 0 : 2) << "a clear keeps what was set";
        }
    }
}

TEST(FrameRecorderDeathTest, MisuseEndsTheProgram) {
    const std::array<std::byte, 1024> bytes{};
    FrameRecorder gpu;
    GpuBuffer kept = gpu.makeBuffer(bytes), arena = gpu.makeArena(1024);
    const auto begin = [&](Pipeline pipeline = Pipeline::flat, std::size_t floats = 4) {
        gpu.beginFrame(100, 50, 1);
        gpu.setPipeline(pipeline);
        gpu.setUniforms(std::span(uniforms).first(floats));
    };
    const auto draw = [&](GpuBuffer buffer, std::size_t offset, std::size_t count) {
        begin();
        gpu.draw(Primitive::triangles, buffer, offset, count);
    };
    const struct {
        std::function<void()> wrong;
        const char* reason;
    } cases[] = {
        {[&] { gpu.makeBuffer({}); }, "no bytes"},
        {[&] { begin(), begin(); }, "frame within a frame"},
        {[&] { gpu.draw(Primitive::triangles, kept, 0, 3); }, "outside a frame"},
        {[&] { begin(Pipeline::ribbon, 4); }, "number of uniforms"},
        {[&] { begin(), gpu.setPipeline(Pipeline::text), gpu.draw(Primitive::quads, kept, 0, 4); }, "without uniforms"},
        {[&] { draw(kept, 0, 4); }, "part of a shape"},
        {[&] { draw(kept, 2048, 3); }, "beyond"},
        {[&] { draw(arena, 32, 3); }, "not aligned"},
        {[&] { gpu.release(kept), draw(kept, 0, 3); }, "does not exist"},
    };
    for (const auto& [wrong, reason] : cases) EXPECT_DEATH(wrong(), reason);
    draw(kept, 32, 30);
    gpu.draw(Primitive::lines, arena, 256, 24);
    gpu.endFrame();
}

}  // namespace
}  // namespace vmr::test
