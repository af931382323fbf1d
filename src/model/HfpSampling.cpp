#include "model/HfpSampling.h"

#include <utility>

namespace vmr {

void HfpSampling::open() {
    SamplesOfChart::operator=({});
    changed();
}

void HfpSampling::take(const std::vector<StrikeRow>& rows, std::optional<double> spot, double now) {
    auto sample = Hfp::sample(rows, spot, now);
    if (!sample) return;
    samples.push_back(std::move(*sample));
    Hfp::trim(samples, now);
    changed();
}

}  // namespace vmr
