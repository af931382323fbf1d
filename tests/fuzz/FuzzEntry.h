// What every fuzz target shares: what it defines, and a way out of what is fatal on purpose.
#pragma once

#include <cstdlib>
#include <string_view>

#include "base/Fatal.h"

namespace vmr::fuzz {

/// Defined by each target: does with any text what the program does with it.
void take(std::string_view text);

/// Whether VMR_STRICT asks for a process that ends at a number of the feed that no integer holds.
inline bool strict() {
    static const char* const set = std::getenv("VMR_STRICT");
    return set && std::string_view(set) == "1";
}

/// Thrown instead of ending the process where it is strict: that is by design, and no finding.
struct FatalByDesign {};

/// Whether `work` came through. What is fatal without being strict is a finding.
template <class Work>
bool survives(Work&& work) {
    if (!strict()) {
        work();
        return true;
    }
    setFatalHandler([](std::string_view) { throw FatalByDesign(); });
    try {
        work();
        return true;
    } catch (const FatalByDesign&) {
        return false;
    }
}

/// Aborts, which a fuzzer reports, when `holds` is false.
inline void require(bool holds) {
    if (!holds) std::abort();
}

}  // namespace vmr::fuzz
