// The 3D surface of a chart, built while its view is open.
#pragma once

#include <limits>
#include <optional>
#include <vector>

#include "base/Clock.h"
#include "base/Signal.h"
#include "model/Gex3D.h"

namespace vmr {

/// What of it belongs to one chart.
struct SurfaceOfChart {
    explicit SurfaceOfChart(NoticeGate* gate = nullptr) : gex3D(gate) {}

    Observable<std::optional<Gex3DData>> gex3D;
    double lastBuild = -std::numeric_limits<double>::infinity();  ///< monotonic
};

/// Main thread.
class Surface3D : public SurfaceOfChart {
 public:
    /// `clock` must outlive it; `gate` may be null.
    explicit Surface3D(const Clock& clock, NoticeGate* gate = nullptr) : SurfaceOfChart(gate), clock_(clock) {}

    /// Begins another chart, without a surface.
    void open() { SurfaceOfChart::operator=(SurfaceOfChart()); }

    bool gex3DActive() const { return active_; }
    /// Whether its view is open.
    void setActive(bool on) { active_ = on; }

    /// Builds while it is active, at most every three real seconds unless `force`. One that cannot be built leaves the
    /// old one.
    void rebuild(const std::vector<Candle>& candles, double etfRatio, const DerivedFields& aggregate, bool force);

 private:
    const Clock& clock_;
    bool active_ = false;
};

}  // namespace vmr
