// JSON texts that are well-formed but hold what the decoder cannot: their odd values rewritten.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vmr {

/// The text with integers beyond 64 bits written as floating numbers, numbers beyond a double's range as the texts
/// "inf" and "-inf" (which the lenient readers take for numbers), and half surrogates as U+FFFD. Nothing when there is
/// none of these. Says nothing about whether the text is JSON otherwise. One pass.
std::optional<std::string> repairedJson(std::string_view text);

}  // namespace vmr
