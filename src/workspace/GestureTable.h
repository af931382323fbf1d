// What a hand can do on a chart and its window, for the key to the chart.
#pragma once

#include <span>
#include <string_view>

namespace vmr {

struct Gesture {
    std::string_view place, gesture, effect;
};
/// By place.
std::span<const Gesture> gestureTable();

}  // namespace vmr
