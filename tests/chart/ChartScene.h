// A renderer over the recording device, in virtual time, and bars to show.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "chart/ChartRenderer.h"
#include "support/TestTime.h"
#include "tests/chart/RecordingGpu.h"

namespace vmr::test {

inline constexpr std::int64_t firstBarTime = 1781092800;  // 2026-06-10 08:00 New York

/// `n` minute bars in smooth waves around 21,000, beginning with bar number `from`.
inline std::vector<Candle> bars(std::size_t n, std::size_t from = 0) {
    std::vector<Candle> list;
    for (std::size_t i = from; i < from + n; ++i) {
        const double x = static_cast<double>(i);
        const auto price = [](double t) {
            return std::round((21000.0 + 40.0 * std::sin(t * 0.05) + 9.0 * std::sin(t * 0.7)) * 4.0) / 4.0;
        };
        const double open = price(x), close = price(x + 1.0);
        list.push_back({firstBarTime + static_cast<std::int64_t>(i) * 60, open, std::max(open, close) + 1.5,
                        std::min(open, close) - 1.25, close, 10.0});
    }
    return list;
}

struct ChartScene : testing::Test {
    TestTime time;
    TestQueue queue{time};
    RecordingGpu gpu;
    ChartRenderer renderer{gpu, time, [this](std::function<void()> task) { queue.post(std::move(task)); }};
    int redraws = 0;
    double width = 1400, height = 900, pixelRatio = 1;

    ChartScene() {
        renderer.onNeedsDisplay = [this] { ++redraws; };
    }
    ~ChartScene() override {
        for (const auto& fault : gpu.faults) ADD_FAILURE() << fault;
    }

    bool frame(double seconds = 1.0 / 60.0) {
        time.advance(seconds);
        return renderer.drawFrame(width, height, pixelRatio, time.monotonic());
    }
    /// Frames until nothing moves any more; how many it took.
    int settle() {
        for (int i = 1; i < 200; ++i) {
            if (!frame()) return i;
        }
        ADD_FAILURE() << "never settles";
        return 0;
    }

    /// The chart's draw calls in their order; nothing for a layer that was not drawn.
    struct Layers {
        const RecordingGpu::DrawCall *markers = nullptr, *walls = nullptr, *priceLine = nullptr, *bodies = nullptr,
                                     *forming = nullptr, *wicks = nullptr, *formingWicks = nullptr, *borders = nullptr,
                                     *formingBorder = nullptr;
    };
    /// Of a frame without strikes, overlays and screen layers.
    Layers layers() const {
        Layers found;
        for (std::size_t i = 1; i < gpu.draws.size(); ++i) {
            const auto& call = gpu.draws[i];
            if (call.pipeline == Pipeline::marker)
                found.markers = &call;
            else if (call.primitive == Primitive::lines)
                (call.retained ? found.walls : found.priceLine) = &call;
            else if (call.pipeline == Pipeline::ribbon)
                (call.retained ? found.borders : found.formingBorder) = &call;
            else if (call.retained)
                (found.bodies ? found.wicks : found.bodies) = &call;
            else
                (call.count == 6 ? found.forming : found.formingWicks) = &call;
        }
        return found;
    }
    /// Where vertex `i` of a retained list stands in a draw of the part in view.
    static std::size_t inDraw(const RecordingGpu::DrawCall& call, std::size_t i, std::size_t stride = 32) {
        return call.retained ? i - call.offset / stride : i;
    }
    /// Top left and bottom right of a shape's box on the screen, from vertices 0 and 2.
    struct Box {
        double left, top, right, bottom;
    };
    Box box(const RecordingGpu::DrawCall& call, std::size_t first = 0) const {
        const auto list = gpu.vertices<ChartVertex>(call);
        first = inDraw(call, first);
        const auto a = gpu.screen(call, list.at(first).position[0], list.at(first).position[1]);
        const auto c = gpu.screen(call, list.at(first + 2).position[0], list.at(first + 2).position[1]);
        return {a[0], a[1], c[0], c[1]};
    }
};

}  // namespace vmr::test
