// How each overlay series and session line is drawn: its colour, width and dashes, in its order.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "chart/Camera.h"
#include "chart/OverlayLists.h"
#include "chart/OverlaySet.h"
#include "chart/OverlayStyle.h"
#include "market/Records.h"

namespace vmr {

/// The points that ribbons were made of, and what is told of them beside their places.
struct OverlayPoints {
    std::span<const OvPoint> vwapMain, vwapNY, vixLine;
    std::span<const OvColorPoint> hfLine;
    std::span<const OvCandle> secondCandles;
    OverlaySet::Anchor anchor;
    std::optional<double> vixSpot;
};

/// What the vertices of a series were made of: they are made anew only from the first point on that is another.
template <class Point, class Look>
class SeriesSource {
 public:
    /// Brings `out` up to `points`. `add` appends what belongs to one point, given by its number; it may look at the
    /// points before and change what the last of them added.
    template <class Vertex, class Add>
    void update(SeriesList<Vertex>& out, const std::vector<Point>& points, const Look& look, const DataOrigin& origin,
                Add&& add);
    template <class Vertex>
    void clear(SeriesList<Vertex>& out);
    const std::vector<Point>& points() const { return points_; }

 private:
    template <class Vertex>
    void settle(SeriesList<Vertex>& out, std::size_t changed) const;

    std::vector<Point> points_;
    std::vector<std::size_t> ends_;  ///< how many vertices there are up to each point
    Look look_{};
    DataOrigin origin_;
};

/// Turns a chart's overlay series and session lines into vertices, whose memory is used again. Main thread.
///
/// A tick moves the last point of each series, and leaves the session lines alone: they are made anew only when
/// something that they depend on has changed. Only then the origin moves, to the last bar.
class OverlayRibbons {
 public:
    struct Input {
        const OverlaySet* series = nullptr;  ///< null: none
        std::span<const OverlayLine> lines;  ///< session lines and levels
        std::uint64_t linesRevision = 0;     ///< raised when they changed
        const OverlayStyle& style;
        std::span<const Candle> candles;  ///< under 2 of them nothing is drawn
        double timeframe = 1;             ///< minutes a bar
    };

    /// The lists for `input`; valid until the next call.
    const OverlayLists& make(const Input& input);
    /// What they were made of; valid until the next call.
    OverlayPoints points() const;
    /// Forgets the chart: what `make` gives next depends on nothing from before.
    void clear();

    /// Whether the style shows a session line or level; its label tells what it is.
    static bool isShown(const OverlayLine& line, const OverlayStyle& style);

 private:
    /// What the session lines were made of.
    struct LineInputs {
        std::uint64_t revision = 0;
        std::size_t bars = 0;
        std::int64_t firstTime = 0, lastTime = 0;
        double timeframe = 0;
        bool showOpen = false, showPrev = false, showLevels = false;
        double lineOpacity = 0;
        bool operator==(const LineInputs&) const = default;
    };
    void makeSeries(const OverlaySet& series, const OverlayStyle& style, const DataOrigin& origin);
    void clearSeries();
    void makeSessionLines(const Input& input);
    void clearSessionLines();

    OverlayLists lists_;
    std::array<SeriesSource<OvPoint, Rgba>, OverlayLists::ribbonCount - 1> lines_;
    SeriesSource<OvColorPoint, double> flow_;
    SeriesSource<OvCandle, bool> second_;
    LineInputs lineInputs_;
    OverlaySet::Anchor anchor_;
    std::optional<double> vixSpot_;
};

}  // namespace vmr
