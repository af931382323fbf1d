#include "gpu/CalmPace.h"

#include <algorithm>

namespace vmr {

void CalmPace::shown(double cost) {
    constexpr double newest = 0.3;
    cost = std::max(cost, 0.0);
    cost_ = cost_ == 0 ? cost : cost_ + (cost - cost_) * newest;
}

double CalmPace::wait(double now) const { return std::max(0.0, last_ + std::min(cost_ / share, longest) - now); }

}  // namespace vmr
