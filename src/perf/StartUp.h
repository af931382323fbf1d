// Where the time goes from the start of the process to the first bars on the screen.
#pragma once

#include <string_view>

namespace vmr {

/// Notes that the process has come to `stage`, once each. At "drawn" all are printed to standard output, in seconds
/// since the process began: "[perf] start-up s: relay 0.02  window 0.31  drawn 0.70". Nothing is noted after that. Main
/// thread.
void startUpStage(std::string_view stage);

}  // namespace vmr
