// An order as a person asks for it, and why it may be refused.
#pragma once

#include <optional>
#include <string>

#include "sim/SimEngine.h"

namespace vmr::sim {

/// The engine refuses without a word; who lets a person enter orders asks here first. Texts are for a person.
struct OrderRequest {
    std::string sym;
    Side side = Side::buy;
    OrderType type = OrderType::market;
    std::int64_t qty = 1;
    std::optional<double> limit{}, stop{};
    std::optional<BracketSpec> bracket{};
    bool operator==(const OrderRequest&) const = default;

    /// Why the order cannot be entered now; nothing when it can. Stricter than the engine: prices are above 0 and
    /// belong to the type, and a bracket's distances are at least 1 tick.
    std::optional<std::string> problem(const SimEngine& engine) const;
    /// Enters the order, or tells why not.
    std::optional<std::string> enter(SimEngine& engine) const;
};

/// Closes the position of `sym` at the market, or tells why it is kept; nothing to do is no problem.
std::optional<std::string> flattenOrTell(SimEngine& engine, const std::string& sym);

/// Why nothing can stand at `price`.
std::optional<std::string> priceProblem(double price);

}  // namespace vmr::sim
