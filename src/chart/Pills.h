// The tags that hang from the ends of overlay series: what they say and where they hang.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "chart/OverlayRibbons.h"
#include "gpu/Vertices.h"
#include "market/Records.h"

namespace vmr {

/// One tag, in the camera of a frame.
struct Pill {
    std::string text;
    double x = 0, y = 0;  ///< the point that it hangs from, points from the view's top left
    bool past = false;    ///< the series goes on out of view: this is its last point in view
    Rgba fill{}, textColor{};
};

/// Main thread.
class Pills {
 public:
    static constexpr double verticalMargin = 20.0;  ///< points above and below the view in which a point still counts

    struct Input {
        OverlayPoints points;
        std::string_view secondSymbol;
        bool lineRates = true;
        const Viewport& viewport;
        double width = 0, height = 0, plotRight = 0;
        std::span<const Candle> candles;
    };

    /// One for each series that has a point in view: the paired instrument, VWAP, VWAP of New York, net flow, VIX.
    /// Valid until the next call. Allocates nothing once it has grown.
    std::span<const Pill> inView(const Input& input);

 private:
    Pill& add();
    template <class Point, class ValueOf>
    const Point* hangFrom(std::span<const Point> points, const Input& input, double ahead, ValueOf valueOf);

    std::vector<Pill> pills_;  // the first `used_`; the others keep their memory
    std::size_t used_ = 0;
};

}  // namespace vmr
