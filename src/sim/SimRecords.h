// The simulator's records, as they are held, shown and saved.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Uuid.h"

namespace vmr::sim {

/// A moment as the account file holds it: seconds since 2001-01-01T00:00:00Z, with fraction; always finite.
using Date = double;
constexpr double reference2001 = 978307200.0;  ///< the date 0 in seconds since 1970
constexpr Date dateFrom1970(double seconds) { return seconds - reference2001; }
constexpr double secondsSince1970(Date date) { return date + reference2001; }

enum class Side : std::uint8_t { buy, sell };
enum class OrderType : std::uint8_t { market, limit, stop, stopLimit };
/// Only working orders are held by the engine; a filled one is a copy that went through a fill.
enum class OrderState : std::uint8_t { working, filled, cancelled };

/// The words that name the values in the file and in commands, such as "stopLimit".
std::string_view rawText(Side side);
std::string_view rawText(OrderType type);
std::string_view rawText(OrderState state);
/// The value of exactly that word, or nothing.
std::optional<Side> sideNamed(std::string_view word);
std::optional<OrderType> orderTypeNamed(std::string_view word);
std::optional<OrderState> orderStateNamed(std::string_view word);

/// Tags of the protective orders. Every other order has an empty tag.
inline constexpr std::string_view slTag = "SL";
inline constexpr std::string_view tpTag = "TP";

/// Distances in ticks from the fill price; none means no such leg.
struct BracketSpec {
    std::optional<std::int64_t> slTicks;
    std::optional<std::int64_t> tpTicks;
    bool operator==(const BracketSpec&) const = default;
};

struct Order {
    Uuid id;
    std::string sym;  ///< futures root
    Side side = Side::buy;
    OrderType type = OrderType::market;
    std::int64_t qty = 1;              ///< contracts, at least 1
    std::optional<double> limitPrice;  ///< of a limit, and of a stop-limit
    std::optional<double> stopPrice;   ///< of a stop and of a stop-limit
    OrderState state = OrderState::working;
    Date createdAt = 0;
    std::optional<Date> filledAt;
    std::optional<double> fillPrice;
    std::optional<Uuid> ocoId;           ///< the order that goes when this one fills; may lead nowhere
    std::optional<BracketSpec> bracket;  ///< protective orders to make when this one fills
    std::string tag;                     ///< `slTag`, `tpTag` or empty

    bool isLeg() const { return tag == slTag || tag == tpTag; }
    bool operator==(const Order&) const = default;
};

struct Position {
    std::int64_t qty = 0;  ///< above 0 long, below 0 short
    double avg = 0;        ///< average entry price, 0 when flat
    double realized = 0;   ///< gross result of this root so far, in account currency
    bool operator==(const Position&) const = default;
};

/// The price step of a root and what one step is worth for one contract.
struct Spec {
    double tick = 0;
    double tickValue = 0;
    bool operator==(const Spec&) const = default;
};

struct Quote {
    double bid = 0;
    double ask = 0;
    bool operator==(const Quote&) const = default;
};

struct Fill {
    Uuid id;
    std::string sym;
    Side side = Side::buy;
    std::int64_t qty = 0;
    double price = 0;
    double commission = 0;  ///< charged on this fill
    Date ts = 0;
    std::string tag;  ///< of the order
    bool operator==(const Fill&) const = default;
};

/// One finished round trip.
struct Trade {
    Uuid id;
    std::string sym;
    Side side = Side::buy;  ///< buy for a long
    std::int64_t qty = 0;   ///< the greatest size reached
    double entry = 0;       ///< average price after the last add
    double exit = 0;        ///< average price of all closing quantity
    double pnl = 0;         ///< before fees
    double fees = 0;
    Date openedAt = 0;
    Date closedAt = 0;
    std::string exitTag;  ///< of the order that ended it
    /// The lowest and the highest result before fees that it stood at, by its own fills and the trades seen meanwhile:
    /// at most 0 and `pnl`, at least 0 and `pnl`. Unknown for a trade that began before they were kept.
    std::optional<double> mae{}, mfe{};
    bool operator==(const Trade&) const = default;
};

/// A round trip in progress.
struct OpenTrade {
    Side side = Side::buy;
    std::int64_t maxQty = 0;
    double entryAvg = 0;
    Date openedAt = 0;
    double realizedStart = 0;  ///< the position's `realized` at the opening
    double fees = 0;
    std::int64_t exitQty = 0;
    double exitNotional = 0;                ///< price times quantity of the closing fills
    std::optional<std::string> contract{};  ///< in which it was opened, where that is known
    std::optional<double> mae{}, mfe{};     ///< as in `Trade`, so far
    bool operator==(const OpenTrade&) const = default;
};

using Positions = std::map<std::string, Position, std::less<>>;
using OpenTrades = std::map<std::string, OpenTrade, std::less<>>;

/// Everything of an account that outlives the process.
struct Snapshot {
    double balance = 50000.0;
    double startBalance = 50000.0;
    Positions positions;        ///< flat roots too
    std::vector<Order> orders;  ///< in entry order
    std::vector<Fill> fills;    ///< newest first
    double commission = 2.5;
    std::vector<Trade> trades;  ///< newest first
    OpenTrades openTrades;
    bool operator==(const Snapshot&) const = default;
};

}  // namespace vmr::sim
