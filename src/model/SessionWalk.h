// The session clock for a walk through a series, asked once a day instead of once a bar.
#pragma once

#include <cstdint>

#include "market/SessionTime.h"

namespace vmr {

/// Answers as `SessionTime` does, quickest for moments of one day after another. Moments more than thirty million years
/// away are taken for the nearest one within. Main thread, like the clock it asks.
class SessionWalk {
 public:
    /// `hhmm` is the session's start, 930 for 09:30.
    SessionWalk(SessionTime& session, std::int64_t hhmm)
        : session_(session), start_((hhmm / 100) * 3600 + (hhmm % 100) * 60) {}

    /// The latest session open not after `t`, as `SessionTime::sessionOpenSec` gives it.
    std::int64_t open(std::int64_t t) {
        const std::int64_t ofDay = secondsOfDay(t);
        return midnight_ + start_ - (ofDay < start_ ? day : 0);
    }

    /// Seconds since midnight in New York.
    std::int64_t secondsOfDay(std::int64_t t) {
        t = within(t);
        if (t < from_ || t >= to_) enterDay(t);
        return t - midnight_;
    }

 private:
    static constexpr std::int64_t day = 86400;
    static constexpr std::int64_t limit = 1'000'000'000'000'000;
    static std::int64_t within(std::int64_t t) { return t < -limit ? -limit : t > limit ? limit : t; }
    void enterDay(std::int64_t t);

    SessionTime& session_;
    std::int64_t start_;
    std::int64_t from_ = 0, to_ = 0;  // the stretch that shares a UTC day, hence an offset, and a New York day
    std::int64_t midnight_ = 0;
};

}  // namespace vmr
