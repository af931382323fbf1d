// A built-in check of the bar rules on simulated time.
#pragma once

#include <string>

namespace vmr {

/// Whether all four runs passed, and their summaries, one a line.
struct BarRollResult {
    bool ok = false;
    std::string summary;
};

/// Simulates quiet and active futures and stocks and checks after every second that the newest bar is the minute's and
/// that bars ascend. Pure; some milliseconds.
BarRollResult runBarRollSelfTest();

}  // namespace vmr
