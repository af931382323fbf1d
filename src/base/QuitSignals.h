// The system's polite request to end.
#pragma once

#include <functional>

namespace vmr {

/// Calls `handler` once, on a thread of its own, when the process is asked to end (SIGINT, SIGTERM; Ctrl-C elsewhere).
/// A second request ends the process at once. Call once, before other threads start.
void onQuitRequest(std::function<void()> handler);

}  // namespace vmr
