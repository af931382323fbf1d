// What a pane showed, as it is remembered between runs.
#pragma once

#include <cstdint>
#include <string>

namespace vmr {

/// The symbol, minutes per bar and options source of a pane.
struct PaneState {
    std::string symbol;
    std::int64_t timeframe = 1;
    std::string gexSource;
    bool operator==(const PaneState&) const = default;
};

}  // namespace vmr
