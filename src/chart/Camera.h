// Which bars and prices the chart shows, and how input, new data and a partner pane move that.
#pragma once

#include <cmath>
#include <cstddef>
#include <limits>
#include <span>

#include "gpu/Vertices.h"
#include "market/Records.h"

namespace vmr {

/// The point of data space that vertices are stored relative to. Prices near 21,000 lose 0.002 in 32-bit floats, and
/// the offset of a zoomed-in view loses several tenths of a pixel; relative to a near bar and price neither is visible.
struct DataOrigin {
    double bar = 0;
    double price = 0;
    bool operator==(const DataOrigin&) const = default;
};

/// How a chart's view stands, as it is saved and shown again.
struct ViewSetup {
    double bars = 0;  ///< across the view, at its right end
    bool autoY = true;
    double low = 0, high = 0;  ///< the price range in every mode
    static constexpr double leastBars = 10;
    bool operator==(const ViewSetup&) const = default;
};

/// The camera of one chart. Data space: x in bars (bar i is centred at i), y in price. Counts `n` are of all bars held.
/// Arguments that are not finite are ignored. Main thread.
class Camera {
 public:
    double firstVisible = 0;    ///< bar at the left edge, fractional
    double visibleCount = 120;  ///< bars across the view, fractional
    bool followLive = true;     ///< the view rides the right end
    bool autoY = true;          ///< the frame chooses the price range
    double yMinManual = 0;      ///< the price range in every mode: at 95 % of the height ...
    double yMaxManual = 1;      ///< ... and at 5 %
    double priceLineFrac =
        std::numeric_limits<double>::quiet_NaN();  ///< finite: the last close stays there, from below
    double lastViewW = 1400;                       ///< width of the last frame, points
    bool snapLerps = false;                        ///< the camera moved in this frame
    bool touched = false;                          ///< a hand or a partner moved it since its first bars

    /// The widest strike bar in a view `viewW` points wide, points.
    static double maxBarW(double viewW);
    /// Share of the width that stays free right of the last bar.
    double padFrac() const;
    /// The greatest `firstVisible`: the last bar stops short of the right edge by the margin.
    double rightEdgeFirst(std::size_t n) const;

    /// The bars on show are gone, and another instrument's may come: its prices are not the ones in view.
    void startOver();
    /// The camera for a first list of bars.
    void showFirstData(std::size_t n, double initialCandles);
    /// After another list came, in which the bars in view have moved by `shift` places: below 0 when bars went away at
    /// the front, above when more of the history came.
    void followData(std::size_t n, double shift, bool lastChanged);
    /// The view is this wide now: the margin follows, and at the live edge the bars with it.
    void resize(double viewW, std::size_t n);

    bool pan(double byCandles, std::size_t n);  ///< these tell whether anything can have changed
    bool zoom(double factor, std::size_t n);    ///< the right edge stays
    bool zoomPrice(double factor);              ///< nothing while the price is pinned
    bool panByPrice(double dyPixels, double viewHeight);
    // A partner's view. It rides the right end only where it reaches it: half a bar off it, the next tick would move it
    // and the partner move it back.
    bool mirrorView(double first, double count, std::size_t n);
    bool mirrorViewRel(double gapRight, double count, std::size_t n);
    bool mirrorPrice(double minP, double maxP);
    void setPriceLineFrac(double frac);  ///< finite turns `autoY` on; NaN ends the pin

    ViewSetup setup() const { return {visibleCount, autoY, yMinManual, yMaxManual}; }
    /// Fewer than `leastBars` leave the time axis as it is, more than there are show all; a range that is none is
    /// automatic, and so is every range while the last close is pinned.
    void apply(const ViewSetup& setup, std::size_t n);

    /// Settles the price range on the bars in view and notes in `snapLerps` whether the camera moved since the frame
    /// before. False, with nothing changed, when no bar is in view. `fatal` on a position that is not finite.
    bool settle(std::span<const Candle> candles);
    /// Whether that happened since the chart started over; before, the price range means nothing.
    bool settled() const { return !std::isnan(lastMin_); }

    double xScale() const { return 2.0 / visibleCount; }               ///< a bar in clip space
    double yScale() const { return 1.8 / (yMaxManual - yMinManual); }  ///< a point of price in clip space
    double yOffset() const { return -0.9 - yMinManual * yScale(); }
    /// Data space relative to `origin` to clip space.
    Uniforms uniforms(const DataOrigin& origin) const;
    Viewport viewport() const { return {firstVisible, visibleCount, yMinManual, yMaxManual}; }

 private:
    void settleRange(double lo, double hi, double lastClose);
    void place(double first, std::size_t n, double ridesWithin = 0.5);
    bool mirrorCount(double count, std::size_t n);

    static constexpr double mirroredRides_ = 0.01;  // bars
    static constexpr double nan_ = std::numeric_limits<double>::quiet_NaN();
    double lastFirst_ = nan_, lastCount_ = nan_, lastMin_ = nan_, lastMax_ = nan_;
};

}  // namespace vmr
