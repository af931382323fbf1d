#include "model/FeedRepairs.h"

#include <limits>
#include <utility>

#include "model/PaneLog.h"

namespace vmr {

void FeedRepairs::note(std::string_view channel, std::uint64_t elements) {
    constexpr double pace = 60;  // seconds
    auto found = byChannel_.find(channel);
    if (found == byChannel_.end()) {
        if (byChannel_.size() >= mostChannels) channel = others;
        const Count none{.saidAt = -std::numeric_limits<double>::infinity()};
        found = byChannel_.try_emplace(std::string(channel), none).first;
    }
    Count& count = found->second;
    count.elements += elements;
    count.unsaid += elements;
    if (clock_.monotonic() - count.saidAt < pace) return;
    count.saidAt = clock_.monotonic();
    log_.append("→ " + found->first + ": left out " + std::to_string(std::exchange(count.unsaid, 0)) +
                " with a number that fits no integer (" + std::to_string(count.elements) + " so far)");
}

}  // namespace vmr
