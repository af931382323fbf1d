#include "ui/InputTiming.h"

#include <utility>

#include "perf/Perf.h"

namespace vmr {

double InputTiming::nowMs() const {
    return static_cast<double>(origin_.msecsSinceReference()) + static_cast<double>(origin_.nsecsElapsed()) * 1e-6;
}

void InputTiming::input(std::uint64_t timestampMs) {
    if (!perf || oldest_) return;
    constexpr std::uint32_t longest = 5000;  // milliseconds; beyond it the stamp is of another clock
    const double now = nowMs();
    const auto age = static_cast<std::uint32_t>(static_cast<std::uint64_t>(now)) -
                     static_cast<std::uint32_t>(timestampMs);  // X11's stamps wrap around at 32 bits
    oldest_ = age <= longest ? now - age : now;
}

void InputTiming::recorded() {
    const auto oldest = std::exchange(oldest_, std::nullopt);
    if (!recorded_) recorded_ = oldest;  // a frame that was never shown passes its input on
}

void InputTiming::handedOver() { shown_ = std::exchange(recorded_, std::nullopt); }

void InputTiming::swapped() {
    if (const auto at = std::exchange(shown_, std::nullopt); at && perf) perf->time("inputToSwap", nowMs() - *at);
}

}  // namespace vmr
