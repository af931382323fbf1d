#include "relay/ChainBook.h"

namespace vmr::relay {

namespace {
constexpr std::size_t daysKept = 4;
}

const OptionChain& ChainBook::chain(const OptionSource& source, const MarketSession& session) {
    const auto key = std::pair(&source, session.start);
    if (const auto found = chains_.find(key); found != chains_.end()) return found->second;
    const auto first = chains_.lower_bound({&source, INT64_MIN});
    const auto last = chains_.upper_bound({&source, INT64_MAX});
    if (static_cast<std::size_t>(std::distance(first, last)) >= daysKept) chains_.erase(first);
    const double ratio = dayRatio(source, market_.seed(), session.start);
    return chains_.try_emplace(key, source, session, ratio, market_.seed()).first->second;
}

void ChainBook::forget() {
    chains_.clear();
    market_.forget();
}

}  // namespace vmr::relay
