// Finds rows by what a person types of them.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vmr {

/// How well typed text fits a row's words: every typed word must begin one of them, or stand within one that has at
/// least three letters typed. Less is better; negative where it does not fit. Empty text fits everything with 0. Letter
/// case does not count.
int searchRank(std::string_view typed, std::string_view words);

/// The rows that fit, the best first, equals in their order.
std::vector<std::size_t> searchRows(std::string_view typed, std::span<const std::string> rows);

}  // namespace vmr
