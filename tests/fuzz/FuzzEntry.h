// What every fuzz target shares: what it defines, and a way out of what is fatal on purpose.
#pragma once

#include <cstdlib>
#include <string_view>

#include "base/Fatal.h"

namespace vmr::fuzz {

/// Defined by each target: does with any text what the program does with it.
void take(std::string_view text);

/// Thrown instead of ending the process: a time that no integer holds is fatal by design, and no finding.
struct FatalByDesign {};

/// Whether `work` came through without being fatal.
template <class Work>
bool survives(Work&& work) {
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
