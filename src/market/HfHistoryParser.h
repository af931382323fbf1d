// One minute of the HF flow history.
#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "base/Json.h"

namespace vmr {

/// The flow of a minute as a bar, in the feed's own units; any of the four may be missing.
struct HfCandle {
    std::optional<double> o, h, l, c;
    bool operator==(const HfCandle&) const = default;
};

/// Seconds since 1970 of the minute to its flow.
using HfByMin = std::map<std::int64_t, HfCandle>;

namespace HfHistoryParser {

/// What of the four is readable. Pure; any thread.
HfCandle hfCandle(JsonView object);

}  // namespace HfHistoryParser
}  // namespace vmr
