// Arithmetic of contracts that does not overflow.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>

namespace vmr::sim {

/// The size of a signed quantity; the one number without a positive twin counts one less.
constexpr std::int64_t sizeOf(std::int64_t qty) {
    if (qty == std::numeric_limits<std::int64_t>::min()) return std::numeric_limits<std::int64_t>::max();
    return qty < 0 ? -qty : qty;
}

/// a + b, or nothing when no 64-bit number holds it.
constexpr std::optional<std::int64_t> sumOf(std::int64_t a, std::int64_t b) {
    if (b > 0 && a > std::numeric_limits<std::int64_t>::max() - b) return std::nullopt;
    if (b < 0 && a < std::numeric_limits<std::int64_t>::min() - b) return std::nullopt;
    return a + b;
}

/// a + b, or the largest number; neither below 0.
constexpr std::int64_t cappedSum(std::int64_t a, std::int64_t b) {
    return sumOf(a, b).value_or(std::numeric_limits<std::int64_t>::max());
}

}  // namespace vmr::sim
