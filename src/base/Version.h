// Which Velmora this is.
#pragma once

#include <cstdint>
#include <string_view>

namespace vmr {

extern const std::string_view versionText;  ///< for the person, such as "0.1.0"
extern const std::int64_t buildNumber;      ///< what is compared with that of a release (`VELMORA_BUILD` in CMake)
extern const std::string_view buildDate;    ///< the day on which the build was configured, as in "2026-06-10"

}  // namespace vmr
