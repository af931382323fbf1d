#include "base/Version.h"

namespace vmr {

const std::string_view versionText = VELMORA_VERSION;
const std::int64_t buildNumber = VELMORA_BUILD;
const std::string_view buildDate = VELMORA_BUILD_DATE;

}  // namespace vmr
