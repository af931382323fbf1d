// The option chains of the sources, one for each trading day.
#pragma once

#include <cstdint>
#include <map>
#include <utility>

#include "relay/OptionChain.h"

namespace vmr::relay {

/// Makes chains when asked and keeps the latest. The relay's thread.
class ChainBook {
 public:
    explicit ChainBook(DerivedMarket& market) : market_(market) {}

    DerivedMarket& market() { return market_; }

    /// The chain of the session; valid until some other chains have been asked for.
    const OptionChain& chain(const OptionSource& source, const MarketSession& session);

    /// Drops all that it and its market have made so far.
    void forget();

 private:
    DerivedMarket& market_;
    std::map<std::pair<const OptionSource*, std::int64_t>, OptionChain> chains_;
};

}  // namespace vmr::relay
