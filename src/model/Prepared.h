// How a message comes to the main thread, and what the relay's queue makes of it before. Private to this folder.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Json.h"
#include "market/Records.h"

namespace vmr {

/// Each is there if it was worth making beforehand.
struct Prepared {
    std::optional<std::vector<Candle>> bars;       ///< of a candle channel, cut to what a series keeps
    std::shared_ptr<std::vector<StrikeRow>> rows;  ///< of a long `gexByStrike`; may be moved out once
    std::string brief;                             ///< the brief form of a long payload
    std::uint64_t repaired = 0;                    ///< elements that the bars lack
};

/// When the message that is being routed came. The elements of one batch share a document, and came together.
struct Arrival {
    Json batch;  ///< the batch under way
    double at = 0;
    std::int64_t minute = 0;  ///< the start of the minute that holds `at`
};

}  // namespace vmr
