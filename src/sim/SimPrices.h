// The market as the account knows it: by root the last price and the quote, and how old they are.
#pragma once

#include <optional>
#include <string_view>

#include "sim/RootMap.h"
#include "sim/SimRecords.h"

namespace vmr::sim {

/// A quote stands until the next one, however old. All times are market time, seconds since 1970. Main thread; nothing
/// is allocated for a root that is known.
class SimPrices {
 public:
    struct Market {
        std::optional<double> last;
        std::optional<Quote> quote;
        double lastAt = 0;   ///< when `last` was traded
        double quoteAt = 0;  ///< when `quote` came, or was last seen to be good

        /// The touch: the quote, or half a tick around the last price; nothing before both.
        std::optional<Quote> book(const Spec* spec) const;
        /// The age in seconds of what `book` is made of. Nothing where there is no price.
        std::optional<double> age(double now) const;
    };

    // Each gives the root's market as it is now; null, and nothing changes, when nobody could have traded at the price.
    /// A trade within the quote shows that the quote is still good.
    const Market* trade(std::string_view sym, double price, double now);
    const Market* quote(std::string_view sym, double bid, double ask, double now);
    /// Only while there is no last price; `when` it was one.
    void seed(std::string_view sym, double price, double when);
    /// They were those of another contract.
    void forget(std::string_view sym);

    /// Empty for a root that was never seen, as for one that was forgotten.
    const Market& of(std::string_view sym) const;
    const RootMap<Market>& all() const { return markets_; }

 private:
    RootMap<Market> markets_;
};

}  // namespace vmr::sim
