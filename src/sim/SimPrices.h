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
    // Each tells whether it was a price that somebody could have traded at; anything else changes nothing.
    bool trade(std::string_view sym, double price, double now);
    bool quote(std::string_view sym, double bid, double ask, double now);
    /// Only while there is no last price; `when` it was one.
    bool seed(std::string_view sym, double price, double when);
    /// They were those of another contract.
    void forget(std::string_view sym);

    const RootMap<Quote>& quotes() const { return quotes_; }
    const RootMap<double>& lasts() const { return lasts_; }

    /// The touch: the quote, or half a tick around the last price; nothing before both.
    std::optional<Quote> book(std::string_view sym, const Spec* spec) const;
    /// The age in seconds of what `book` is made of. A trade within the quote shows that it is still good. Nothing
    /// where there is no price.
    std::optional<double> age(std::string_view sym, double now) const;

 private:
    struct Times {
        double last = 0, quote = 0;
    };
    RootMap<Quote> quotes_;
    RootMap<double> lasts_;
    RootMap<Times> times_;
};

}  // namespace vmr::sim
