// Draws the plots of the HF pressure panel: the two flows over time, the times below them, and a sparkline a strike.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "base/Clock.h"
#include "chart/HfPressure.h"
#include "gpu/Painter.h"
#include "gpu/PointRect.h"

namespace vmr {

class Perf;

/// Main thread.
class HfPressurePlot {
 public:
    static constexpr std::size_t mostSparks = 5;

    /// Where each plot stands, in points from the surface's top left; one without a size is not drawn.
    struct Places {
        PointRect main, strip;
        std::array<PointRect, mostSparks> sparks;  ///< by strike of the band
    };

    /// All must outlive it; `perf` may be null.
    HfPressurePlot(GlyphSource& glyphs, const Clock& clock, Perf* perf = nullptr)
        : painter_(glyphs), clock_(clock), perf_(perf) {}

    /// True when another frame is needed, for glyphs that came late. All is drawn with `opacity`.
    bool draw(PaintSurface& surface, const HfPressure::Samples& samples, const Places& places, float opacity = 1);

    /// The texts of the strip as last drawn.
    const std::vector<HfPressure::StripTick>& stripTicks() const { return strip_; }

 private:
    Rgba faded(Rgba color) const {
        color[3] *= opacity_;
        return color;
    }
    void time(std::string_view name, double since) const;
    void drawMain(const HfPressure::Samples& samples, const HfPressure::Scale& scale, const PointRect& place);
    void drawStrip(const HfPressure::Scale& scale, const PointRect& place);
    /// What one sample tells of a strike.
    struct SparkPoint {
        double t = 0, call = 0, put = 0;
    };
    void gatherSparks(const HfPressure::Samples& samples, std::span<const double> strikes);
    void drawSpark(const std::vector<SparkPoint>& points, const HfPressure::Scale& scale, double maxAbs,
                   const PointRect& place);

    Painter painter_;
    const Clock& clock_;
    Perf* perf_;
    float opacity_ = 1;
    std::vector<double> times_;
    std::array<std::vector<SparkPoint>, mostSparks> sparkPoints_;  ///< by strike of the band
    std::vector<HfPressure::StripTick> strip_;
};

}  // namespace vmr
