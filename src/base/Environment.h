// What the process was given by whoever started it.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace vmr {

/// Reads one variable; nothing when it is not set. What tests put in place of `environment`.
using EnvironmentLookup = std::function<std::optional<std::string>(const char* name)>;

/// The variable of the process's own environment.
std::optional<std::string> environment(const char* name);

}  // namespace vmr
