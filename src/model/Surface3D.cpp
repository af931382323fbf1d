#include "model/Surface3D.h"

#include <utility>

namespace vmr {

void Surface3D::open() {
    if (view) view->startOver();
    SurfaceOfChart::operator=(SurfaceOfChart());
}

void Surface3D::setActive(bool on) {
    if (on == active) return;
    if (on) {
        view.emplace();
        view->take(gex3D);
    } else {
        view.reset();
        markedStrike = std::nullopt;
    }
    active = on;
}

void Surface3D::rebuild(const std::vector<Candle>& candles, double etfRatio, const DerivedFields& aggregate,
                        bool force) {
    constexpr double pace = 3.0;  // real seconds
    if (!active) return;
    const double now = clock_.monotonic();
    if (!force && now - lastBuild < pace) return;
    const FieldView fields(aggregate);
    const auto spot = Gex3D::spotPrice(candles, etfRatio, fields);
    if (!spot) return;
    lastBuild = now;
    auto surface = Gex3D::build(*spot, fields, clock_.now());
    if (!surface) return;
    if (view) view->take(surface);
    gex3D = std::move(surface);
}

}  // namespace vmr
