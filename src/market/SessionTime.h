// The New York exchange clock. There is no holiday table: a holiday counts as a normal trading day.
#pragma once

#include <cstdint>
#include <unordered_map>

namespace vmr {

/// Answers what the exchange calendar says at a moment. Times are seconds since 1970; a session start is hhmm, so 930
/// is 09:30. Moments beyond `farthest` count as that one. Not safe from two threads: each thread has an instance of its
/// own.
class SessionTime {
 public:
    static constexpr std::int64_t farthest = std::int64_t{1} << 56;  ///< seconds from 1970, either way

    /// `fatal` when the zone America/New_York cannot be found.
    SessionTime();

    /// Seconds to add to UTC for New York wall time; negative. Answered per UTC day: on the two days of a clock change
    /// the whole day gets the answer for the moment asked first. No zone look-up for a day already asked.
    std::int64_t offset(std::int64_t t);

    /// Day of the week in New York, Sunday 0 to Saturday 6.
    int weekday(std::int64_t t);

    /// Stocks: Monday to Friday 09:30 to 16:00. Futures: Sunday 18:00 to Friday 17:00 but for 17:00 to 18:00 each day.
    bool marketOpen(std::int64_t t, bool isStock);

    /// The latest session open not after `t`, with one offset for the whole computation; for tight loops.
    std::int64_t sessionOpenSec(std::int64_t t, int hhmm);

    /// The same by the calendar: right on clock-change days too, slower.
    static std::int64_t calendarSessionOpenSec(std::int64_t t, int hhmm);

    /// `offset` by the calendar, right at every moment; a zone look-up each time.
    static std::int64_t calendarOffset(std::int64_t t);

 private:
    std::unordered_map<std::int64_t, std::int64_t> offsetByDay_;
    std::int64_t lastDay_;
    std::int64_t lastOffset_ = 0;
};

}  // namespace vmr
