#include "perf/StartUp.h"

#include <fmt/format.h>

#include <cstdio>
#include <string>

#include "base/Clock.h"

namespace vmr {

void startUpStage(std::string_view stage) {
    static std::string line;
    static bool printed = false;
    const std::string entry = fmt::format("  {} ", stage);
    if (printed || line.find(entry) != line.npos) return;
    line += entry + fmt::format("{:.2f}", secondsSinceProcessStart());
    if (stage != "drawn") return;
    printed = true;
    std::printf("[perf] start-up s:%s\n", line.c_str() + 1);
    std::fflush(stdout);
}

}  // namespace vmr
