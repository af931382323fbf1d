#include "perf/StartUp.h"

#include <fmt/format.h>

#include <string>

#include "base/Clock.h"
#include "base/Log.h"

namespace vmr {

void startUpStage(std::string_view stage) {
    static std::string line;
    static bool printed = false;
    const std::string entry = fmt::format("  {} ", stage);
    if (printed || line.find(entry) != line.npos) return;
    line += entry + fmt::format("{:.2f}", secondsSinceProcessStart());
    if (stage != "drawn") return;
    printed = true;
    Log::standardOutput().line("[perf] start-up s:" + line.substr(1));
}

}  // namespace vmr
