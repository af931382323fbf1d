#include "sim/SimRecords.h"

#include <array>

namespace vmr::sim {

namespace {
constexpr std::array<std::string_view, 2> sides{"buy", "sell"};
constexpr std::array<std::string_view, 4> types{"market", "limit", "stop", "stopLimit"};
constexpr std::array<std::string_view, 3> states{"working", "filled", "cancelled"};

template <class Value, std::size_t n>
std::optional<Value> named(const std::array<std::string_view, n>& words, std::string_view word) {
    for (std::size_t i = 0; i < n; ++i)
        if (words[i] == word) return static_cast<Value>(i);
    return std::nullopt;
}
}  // namespace

std::string_view rawText(Side side) { return sides[static_cast<std::size_t>(side)]; }
std::string_view rawText(OrderType type) { return types[static_cast<std::size_t>(type)]; }
std::string_view rawText(OrderState state) { return states[static_cast<std::size_t>(state)]; }
std::optional<Side> sideNamed(std::string_view word) { return named<Side>(sides, word); }
std::optional<OrderType> orderTypeNamed(std::string_view word) { return named<OrderType>(types, word); }
std::optional<OrderState> orderStateNamed(std::string_view word) { return named<OrderState>(states, word); }

}  // namespace vmr::sim
