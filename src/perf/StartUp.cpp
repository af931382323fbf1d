#include "perf/StartUp.h"

#include <fmt/format.h>

#include "base/Clock.h"

namespace vmr {

std::optional<std::string> StartUp::stage(std::string_view stage) {
    if (over_) return std::nullopt;
    const std::string entry = fmt::format("  {} ", stage);
    if (line_.find(entry) != line_.npos) return std::nullopt;
    line_ += entry + fmt::format("{:.2f}", secondsSinceProcessStart());
    over_ = stage == "drawn";
    return over_ ? std::optional("[perf] start-up s:" + line_.substr(1)) : std::nullopt;
}

}  // namespace vmr
