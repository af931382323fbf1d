// Trading days and their minutes, the same whatever was asked before.
#pragma once

#include <cstdint>
#include <optional>

#include "market/SessionTime.h"
#include "relay/Instruments.h"

namespace vmr::relay {

/// A moment's place: trading days are counted without weekends, minutes from the evening open at 18:00 New York.
struct SessionPlace {
    std::int64_t day = 0;
    int minute = 0;  ///< 0 to 1379
    bool operator==(const SessionPlace&) const = default;
};

/// A trading day runs from 18:00 New York on the eve to 17:00 and belongs to all instruments; stocks and indices trade
/// within it from 09:30 to 16:00. One thread.
class SessionCalendar {
 public:
    static constexpr int minutesPerDay = 1380;

    /// Nothing between 17:00 and 18:00 and on weekends.
    std::optional<SessionPlace> place(std::int64_t t);

    /// Whether the family trades at `t`.
    bool open(std::int64_t t, Family family);

    /// When the trading day's evening open was.
    std::int64_t dayStart(std::int64_t day);

    /// The open of the fifth trading day before the one that `t` lies in or, on a pause, follows.
    std::int64_t historyStart(std::int64_t t);

    /// Days since 1970 of the New York date at `t`.
    std::int64_t date(std::int64_t t);

 private:
    std::int64_t offset(std::int64_t t);
    SessionTime session_;
};

}  // namespace vmr::relay
