// The paper-trading engine: one simulated account, worked against the live trades and quotes of the feed.
#pragma once

#include <functional>
#include <memory>

#include "base/Clock.h"
#include "base/SerialQueue.h"
#include "base/Signal.h"
#include "market/SessionTime.h"
#include "sim/RootMap.h"
#include "sim/SimRecords.h"
#include "sim/SimStats.h"

namespace vmr {

class SimStore;

/// What an engine is given; everything outlives it, the queues' tasks included.
struct SimSetup {
    const Clock& clock;    ///< market time
    SessionTime& session;  ///< the main thread's
    UuidSource ids;
    /// Where the account is kept; none for an account that ends with the process.
    std::shared_ptr<SimStore> store = nullptr;
    MainLoop* main = nullptr;      ///< with a store: times the saves
    SerialQueue* files = nullptr;  ///< with a store: encodes and writes them
    /// The number of the machine's calendar day that holds a moment in seconds since 1970; empty for the machine's own.
    std::function<std::int64_t(double)> localDay = {};
    std::function<void(const std::string& line)> log = {};  ///< what a person should know of the file; may be empty
};

/// Main thread only. There are no partial fills, no slippage and no margin: an order fills at once, for its whole
/// quantity, at one price, and the balance may go below 0. What cannot be done is refused without a word and changes
/// nothing; the operations tell whether they did something. The same events, clock and identities give the same
/// account, byte for byte. Symbols are futures roots such as "NQ".
class SimEngine {
 public:
    using Side = sim::Side;
    using OrderType = sim::OrderType;
    using OrderState = sim::OrderState;
    using Order = sim::Order;
    using BracketSpec = sim::BracketSpec;
    using Position = sim::Position;
    using Spec = sim::Spec;
    using Quote = sim::Quote;
    using Fill = sim::Fill;
    using Trade = sim::Trade;
    using OpenTrade = sim::OpenTrade;
    using Stats = sim::Stats;
    using Price = std::optional<double>;

    static constexpr std::size_t maxFills = 300;
    static constexpr std::size_t maxTrades = 500;

    /// Reads the account of the store; without one, or when it does not decode, it starts with 50000.
    explicit SimEngine(SimSetup setup);
    ~SimEngine();
    SimEngine(const SimEngine&) = delete;
    SimEngine& operator=(const SimEngine&) = delete;

    // The account -----------------------------------------------------------------------------------------------------
    enum class Field : std::uint8_t { balance, startBalance, positions, orders, fills, trades };
    /// Emitted inside an operation, each time that field has changed. A subscriber may read, but must not call an
    /// operation that changes the account.
    Signal<Field> changed;

    double balance() const { return account_.balance; }
    double startBalance() const { return account_.startBalance; }
    /// Every root ever traded since the last reset; flat ones have quantity 0.
    const sim::Positions& positions() const { return account_.positions; }
    const std::vector<Order>& orders() const { return account_.orders; }  ///< working, in entry order
    const std::vector<Fill>& fills() const { return account_.fills; }     ///< newest first, at most `maxFills`
    const std::vector<Trade>& trades() const { return account_.trades; }  ///< newest first, at most `maxTrades`
    const sim::OpenTrades& openTrades() const { return account_.openTrades; }

    double commission = 2.5;  ///< per contract and fill; saved with the next change of the account
    std::int64_t ticketQty = 1;
    std::optional<BracketSpec> ticketBracket = BracketSpec{40, 80};

    // The market; prices change without a notice ----------------------------------------------------------------------
    /// A trade print: the last price, and whatever it fills.
    void onTrade(std::string_view sym, double price);
    /// A top of book with finite sides, and whatever it fills. It stands until the next one, however old.
    void onQuote(std::string_view sym, double bid, double ask);
    /// A last price out of history, used only while there is none, if above 0 and finite. Fills nothing.
    void seedLast(std::string_view sym, double price);
    const sim::RootMap<Quote>& quotes() const { return quotes_; }
    const sim::RootMap<double>& lasts() const { return lasts_; }

    /// Sets these roots; others keep theirs. A tick of 0 makes later results infinite, and the account unsaveable.
    void updateSpecs(const std::map<std::string, Spec>& specs);
    const sim::RootMap<Spec>& specs() const { return specs_; }
    /// The nearest price on the grid of `sym`, halves away from zero; unchanged without a tick above 0.
    double roundTick(std::string_view sym, double price) const;

    // Orders ----------------------------------------------------------------------------------------------------------
    /// Enters an order, while the futures market is open. A market order fills at the touch, a limit that is marketable
    /// at its limit; everything else rests. Nothing for an unknown root, a quantity below 1, a closed market, a missing
    /// or non-finite price of its type, and a market order before any price.
    std::optional<Order> place(std::string_view sym, Side side, OrderType type, std::int64_t qty, Price limit = {},
                               Price stop = {}, const std::optional<BracketSpec>& bracket = {});
    /// Removes an order; the other one of its pair stays.
    bool cancel(const Uuid& id);
    /// Removes every order of the root.
    void cancelAll(std::string_view sym);
    /// Moves an order to `price` on the grid: its limit, or its stop if it has no limit. Fills nothing.
    bool modify(const Uuid& id, double price);
    /// Removes the protective orders and closes the position at the market. When the market is closed or has no price,
    /// the position stays, unprotected.
    bool flatten(std::string_view sym);

    // Protective orders -----------------------------------------------------------------------------------------------
    /// Sets or moves the "SL" or "TP" (`kind`) of a position to `price` on the grid, wherever the market stands.
    bool setProtective(std::string_view sym, std::string_view kind, double price);
    /// Moves the planned "SL" or "TP" (`leg`) of a working entry: whole ticks from its price, at least 1, on its own
    /// side.
    bool modifyProjectedLeg(const Uuid& id, std::string_view leg, double price);
    struct LegPrices {
        Price sl;
        Price tp;
        bool operator==(const LegPrices&) const = default;
    };
    /// Where the planned legs of a working entry stand; nothing for any other order.
    LegPrices projectedBracket(const Order& order) const;
    /// A working order, not itself protective, that carries a bracket.
    static bool isPendingEntry(const Order& order);

    // Results ---------------------------------------------------------------------------------------------------------
    /// Open result at the last trade, without the fees to close; 0 when flat or without a price.
    double unrealized(std::string_view sym) const;
    double totalUnrealized() const;
    /// Results after fees of the trades closed on the machine's calendar day, and the open result.
    double dayPnL() const;
    static Stats stats(std::span<const Trade> trades) { return sim::statsOf(trades); }
    /// Starts anew: no position, order, fill or trade. Prices, commission and ticket stay.
    void resetAccount(double balance);

    // The file --------------------------------------------------------------------------------------------------------
    /// Changes are written about a second after the first of them; a failed write is tried again every five.
    /// Writes now what is not written yet, before the process ends; whether all is written.
    bool flushPendingSave();
    /// Whether changes are kept: not without a store, nor while another process holds the account's file.
    bool keepsAccount() const;
    sim::Snapshot snapshot() const;

 private:
    static constexpr double saveDelay = 1.0;
    static constexpr double retryDelay = 5.0;
    struct Booking {
        std::int64_t before;  // the position's quantity
        Position after;
        std::int64_t closed;
        double fee;
    };

    sim::Date now() const;
    std::optional<Quote> book(std::string_view sym) const;
    void match(std::string_view sym);
    bool fill(Order& order, double price);
    std::optional<Booking> bookFill(const Order& order, double price, const Spec& spec);
    void rollUp(const Order& order, double price, const Booking& booking);
    void closeTrade(const Order& order, double price, const OpenTrade& open, double realized);
    void addFill(const Order& order, double price, double fee);
    void reconcileBrackets(std::string_view sym, std::int64_t newQty);
    void buildLegs(const Order& filled, double price, std::int64_t qty, double tick);
    void relinkOco(std::string_view sym);

    Order newOrder(std::string_view sym, Side side, OrderType type, std::int64_t qty);
    Order* orderOf(const Uuid& id);
    void append(Order order);
    void removeOrders(const std::function<bool(const Order&)>& test);
    void removeLegs(std::string_view sym);
    Order takeOrder(std::size_t at);

    void load();
    void persist();
    void save();
    void saved(std::uint64_t revision, const std::optional<std::string>& problem);
    void log(const std::string& line) const;

    SimSetup setup_;
    sim::Snapshot account_;  // its commission is `commission`
    sim::RootMap<Quote> quotes_;
    sim::RootMap<double> lasts_;
    sim::RootMap<Spec> specs_;

    bool persistPending_ = false;
    std::uint64_t revision_ = 0;  // counts changes
    std::uint64_t savedRevision_ = 0;
    bool saveFails_ = false;
    SerialQueue::TimerId retry_ = SerialQueue::noTimer;
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

}  // namespace vmr
