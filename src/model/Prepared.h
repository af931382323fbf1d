// What the relay's queue makes of a message before the main thread sees it. Private to this folder.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "market/Records.h"

namespace vmr {

/// Each is there if it was worth making beforehand.
struct Prepared {
    std::optional<std::vector<Candle>> bars;       ///< of a candle channel, cut to what a series keeps
    std::shared_ptr<std::vector<StrikeRow>> rows;  ///< of a long `gexByStrike`; may be moved out once
    std::string brief;                             ///< the brief form of a long payload
    std::uint64_t repaired = 0;                    ///< elements that the bars lack
};

}  // namespace vmr
