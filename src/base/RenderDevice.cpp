#include "base/RenderDevice.h"

#ifdef __linux__
#include <algorithm>
#include <filesystem>
#include <system_error>
#endif

namespace vmr {

bool hasRenderDevice() {
#ifdef __linux__
    namespace fs = std::filesystem;
    std::error_code ignored;
    return std::any_of(fs::directory_iterator("/dev/dri", ignored), fs::directory_iterator(), [](const auto& entry) {
        return entry.path().filename().string().starts_with("renderD");
    });
#else
    return true;
#endif
}

}  // namespace vmr
