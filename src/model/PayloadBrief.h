// How a payload stands in the pane's log.
#pragma once

#include <string>

#include "base/Json.h"

namespace vmr {

/// An object as "{ a, b, … }" with its first six keys in sorted order, an array as "[3 items]", anything else as its
/// text, cut to 80 characters.
std::string briefForm(JsonView payload);

}  // namespace vmr
