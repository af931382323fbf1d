// The one way in which the process ends on a fault that must not be survived.
#pragma once

#include <functional>
#include <string_view>

namespace vmr {

/// Reports `reason` on standard error and aborts. A handler set by `setFatalHandler` runs first.
[[noreturn]] void fatal(std::string_view reason);

/// Replaces what `fatal` does before it aborts (an empty function restores the default report). Main thread, before
/// other threads start.
void setFatalHandler(std::function<void(std::string_view)> handler);

}  // namespace vmr
