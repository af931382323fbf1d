#include "model/SessionWalk.h"

#include <algorithm>

namespace vmr {

namespace {
std::int64_t floorDay(std::int64_t t) {
    const std::int64_t rest = t % 86400;
    return t - (rest < 0 ? rest + 86400 : rest);
}
}  // namespace

void SessionWalk::enterDay(std::int64_t t) {
    const std::int64_t offset = session_.offset(t);
    midnight_ = floorDay(t + offset) - offset;
    from_ = std::max(floorDay(t), midnight_);
    to_ = std::min(floorDay(t), midnight_) + day;
}

}  // namespace vmr
