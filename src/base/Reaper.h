// Frees large things away from the thread that dropped them.
#pragma once

#include <functional>

namespace vmr {

/// Runs `release` soon on a background thread, in order, and at the latest while the process ends normally.
void freeLater(std::function<void()> release);

}  // namespace vmr
