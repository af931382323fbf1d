#include "sim/SimPrices.h"

#include <algorithm>
#include <cmath>

#include "sim/TickGrid.h"

namespace vmr::sim {

namespace {
bool isPrice(double price) { return price > 0 && std::isfinite(price); }
}  // namespace

bool SimPrices::trade(std::string_view sym, double price, double now) {
    if (!isPrice(price)) return false;
    lasts_[sym] = price;
    Times& times = times_[sym];
    times.last = now;
    const Quote* quote = quotes_.find(sym);
    if (quote && quote->bid <= price && price <= quote->ask) times.quote = now;
    return true;
}

bool SimPrices::quote(std::string_view sym, double bid, double ask, double now) {
    if (!isPrice(bid) || !isPrice(ask) || bid > ask) return false;
    quotes_[sym] = {bid, ask};
    times_[sym].quote = now;
    return true;
}

bool SimPrices::seed(std::string_view sym, double price, double when) {
    if (!isPrice(price) || lasts_.find(sym)) return false;
    lasts_[sym] = price;
    times_[sym].last = when;
    return true;
}

void SimPrices::forget(std::string_view sym) {
    quotes_.erase(sym);
    lasts_.erase(sym);
}

std::optional<Quote> SimPrices::book(std::string_view sym, const Spec* spec) const {
    if (const Quote* quote = quotes_.find(sym)) return *quote;
    const double* last = lasts_.find(sym);
    if (!last || !spec) return std::nullopt;
    const TickGrid grid(spec->tick);
    return Quote{grid.moved(*last, -1), grid.moved(*last, 1)};
}

std::optional<double> SimPrices::age(std::string_view sym, double now) const {
    const bool quoted = quotes_.find(sym) != nullptr;
    const Times* times = quoted || lasts_.find(sym) ? times_.find(sym) : nullptr;
    if (!times) return std::nullopt;
    return std::max(0.0, now - (quoted ? times->quote : times->last));
}

}  // namespace vmr::sim
