// What one chart shows.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "chart/OscGeometry.h"
#include "chart/OverlaySet.h"
#include "chart/OverlayStyle.h"
#include "chart/RenderConfig.h"
#include "market/Records.h"

namespace vmr {

/// Borrowed: everything that this refers to is valid until its owner next changes it, so it is read at once and not
/// kept.
struct ChartContent {
    /// Of the chart that is open. Another number is another instrument: nothing eases over from the one before, and its
    /// first bars choose the camera anew.
    std::uint64_t chart = 0;
    double timeframe = 1;                ///< minutes a bar
    int sessionHHMM = 1800;              ///< session start, 930 for 09:30
    std::string_view simRoot;            ///< futures root that the chart trades; empty: no trading on this chart
    std::string_view symbol;             ///< as the watermark names it
    bool hud = false;                    ///< whether the line of values over the chart is shown
    const RenderConfig* look = nullptr;  ///< null: the look of `RenderConfig{}`

    std::span<const Candle> candles;  ///< strictly ascending by time; the last one is forming
    std::span<const PriceLevel> levels;
    std::span<const StrikeRow> strikes;
    double etfRatio = 1;                   ///< strike to chart price
    std::optional<double> flipStrike;      ///< where gamma flips, in strike units
    std::optional<double> markedStrike{};  ///< that a line marks, in strike units
    HudMetrics totals{};                   ///< over all strikes; all 0 when they are not known
    std::span<const StrikeRow> secStrikes;
    double secRatio = 1;
    std::span<const BubblePt> bubbles;  ///< ascending by minute
    std::span<const TrianglePt> triangles;
    std::string_view secondSymbol;         ///< the paired instrument's; empty for none
    const OverlaySet* overlays = nullptr;  ///< null: no series
    OverlayStyle overlayStyle;
    std::span<const OverlayLine> srLines;  ///< session lines and levels
    OscContent osc{};                      ///< below the chart

    /// Raised when that part changed. A part whose number is the one of the last content of the same chart is not even
    /// looked at.
    struct Revisions {
        std::uint64_t look = 0;  ///< `look`, `overlayStyle`, and the settings that the overlays follow
        std::uint64_t candles = 0;
        std::uint64_t levels = 0;
        std::uint64_t strikes = 0;     ///< rows, ratio and flip strike
        std::uint64_t secStrikes = 0;  ///< rows and ratio
        std::uint64_t markers = 0;     ///< bubbles and triangles
        std::uint64_t overlays = 0;    ///< only for other points: it costs a frame, whose ribbons are made anew
        std::uint64_t srLines = 0;
        std::uint64_t osc = 0;
        bool operator==(const Revisions&) const = default;
    } revisions;
};

}  // namespace vmr
