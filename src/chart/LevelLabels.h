// What is written at the horizontal lines of a chart: session lines, support and resistance, walls.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "chart/AxisScale.h"
#include "chart/OverlayGeometry.h"
#include "chart/OverlayStyle.h"
#include "market/Records.h"

namespace vmr {

/// One line, or several of one price, in the camera of a frame.
struct LevelLabel {
    std::string text;  ///< "R1 · Prev High 24,512.25"
    bool wall = false;
    double price = 0;
    double left = 0, right = 0;  ///< the part of the lines that is in view, points
    bool goesOn = false;         ///< one of them reaches the last bar
    double r = 0, g = 0, b = 0;  ///< colour
};

/// Keeps the lines that are shown, and writes the labels of those in view. Main thread.
class LevelLabels {
 public:
    LevelLabels();

    // What the lines are; copied. True when the labels may be others.
    bool setLines(std::span<const OverlayLine> lines, std::uint64_t revision, const OverlayStyle& style);
    bool setWalls(std::span<const PriceLevel> walls, bool shown);
    void clear();

    /// The labels of the lines within a plot of this size, highest price first, walls before the others; valid until
    /// the next call. `wallsFrom` is the bar at which walls begin. Lines of one price share a label. Allocates
    /// nothing once it has grown.
    std::span<const LevelLabel> inView(const Viewport& viewport, double width, double plotRight,
                                       std::span<const Candle> candles, std::size_t wallsFrom);

 private:
    struct Line {
        OverlayLine line;
        bool session = false;  ///< no level of support or resistance
        std::int64_t cents = 0;
        std::optional<OverlayGeometry::LineSpan> bars;
    };
    struct Sight {
        const Viewport& viewport;
        double width = 0, plotRight = 0;
        std::size_t bars = 0;
    };
    struct Bars {
        std::size_t count = 0;
        std::int64_t first = 0, last = 0;
        bool operator==(const Bars&) const = default;
    };
    LevelLabel& add(double price);
    void placeLines(std::span<const Candle> candles);
    void addWalls(const Sight& sight, std::size_t firstBar);
    void addLines(std::span<const Line> samePrice, const Sight& sight);

    std::vector<OverlayLine> given_;
    std::vector<Line> lines_;  // by price; of one price in the order of the names in its text
    std::vector<PriceLevel> walls_;
    std::vector<LevelLabel> labels_;  // the first `used_`; the others keep their memory
    std::size_t used_ = 0;
    std::uint64_t revision_ = 0;
    OverlayStyle style_;
    bool filled_ = false;
    Bars bars_;  // that the lines' places count
};

}  // namespace vmr
