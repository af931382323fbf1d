// The markers of one minute: gamma bubbles and flow triangles.
#pragma once

#include <cstdint>
#include <vector>

#include "base/Json.h"
#include "market/Records.h"

namespace vmr::BubbleParser {

/// Up to three points in rank order, one for each group whose strike is readable. Pure; any thread.
std::vector<BubblePt> bubblePts(JsonView object, std::int64_t minuteTs);

/// A point for each pair of strike and net flow under `d`, in the order given. Empty when `d` is no array of arrays or
/// no net is other than 0; a pair that cannot be read is left out. Pure; any thread.
std::vector<TrianglePt> trianglePts(JsonView object, std::int64_t minuteTs);

}  // namespace vmr::BubbleParser
