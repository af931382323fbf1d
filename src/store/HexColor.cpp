#include "store/HexColor.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace vmr::HexColor {

Rgb rgb(std::string_view hex) {
    while (!hex.empty() && (hex.front() == ' ' || hex.front() == '\t')) hex.remove_prefix(1);
    while (!hex.empty() && (hex.back() == ' ' || hex.back() == '\t')) hex.remove_suffix(1);
    if (!hex.empty() && hex.front() == '#') hex.remove_prefix(1);
    unsigned value = 0;
    if (hex.size() != 6) return {};
    const auto read = std::from_chars(hex.data(), hex.data() + 6, value, 16);
    if (read.ec != std::errc() || read.ptr != hex.data() + 6) return {};
    return {((value >> 16) & 255) / 255.0, ((value >> 8) & 255) / 255.0, (value & 255) / 255.0};
}

std::string hex(const Rgb& color) {
    const auto byte = [](double part) {
        return static_cast<int>(std::round(std::clamp(std::isfinite(part) ? part : 1.0, 0.0, 1.0) * 255));
    };
    return fmt::format("#{:02x}{:02x}{:02x}", byte(color.r), byte(color.g), byte(color.b));
}

}  // namespace vmr::HexColor
