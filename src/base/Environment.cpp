#include "base/Environment.h"

#include <cstdlib>

namespace vmr {

std::optional<std::string> environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
}

}  // namespace vmr
