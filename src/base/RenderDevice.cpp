#include "base/RenderDevice.h"

#include <algorithm>
#include <map>
#include <sstream>

#include "base/FileReplace.h"
#ifdef __linux__
#include <system_error>
#endif

namespace vmr {

namespace fs = std::filesystem;

namespace {
constexpr std::string_view cardWord = "card", processorWord = "processor";

bool isWord(std::string_view text) {
    constexpr std::size_t longest = 32;
    return !text.empty() && text.size() <= longest && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    });
}

/// A line an interface: its name and what drew.
std::map<std::string, Rasteriser> readLines(const fs::path& file) {
    std::map<std::string, Rasteriser> out;
    std::istringstream lines(readFile(file).value_or(""));
    for (std::string api, drew; lines >> api >> drew;)
        if (isWord(api) && (drew == cardWord || drew == processorWord))
            out[api] = drew == cardWord ? Rasteriser::card : Rasteriser::processor;
    return out;
}
}  // namespace

bool hasRenderDevice() {
#ifdef __linux__
    std::error_code ignored;
    return std::any_of(fs::directory_iterator("/dev/dri", ignored), fs::directory_iterator(),
                       [](const auto& entry) { return entry.path().filename().string().starts_with("renderD"); });
#else
    return true;
#endif
}

int samplesAPixel(std::string_view wanted, std::optional<Rasteriser> found, bool renderDevice) {
    if (wanted == "1" || wanted == "4") return wanted == "1" ? 1 : 4;
    return found.value_or(renderDevice ? Rasteriser::card : Rasteriser::processor) == Rasteriser::card ? 4 : 1;
}

std::optional<Rasteriser> RasteriserRecord::found() const {
    const auto lines = readLines(file_);
    const auto own = lines.find(api_);
    return own == lines.end() ? std::nullopt : std::optional(own->second);
}

void RasteriserRecord::keep(Rasteriser drew) const {
    if (file_.empty()) return;
    auto lines = readLines(file_);
    const auto own = lines.find(api_);
    if (!isWord(api_) || (own != lines.end() && own->second == drew)) return;
    lines[api_] = drew;
    std::string text;
    for (const auto& [api, by] : lines)
        text += api + ' ' + std::string(by == Rasteriser::card ? cardWord : processorWord) + '\n';
    (void)replaceFile(file_, text);  // the next start then asks the system's devices again
}

}  // namespace vmr
