// Frees large things away from the thread that dropped them.
#pragma once

#include <functional>

namespace vmr {

/// Runs `release` soon on a background thread, in order; what has not run when the process ends is skipped.
void freeLater(std::function<void()> release);

}  // namespace vmr
