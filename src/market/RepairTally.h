// Numbers of the feed that fit no integer, counted instead of believed.
#pragma once

#include <cstdint>
#include <optional>

namespace vmr {

/// Goes through the readers of one payload and counts the elements (bar, minute, level, session, trade) that they leave
/// out because a number in them fits no 64-bit integer. A strict one ends the process there. One thread.
class RepairTally {
 public:
    explicit RepairTally(bool strict = false) : strict_(strict) {}

    /// `value` truncated toward zero. Nothing where no integer holds it: that is counted, and the caller leaves its
    /// element out. `what` names the value where it is `fatal`.
    std::optional<std::int64_t> integer(double value, const char* what);

    std::uint64_t count() const { return count_; }

 private:
    bool strict_;
    std::uint64_t count_ = 0;
};

}  // namespace vmr
