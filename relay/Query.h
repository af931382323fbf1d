// Queries and forms: names and values with percent escapes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vmr::relay {

/// Every %XX replaced by its byte; what is no escape stays as it is, "+" included.
std::string percentDecoded(std::string_view text);

/// The decoded value of `name` in "a=1&b=2"; nothing when it does not occur.
std::optional<std::string> queryValue(std::string_view query, std::string_view name);

/// The same in the body of a form, where "+" is a blank.
std::optional<std::string> formValue(std::string_view form, std::string_view name);

/// What follows the "?" of a request's target; empty without one.
std::string_view queryOf(std::string_view target);

}  // namespace vmr::relay
