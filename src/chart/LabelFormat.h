// Short texts made by a format, without the heap. For sources alone.
#pragma once

#include <fmt/format.h>

#include <algorithm>

#include "chart/AxisScale.h"

namespace vmr {

/// What does not fit is cut off.
template <class... Args>
AxisScale::Label formatLabel(fmt::string_view format, const Args&... args) {
    AxisScale::Label out;
    const auto end = fmt::vformat_to_n(out.chars.data(), out.chars.size(), format, fmt::make_format_args(args...));
    out.size = std::min(end.size, out.chars.size());
    return out;
}

}  // namespace vmr
