// The system's polite request to end.
#pragma once

#include <functional>

namespace vmr {

/// Calls `handler` once, on a thread of its own, when the process is asked to end (SIGINT, SIGTERM, SIGHUP; Ctrl-C
/// elsewhere), and lets writing to a closed pipe fail instead of ending it. A request that comes more than a second
/// after the first ends the process at once. An empty handler takes the last one back: when the call returns, that one
/// does not run any more. Main thread.
void onQuitRequest(std::function<void()> handler);

}  // namespace vmr
