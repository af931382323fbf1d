// Everything that a chart can show, made up: for tests and benchmarks.
#pragma once

#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "chart/ChartContent.h"
#include "chart/ChartRenderer.h"
#include "chart/OverlayRibbons.h"

namespace vmr::test {

struct SceneSize {
    std::size_t strikes = 40;   ///< rows of each source, around the last close
    std::size_t minutes = 100;  ///< with markers, the newest
    std::size_t bubbles = 1;    ///< a minute
    std::size_t triangles = 1;  ///< a minute
    std::size_t ribbons = 2;    ///< over all bars, at most 5
    double ratio = 41.0;        ///< from strike to chart price
};

/// A chart's inputs over the given bars, with every layer switched on.
struct SceneData {
    std::vector<Candle> candles;
    RenderConfig config;
    std::vector<PriceLevel> levels;
    std::vector<StrikeRow> strikes, secStrikes;
    double ratio, secRatio;
    std::optional<double> flip;
    std::vector<BubblePt> bubbles;
    std::vector<TrianglePt> triangles;
    OverlaySet series;
    OverlayStyle style{.lineOpacity = 0.8};
    std::vector<OverlayLine> srLines;
    OverlayLists overlays;               ///< the last three as vertices
    mutable std::uint64_t revision = 0;  ///< of the last content

    explicit SceneData(std::vector<Candle> list, const SceneSize& size = {})
        : candles(std::move(list)), ratio(size.ratio), secRatio(size.ratio * 0.4) {
        config.dexEnabled = config.dexLabels = config.oiEnabled = true;
        const double close = candles.back().close;
        flip = std::floor(close / ratio);
        for (const double price : {close + 12, HUGE_VAL, close - 9}) levels.push_back({{}, "wall", price, 1, 1, 1});
        strikes = rows(size.strikes, close / ratio);
        secStrikes = rows(size.strikes, close / secRatio);
        const std::size_t from = candles.size() > size.minutes ? candles.size() - size.minutes : 0;
        const double strike = std::round(close / ratio);
        for (std::size_t i = from; i < candles.size(); ++i) {
            const std::int64_t time = candles[i].time;
            for (std::size_t k = 0; k < size.bubbles; ++k)
                bubbles.push_back(
                    {time, strike + wave(i + k) * 4, 0.2 + 0.5 * std::abs(wave(i)), i % 2 == 0, static_cast<int>(k)});
            for (std::size_t k = 0; k < size.triangles; ++k)
                triangles.push_back({time, strike + wave(i + 7 * k) * 6, wave(i), 1.0});
        }
        makeSeries(size.ribbons);
        overlays = OverlayRibbons().make({&series, srLines, 0, style, candles});
    }

    /// Hands all to the renderer, in the order of a pane.
    void give(ChartRenderer& renderer) const {
        renderer.setRenderConfig(config);
        renderer.setLevels(levels);
        renderer.setStrikes(strikes, ratio, flip);
        renderer.setSecStrikes(secStrikes, secRatio);
        renderer.setBubbles(bubbles, triangles);
        renderer.setOverlayGeometry(overlays);
        renderer.setCandles(candles);
    }

    /// The same as a pane gives it, with every part as if it had changed. Borrows from this.
    ChartContent content(std::uint64_t chart = 1) const {
        ++revision;
        const ChartContent::Revisions changed{revision, revision, revision, revision,
                                              revision, revision, revision, revision};
        return {.chart = chart,
                .timeframe = 1,
                .sessionHHMM = 1800,
                .simRoot = "NQ",
                .symbol = "NQ",
                .look = &config,
                .candles = candles,
                .levels = levels,
                .strikes = strikes,
                .etfRatio = ratio,
                .flipStrike = flip,
                .markedStrike = std::nullopt,
                .secStrikes = secStrikes,
                .secRatio = secRatio,
                .bubbles = bubbles,
                .triangles = triangles,
                .secondSymbol = "ES",
                .overlays = &series,
                .overlayStyle = style,
                .srLines = srLines,
                .revisions = changed};
    }

 private:
    void makeSeries(std::size_t ribbons) {
        std::vector<OvPoint> points;
        for (const Candle& c : candles) {
            const auto i = static_cast<double>(points.size());
            series.secondCandles.push_back({i, c.open - 5, c.high - 5, c.low - 5, c.close - 5, c.close});
            points.push_back({i, c.close});
        }
        for (auto* line : {&series.vwapMain, &series.ema1, &series.ema2, &series.vixLine, &series.vwapNY}) {
            if (ribbons-- == 0) break;
            for (OvPoint& point : points) point.v += 3;
            *line = points;
        }
        srLines.push_back({candles.back().close + 7, candles.front().time, std::nullopt, "R1", true});
    }
    static double wave(std::size_t i) { return std::sin(static_cast<double>(i) * 0.7); }
    static std::vector<StrikeRow> rows(std::size_t count, double middle) {
        std::vector<StrikeRow> list;
        for (std::size_t i = 0; i < count; ++i) {
            const double strike = std::round(middle) + static_cast<double>(i) - static_cast<double>(count) / 2;
            list.push_back({strike, 5 + 4 * wave(i), 5 + 4 * wave(i + 9), 3 * wave(i), -2 * wave(i + 3), 1 + wave(i),
                            1 - wave(i + 1), 20 + 9 * wave(i), 25 + 9 * wave(i + 5)});
        }
        return list;
    }
};

}  // namespace vmr::test
