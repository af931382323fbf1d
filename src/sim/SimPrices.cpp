#include "sim/SimPrices.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "sim/TickGrid.h"

namespace vmr::sim {

namespace {
bool isPrice(double price) { return price > 0 && price <= std::numeric_limits<double>::max(); }
}  // namespace

const SimPrices::Market* SimPrices::trade(std::string_view sym, double price, double now) {
    if (!isPrice(price)) return nullptr;
    Market& market = markets_[sym];
    market.last = price;
    market.lastAt = now;
    if (market.quote && market.quote->bid <= price && price <= market.quote->ask) market.quoteAt = now;
    return &market;
}

const SimPrices::Market* SimPrices::quote(std::string_view sym, double bid, double ask, double now) {
    if (!isPrice(bid) || !isPrice(ask) || bid > ask) return nullptr;
    Market& market = markets_[sym];
    market.quote = {bid, ask};
    market.quoteAt = now;
    return &market;
}

void SimPrices::seed(std::string_view sym, double price, double when) {
    if (!isPrice(price)) return;
    Market& market = markets_[sym];
    if (market.last) return;
    market.last = price;
    market.lastAt = when;
}

void SimPrices::forget(std::string_view sym) {
    if (Market* market = markets_.find(sym)) *market = {};
}

const SimPrices::Market& SimPrices::of(std::string_view sym) const {
    static const Market none;
    const Market* market = markets_.find(sym);
    return market ? *market : none;
}

std::optional<Quote> SimPrices::Market::book(const Spec* spec) const {
    if (quote) return quote;
    if (!last || !spec) return std::nullopt;
    const TickGrid grid(spec->tick);
    return Quote{grid.moved(*last, -1), grid.moved(*last, 1)};
}

std::optional<double> SimPrices::Market::age(double now) const {
    if (!quote && !last) return std::nullopt;
    return std::max(0.0, now - (quote ? quoteAt : lastAt));
}

}  // namespace vmr::sim
