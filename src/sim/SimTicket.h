// The order ticket of the simulator's panel: what it holds, what its buttons do, and what asks for a second press.
#pragma once

#include <optional>
#include <string>

#include "sim/OrderRequest.h"

namespace vmr::sim {

/// A ticket is a value. `root` is that of the chart beside which it stands; empty where nothing can be traded. What is
/// asked for and cannot be done is told in a person's words, and changes nothing.
struct SimTicket {
    std::int64_t qty = 1;
    std::string limitText{}, stopText{};  ///< as typed
    bool bracketOn = true;
    std::int64_t slTicks = 40, tpTicks = 80;  ///< distances: ticks or points, as `useTicks` says
    bool useTicks = true;
    bool operator==(const SimTicket&) const = default;

    static constexpr std::int64_t leastQty = 1, mostQty = 100;
    static constexpr std::int64_t mostDistance = 100000;
    /// Brings quantity and distances to the nearest that the steppers offer.
    void keepWithinRange();

    /// A distance of the ticket in ticks of `root`: rounded, halves away from zero. Unchanged while the ticket counts
    /// in ticks, and for a root without a tick.
    std::int64_t toTicks(std::int64_t value, const SimEngine& engine, const std::string& root) const;
    /// What an entry carries; nothing while the bracket is off. A distance below 1 is no leg.
    std::optional<BracketSpec> bracket(const SimEngine& engine, const std::string& root) const;
    /// The engine's ticket, by which the chart's menu enters orders, becomes this one.
    void syncTicketDefaults(SimEngine& engine, const std::string& root) const;

    using Price = SimEngine::Price;
    /// The order that `place` would enter. A market order against the position reverses it: it is for the position's
    /// contracts and the ticket's quantity.
    OrderRequest request(const SimEngine& engine, const std::string& root, Side side, OrderType type, Price limit,
                         Price stop) const;
    /// Enters an order, or tells why not. An order that needs a price and has none changes nothing at all.
    std::optional<std::string> place(SimEngine& engine, const std::string& root, Side side, OrderType type,
                                     Price limit = {}, Price stop = {}) const;

    /// The price field of a limit or a stop button; null for other types.
    std::string* fieldOf(OrderType type);
    const std::string* fieldOf(OrderType type) const { return const_cast<SimTicket*>(this)->fieldOf(type); }
    /// Moves the price of the field by so many ticks, on the grid; an empty field begins at the last price. A text that
    /// is no price stays, and so does a price that would not be above 0.
    void stepPrice(const SimEngine& engine, const std::string& root, OrderType type, int steps);

    /// The text of a protecting button, "+ SL (40t)"; nothing where it is not shown: without a position or a known tick
    /// of `sym`, and while such an order stands. `kind` is "SL" or "TP".
    std::optional<std::string> protectText(const SimEngine& engine, const std::string& sym,
                                           std::string_view kind) const;
    /// What it does: the stop or target at the ticket's distance from the position's average. Points are those of
    /// `sym`, whatever chart the ticket stands beside.
    std::optional<std::string> protect(SimEngine& engine, const std::string& sym, std::string_view kind) const;
};

/// Why an order is so unusual that a person is asked for a second press, such as "Buy limit 24,600 is 0.6 % through the
/// market"; nothing for any other. Market orders of more than `usualContracts`, or to a position of more, and limits
/// through the market by more than `usualDepth`.
std::optional<std::string> unusual(const OrderRequest& request, const SimEngine& engine);
constexpr std::int64_t usualContracts = 20;
constexpr double usualDepth = 0.005;  ///< as a share of the touch

}  // namespace vmr::sim
