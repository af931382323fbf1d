// What the chart shows of the paper account and may do to it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Uuid.h"

namespace vmr {

/// The open position of a root; `qty` is never 0, negative short.
struct PositionLine {
    std::int64_t qty = 0;
    double avg = 0;          ///< average entry price
    std::string contract{};  ///< in which it was opened, where the root's prices are another one's now; else empty
};

/// An order that rests at a price.
struct OrderLine {
    Uuid id;
    double price = 0;
    bool buy = true;
    std::int64_t qty = 0;
    std::string_view kind;  ///< "LMT", "STP", "STP LMT", or "SL" and "TP" for protective orders
};

/// A protective leg that an entry order will get when it fills.
struct ProjectedLeg {
    Uuid id;               ///< of the entry order
    std::string_view leg;  ///< "SL" or "TP"
    double price = 0;
};

/// Of one root, in entry order; an entry's stop comes before its target.
struct TradingLines {
    std::optional<PositionLine> position;
    std::vector<OrderLine> orders;
    std::vector<ProjectedLeg> legs;
    std::string contract{};          ///< whose prices the root has; empty where that is not known
    double tick = 0, tickValue = 5;  ///< the root's price step, 0 where it is not known, and its worth for one contract
};

/// The account as the chart reaches it. Roots are futures roots such as "NQ". Main thread.
class ChartTrading {
 public:
    virtual ~ChartTrading() = default;

    /// Fills `out`, reusing its memory.
    virtual void lines(const std::string& root, TradingLines& out) const = 0;
    /// What the position has gained so far, at the last trade; 0 without one.
    virtual double unrealized(const std::string& root) const = 0;
    virtual std::size_t workingCount(const std::string& root) const = 0;
    virtual std::optional<double> last(const std::string& root) const = 0;
    /// Seconds since the root had a price, where a person who orders must be told; nothing while it is fresh.
    virtual std::optional<double> stalePrice(const std::string& /*root*/) const { return std::nullopt; }
    virtual std::int64_t ticketQty() const = 0;
    virtual double roundTick(const std::string& root, double price) const = 0;
    /// Whether the account can be changed now.
    virtual bool changeable() const { return true; }
    /// The same, where a person wants to change it: where it cannot be, the person is told why.
    virtual bool mayChange() const { return changeable(); }

    /// `side` "buy" or "sell", `type` "limit" or "stop".
    virtual void place(const std::string& root, std::string_view side, std::string_view type, double price) = 0;
    virtual void cancel(const Uuid& id) = 0;
    virtual void cancelAll(const std::string& root) = 0;
    /// Both move to the nearest price on the root's grid.
    virtual void modify(const Uuid& id, double price) = 0;
    virtual void modifyProjectedLeg(const Uuid& id, std::string_view leg, double price) = 0;
    /// Puts an order, or its planned `leg` where that is not empty, back to a price that it had, on the grid or not.
    virtual void putBack(const Uuid& id, std::string_view leg, double price) = 0;
    /// `kind` "SL" or "TP".
    virtual void setProtective(const std::string& root, std::string_view kind, double price) = 0;
    virtual void flatten(const std::string& root) = 0;
};

}  // namespace vmr
