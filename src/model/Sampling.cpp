// What a pane takes at intervals: HF pressure samples while the panel is on, the 3D surface while its view is open.
#include <algorithm>
#include <utility>

#include "model/AppModel.h"
#include "perf/Perf.h"

namespace vmr {

namespace {
constexpr double surfacePace = 3.0;  // real seconds
constexpr double fastestSample = 1.0 / 120;
}  // namespace

void AppModel::updateHfpTimer() {
    const bool wanted = config->hfPressure && isSignedIn && counted_;
    if (wanted && hfpTimer_ == SerialQueue::noTimer) {
        // samples carry market time, so a faster clock takes them faster
        const double second = std::max(1 / at_.clock.speed(), fastestSample);
        hfpTimer_ = at_.main.every(second, second, [this, weak = std::weak_ptr(alive_)] {
            if (!weak.expired()) takeHfpSample();
        });
    } else if (!wanted && hfpTimer_ != SerialQueue::noTimer) {
        at_.main.cancel(hfpTimer_);
        hfpTimer_ = SerialQueue::noTimer;
    }
}

void AppModel::takeHfpSample() {
    const double now = at_.clock.now();
    const double start = at_.clock.monotonic();
    if (auto sample = Hfp::sample(strikes, Hfp::spotPrice(FieldView(derivedFields), candles, etfRatio), now)) {
        hfp.samples.push_back(std::move(*sample));
        Hfp::trim(hfp.samples, now);
        hfp.changed();
    }
    if (at_.perf) at_.perf->time("hfpSample", (at_.clock.monotonic() - start) * 1000);
}

void AppModel::setGex3DActive(bool on) {
    gex3DActive_ = on;
    if (on) rebuild3D(true);
}

void AppModel::rebuild3D(bool force) {
    if (!gex3DActive_) return;
    const double now = at_.clock.monotonic();
    if (!force && now - lastGex3DBuild_ < surfacePace) return;
    const FieldView fields(derivedFields);
    const auto spot = Gex3D::spotPrice(candles, etfRatio, fields);
    if (!spot) return;
    lastGex3DBuild_ = now;
    if (auto surface = Gex3D::build(*spot, fields, at_.clock.now())) gex3D = std::move(surface);
}

}  // namespace vmr
