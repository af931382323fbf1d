// How a chart's view is divided: the plot, the price axis right of it and the time axis below it.
#pragma once

namespace vmr {

/// The parts of a view of `width` by `height` points.
struct PlotArea {
    static constexpr double priceAxisWidth = 74.0;  ///< points, at the right edge
    static constexpr double timeAxisHeight = 22.0;  ///< points, at the bottom edge

    double width = 0, height = 0;

    /// The plot begins at 0, 0 and ends here, negative in a view that is smaller than the axes.
    double right() const { return width - priceAxisWidth; }
    double bottom() const { return height - timeAxisHeight; }
    /// Whether `x` lies on the price axis or right of it.
    bool onPriceAxis(double x) const { return x >= right(); }
};

}  // namespace vmr
