// A renderer or a whole chart over a recorder of frames, in virtual time, and bars to show.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <vector>

#include "chart/CandleGeometry.h"
#include "chart/ChartRenderer.h"
#include "gpu/FrameRecorder.h"
#include "market/SessionTime.h"
#include "support/gpu/RecordedFrames.h"
#include "support/time/TestTime.h"
#include "tests/chart/FakeGlyphs.h"

namespace vmr::test {

using CandleGeometry::candleVertices;

inline constexpr std::int64_t firstBarTime = 1781092800;  // 2026-06-10 08:00 New York

/// `n` minute bars in smooth waves around 21,000, beginning with bar number `from`.
inline std::vector<Candle> bars(std::size_t n, std::size_t from = 0) {
    std::vector<Candle> list;
    const auto price = [](std::size_t i) {
        const auto x = static_cast<double>(i);
        return std::round((21000.0 + 40.0 * std::sin(x * 0.05) + 9.0 * std::sin(x * 0.7)) * 4.0) / 4.0;
    };
    for (std::size_t i = from; i < from + n; ++i) {
        const auto [low, high] = std::minmax({price(i), price(i + 1)});
        list.push_back(
            {firstBarTime + static_cast<std::int64_t>(i) * 60, price(i), high + 1.5, low - 1.25, price(i + 1), 10.0});
    }
    return list;
}

/// What draws frames, in virtual time.
struct RecordedScene : testing::Test {
    TestTime time;
    TestQueue queue{time};
    FrameRecorder gpu;
    RecordedFrames recorded;  // the newest frame
    FakeGlyphs glyphs;
    SessionTime session;
    double width = 1400, height = 900, pixelRatio = 1;

    /// Whether it still moves.
    virtual bool draw() = 0;

    bool frame(double seconds = 1.0 / 60.0) {
        time.advance(seconds);
        const bool animating = draw();
        recorded.take(gpu);
        return animating;
    }
    /// Frames until nothing moves any more.
    void settle() {
        for (int i = 0; frame(); ++i) ASSERT_LT(i, 200) << "never settles";
    }
};

struct ChartScene : RecordedScene {
    using Draw = RecordedFrames::DrawCall;
    ChartRenderer renderer{gpu, time};

    bool draw() override { return renderer.drawFrame(width, height, pixelRatio, time.monotonic()); }

    /// The frame's draw calls of one kind in their order, without the background.
    std::vector<Draw> calls(Pipeline pipeline, bool retained, Primitive primitive = Primitive::quads) const {
        std::vector<Draw> list;
        std::copy_if(recorded.draws.begin() + 1, recorded.draws.end(), std::back_inserter(list), [&](const Draw& call) {
            return call.pipeline == pipeline && call.retained == retained && call.primitive == primitive;
        });
        return list;
    }
    Draw priceLine() const { return calls(Pipeline::flat, false, Primitive::lines).at(0); }
    // Of a frame without overlays: the forming bar, and the closed ones.
    Draw forming() const { return candles(false); }
    Draw candles(bool retained = true) const {
        for (const Pipeline pipeline : {Pipeline::candle, Pipeline::dense})
            if (const auto found = calls(pipeline, retained); !found.empty()) return found[0];
        return calls(Pipeline::crowded, retained).at(0);
    }

    /// A shape's top left and bottom right on the screen.
    struct Box {
        double left, top, right, bottom;
    };
    /// The body of a candle, counted from the beginning of its list, also when only a part of that is drawn.
    Box body(const Draw& call, std::size_t candle = 0) const {
        const CandleVertex vertex = vertexOf(call, candle);
        const float from[2] = {vertex.corner[0], vertex.body[0]}, to[2] = {vertex.opposite[0], vertex.body[1]};
        return between(call, from, to);
    }
    /// The same of its wick.
    Box wick(const Draw& call, std::size_t candle = 0) const {
        const CandleVertex vertex = vertexOf(call, candle);
        const Box around = between(call, vertex.corner, vertex.opposite);
        const double margin = (around.right - around.left) * (1 - vertex.wick) / 2;
        return {around.left + margin, around.top, around.right - margin, around.bottom};
    }
    CandleVertex vertexOf(const Draw& call, std::size_t candle) const {
        const std::size_t first = candle * candleVertices - (call.retained ? call.offset / sizeof(CandleVertex) : 0);
        return recorded.vertices<CandleVertex>(call).at(first);
    }
    /// From vertex `first` of a flat list to the second one after it.
    Box flatBox(const Draw& call, std::size_t first) const {
        const auto list = recorded.vertices<ChartVertex>(call);
        return between(call, list.at(first).position, list.at(first + 2).position);
    }
    Box between(const Draw& call, const float* from, const float* to) const {
        const auto a = recorded.screen(call, from[0], from[1]), c = recorded.screen(call, to[0], to[1]);
        return {a[0], a[1], c[0], c[1]};
    }
};

}  // namespace vmr::test
