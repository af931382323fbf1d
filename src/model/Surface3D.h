// The 3D surface of a chart, built while its view is open.
#pragma once

#include <limits>
#include <optional>
#include <vector>

#include "base/Clock.h"
#include "base/Signal.h"
#include "model/Gex3D.h"
#include "model/Gex3DView.h"

namespace vmr {

/// What of it belongs to one chart.
struct SurfaceOfChart {
    explicit SurfaceOfChart(NoticeGate* gate = nullptr) : gex3D(gate), markedStrike(gate) {}

    Observable<std::optional<Gex3DData>> gex3D;
    Observable<std::optional<double>> markedStrike;               ///< that the open view has marked on the chart
    double lastBuild = -std::numeric_limits<double>::infinity();  ///< monotonic
};

/// Main thread.
class Surface3D : public SurfaceOfChart {
 public:
    /// `clock` must outlive it; `gate` may be null.
    explicit Surface3D(const Clock& clock, NoticeGate* gate = nullptr)
        : SurfaceOfChart(gate), active(gate), clock_(clock) {}

    /// Begins another chart, without a surface.
    void open();

    Observable<bool> active;  ///< whether its view is open; changed by `setActive` alone
    bool gex3DActive() const { return active; }
    /// A view that opens shows the last surface at once; one that closes leaves nothing marked.
    void setActive(bool on);

    std::optional<Gex3DView> view;  ///< while it is open

    /// Builds while it is active, at most every three real seconds unless `force`. One that cannot be built leaves the
    /// old one.
    void rebuild(const std::vector<Candle>& candles, double etfRatio, const DerivedFields& aggregate, bool force);

 private:
    const Clock& clock_;
};

}  // namespace vmr
