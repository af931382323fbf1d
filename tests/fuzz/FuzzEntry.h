// What every fuzz target shares: its entry, and a way out of what is fatal on purpose.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "base/Fatal.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vmr::fuzz {

/// Thrown instead of ending the process: a time that no integer holds is fatal by design, and no finding.
struct FatalByDesign {};

/// Whether `work` came through without being fatal.
template <class Work>
bool survives(Work&& work) {
    setFatalHandler([](std::string_view) { throw FatalByDesign(); });
    try {
        work();
    } catch (const FatalByDesign&) {
        return false;
    }
    return true;
}

/// Aborts, which a fuzzer reports, when `holds` is false.
inline void require(bool holds) {
    if (!holds) std::abort();
}

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

}  // namespace vmr::fuzz
