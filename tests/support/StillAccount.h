// A paper account that shows the same lines for a chart, until a test changes them.
#pragma once

#include "tests/support/PlayedTrading.h"

namespace vmr::test {

/// A position, two orders and the legs of one of them, around `middle`.
struct StillAccount final : PlayedTrading {
    explicit StillAccount(double middle) {
        const auto id = [](std::uint8_t n) { return Uuid{{n}}; };
        lastPrice = middle;
        shown = {PositionLine{2, middle - 3},
                 {{id(1), middle - 8, true, 1, "LMT"}, {id(2), middle + 9, false, 2, "TP"}},
                 {{id(1), "SL", middle - 14}, {id(1), "TP", middle + 5}}};
    }
};

}  // namespace vmr::test
