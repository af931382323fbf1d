#include "model/Surface3D.h"

#include <utility>

namespace vmr {

void Surface3D::rebuild(const std::vector<Candle>& candles, double etfRatio, const DerivedFields& aggregate,
                        bool force) {
    constexpr double pace = 3.0;  // real seconds
    if (!active_) return;
    const double now = clock_.monotonic();
    if (!force && now - lastBuild < pace) return;
    const FieldView fields(aggregate);
    const auto spot = Gex3D::spotPrice(candles, etfRatio, fields);
    if (!spot) return;
    lastBuild = now;
    if (auto surface = Gex3D::build(*spot, fields, clock_.now())) gex3D = std::move(surface);
}

}  // namespace vmr
