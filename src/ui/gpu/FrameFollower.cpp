#include "ui/gpu/FrameFollower.h"

#include "perf/Perf.h"

namespace vmr {

double FrameFollower::nowMs() const {
    return static_cast<double>(origin_.msecsSinceReference()) + static_cast<double>(origin_.nsecsElapsed()) * 1e-6;
}

void FrameFollower::input(std::uint64_t timestampMs) {
    if (!perf_ || waiting_.size() >= mostInputs) return;
    constexpr std::uint32_t longest = 5000;  // milliseconds; beyond it the stamp is of another clock
    const double now = nowMs();
    const auto age = static_cast<std::uint32_t>(static_cast<std::uint64_t>(now)) -
                     static_cast<std::uint32_t>(timestampMs);  // X11's stamps wrap around at 32 bits
    waiting_.push_back(age <= longest ? now - age : now);
}

void FrameFollower::recorded(bool showsInput) {
    // a frame that was never shown passes its own on
    if (showsInput) recorded_.insert(recorded_.end(), waiting_.begin(), waiting_.end());
    waiting_.clear();
}

void FrameFollower::handedOver(std::uint64_t frame) {
    frame_ = frame;
    shown_.swap(recorded_);
    recorded_.clear();
}

void FrameFollower::swapped() {
    shownFrame_ = frame_;
    if (Perf* perf = perf_)
        for (const double at : shown_) perf->time("inputToSwap", nowMs() - at);
    shown_.clear();
}

}  // namespace vmr
