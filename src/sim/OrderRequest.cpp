#include "sim/OrderRequest.h"

#include <cmath>

namespace vmr::sim {

namespace {
using Problem = std::optional<std::string>;

Problem bracketProblem(const std::optional<BracketSpec>& bracket) {
    if (!bracket || (bracket->slTicks.value_or(1) >= 1 && bracket->tpTicks.value_or(1) >= 1)) return std::nullopt;
    return "a stop or target must be at least 1 tick away";
}

// Which prices an order of the type has, and whether they are prices.
Problem pricesProblem(const OrderRequest& request) {
    const bool takesLimit = request.type == OrderType::limit || request.type == OrderType::stopLimit;
    const bool takesStop = request.type == OrderType::stop || request.type == OrderType::stopLimit;
    const std::string name = "a " + std::string(rawText(request.type)) + " order";
    if (takesLimit && !request.limit) return name + " needs a limit price";
    if (takesStop && !request.stop) return name + " needs a stop price";
    if (!takesLimit && request.limit) return name + " takes no limit price";
    if (!takesStop && request.stop) return name + " takes no stop price";
    for (const auto& price : {request.limit, request.stop})
        if (auto problem = price ? priceProblem(*price) : std::nullopt) return problem;
    return std::nullopt;
}
}  // namespace

Problem priceProblem(double price) {
    if (price > 0 && std::isfinite(price)) return std::nullopt;
    return "a price must be above 0";
}

Problem OrderRequest::problem(const SimEngine& engine) const {
    if (!engine.specs().find(sym)) return "unknown root " + sym;
    if (qty < 1) return "the quantity must be at least 1";
    if (auto wrong = pricesProblem(*this)) return wrong;
    if (auto wrong = bracketProblem(bracket)) return wrong;
    if (!engine.marketOpen()) return "the market is closed";
    if (type == OrderType::market && !engine.book(sym)) return "there is no price of " + sym + " yet";
    return std::nullopt;
}

Problem OrderRequest::enter(SimEngine& engine) const {
    if (auto wrong = problem(engine)) return wrong;
    if (engine.place(sym, side, type, qty, limit, stop, bracket)) return std::nullopt;
    return "the position would be too large";
}

Problem flattenOrTell(SimEngine& engine, const std::string& sym) {
    const auto position = engine.positions().find(sym);
    if (position == engine.positions().end() || position->second.qty == 0 || engine.flatten(sym)) return std::nullopt;
    return engine.marketOpen() ? "No price yet — position kept" : "Market closed — position kept";
}

}  // namespace vmr::sim
