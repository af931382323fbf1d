// What a pane had to leave out of the feed, by channel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "base/Clock.h"
#include "market/RepairTally.h"

namespace vmr {

class PaneLog;

/// Keeps count of the elements whose numbers fit no integer, and writes a line to the log for the first of a channel
/// and then at most one a minute. That is a real minute: a market clock that runs fast must not fill the log. Main
/// thread.
class FeedRepairs {
 public:
    /// A server may name any channel: those after so many count together, as `others`.
    static constexpr std::size_t mostChannels = 100;
    static constexpr std::string_view others = "(others)";

    /// Clock and log must outlive it. `strict` ends the process at the first such number.
    FeedRepairs(const Clock& clock, PaneLog& log, bool strict) : clock_(clock), log_(log), strict_(strict) {}

    bool strict() const { return strict_; }
    /// For one message. Allocates nothing but at a channel's first repair and for its lines.
    void add(std::string_view channel, std::uint64_t elements) {
        if (elements > 0) note(channel, elements);
    }

    struct Count {
        std::uint64_t elements = 0;
        std::uint64_t unsaid = 0;  ///< of these, since the last line
        double saidAt = 0;         ///< monotonic
    };
    const std::map<std::string, Count, std::less<>>& byChannel() const { return byChannel_; }

 private:
    void note(std::string_view channel, std::uint64_t elements);

    const Clock& clock_;
    PaneLog& log_;
    bool strict_;
    std::map<std::string, Count, std::less<>> byChannel_;
};

}  // namespace vmr
