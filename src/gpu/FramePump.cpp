#include "gpu/FramePump.h"

#include <utility>

namespace vmr {

FramePump::Order FramePump::askNow() {
    if (recording_) return Order::nothing;
    wanted_ = false;
    state_ = State::asked;
    return Order::schedule;
}

FramePump::Order FramePump::ask() {
    if (state_ != State::onItsWay || recording_) return askNow();
    return std::exchange(wanted_, true) ? Order::nothing : Order::watch;
}

FramePump::Order FramePump::setLive(bool on) {
    const bool begins = on && !live_;
    live_ = on;
    return begins ? ask() : Order::nothing;
}

void FramePump::recorded(bool again) {
    recording_ = false;
    wanted_ = false;
    again_ = again;
    state_ = State::recorded;
}

void FramePump::notRecorded() {
    recording_ = false;
    wanted_ = again_ = false;
    if (state_ != State::onItsWay) state_ = State::idle;
}

bool FramePump::handOver() {
    if (state_ != State::recorded) return false;
    state_ = State::onItsWay;
    ++frame_;
    return true;
}

// The frame under way is done with, on the screen or not.
FramePump::Order FramePump::finish() {
    state_ = State::idle;
    return wanted_ || again_ || live_ ? askNow() : Order::nothing;
}

FramePump::Order FramePump::shown(std::uint64_t shownFrame) {
    return state_ == State::onItsWay && shownFrame == frame_ ? finish() : Order::nothing;
}

FramePump::Order FramePump::late() { return state_ == State::onItsWay && wanted_ ? finish() : Order::nothing; }

FramePump::Order FramePump::neverShown() { return state_ == State::onItsWay ? finish() : Order::nothing; }

}  // namespace vmr
