// The paper-trading engine: one simulated account, worked against the live trades and quotes of the feed.
#pragma once

#include <functional>
#include <memory>

#include "base/Clock.h"
#include "base/SerialQueue.h"
#include "base/Signal.h"
#include "market/SessionTime.h"
#include "sim/RootMap.h"
#include "sim/SimPrices.h"
#include "sim/SimRecords.h"
#include "sim/SimStats.h"
#include "sim/SimWatches.h"

namespace vmr {

class SimStore;

/// What an engine is given; everything outlives it, the queues' tasks included.
struct SimSetup {
    const Clock& clock;    ///< market time
    SessionTime& session;  ///< the main thread's
    UuidSource ids;
    /// Where the account is kept; none for an account that ends with the process.
    std::shared_ptr<SimStore> store = nullptr;
    MainLoop* main = nullptr;      ///< with a store: times the saves and the looks at its lock
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
    /// `keeping` is how the account is kept: `keepsAccount`, `problem`, `lastError` and `lastSave`.
    enum class Field : std::uint8_t { balance, startBalance, positions, orders, fills, trades, keeping };
    /// Emitted behind an operation, once for each field that it has changed; all of the account is as the operation
    /// leaves it by then. A market event that fills orders is one operation.
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
    /// A trade print: the last price, and whatever it fills. A price that is not above 0 is ignored. `at` is market
    /// time in seconds since 1970, for a caller who has just read the clock; now without.
    void onTrade(std::string_view sym, double price, double at);
    void onTrade(std::string_view sym, double price) { onTrade(sym, price, setup_.clock.now()); }
    /// A top of book, and whatever it fills. It stands until the next one, however old. One with a side that is not
    /// above 0, or with the bid above the ask, is not a market and is ignored as a whole.
    void onQuote(std::string_view sym, double bid, double ask, double at);
    void onQuote(std::string_view sym, double bid, double ask) { onQuote(sym, bid, ask, setup_.clock.now()); }
    /// A last price out of history, used only while there is none, if above 0 and finite. Fills nothing. `when` it was
    /// one, in seconds since 1970; now without.
    void seedLast(std::string_view sym, double price, std::optional<double> when = {});
    const std::optional<double>& last(std::string_view sym) const { return prices_.of(sym).last; }
    const std::optional<Quote>& quote(std::string_view sym) const { return prices_.of(sym).quote; }
    const sim::SimPrices& prices() const { return prices_; }
    /// The touch: the quote, or half a tick around the last price; nothing before both.
    std::optional<Quote> book(std::string_view sym) const { return prices_.of(sym).book(specs_.find(sym)); }
    /// The age in seconds of the price that an order would fill at, where a person must be told of it: in an open
    /// market, when it is above `freshFor`, or when the root's contract comes over no connection.
    std::optional<double> stalePrice(std::string_view sym) const;
    static constexpr double freshFor = 15;  ///< seconds of market time
    /// The futures market's hours, now.
    bool marketOpen() const;
    sim::Date now() const;  ///< market time

    // Who shows which contract. When a root's contract changes, its prices are forgotten, and nothing of it matches
    // until a price of the new contract comes; positions and orders stay.
    /// `viewer`, any address of its own, shows this contract of `root` and nothing else; an empty root is none.
    void watch(const void* viewer, const std::string& root, const std::string& contract);
    /// Whether the connection of `viewer` stands.
    void setConnected(const void* viewer, bool connected) { watches_.setConnected(viewer, connected); }
    /// The server names the contract of a root; those that somebody shows change when it is opened.
    void roll(const std::string& root, const std::string& contract);
    /// Market time was set back: prices from what is the future now are no market, of whatever root.
    void forgetPrices();
    const sim::SimWatches& watches() const { return watches_; }

    /// Sets these roots; others keep theirs. A tick of 0 makes later results infinite, and the account unsaveable.
    void updateSpecs(const std::map<std::string, Spec>& specs);
    const sim::RootMap<Spec>& specs() const { return specs_; }
    /// The nearest price on the grid of `sym`, halves away from zero, equal to the decimal that the feed prints;
    /// unchanged without a tick above 0.
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
    /// Removes every order.
    void cancelAll();
    /// Moves an order to `price` on the grid: its limit, or its stop if it has no limit. Fills nothing.
    bool modify(const Uuid& id, double price);
    /// Removes the protective orders and closes the position at the market. When the market is closed or has no price,
    /// nothing changes.
    bool flatten(std::string_view sym);

    // Protective orders -----------------------------------------------------------------------------------------------
    /// Sets or moves the "SL" or "TP" (`kind`) of a position to `price` on the grid, wherever the market stands.
    bool setProtective(std::string_view sym, std::string_view kind, double price);
    /// Moves the planned "SL" or "TP" (`leg`) of a working entry: whole ticks from its price, at least 1, on its own
    /// side.
    bool modifyProjectedLeg(const Uuid& id, std::string_view leg, double price);
    /// Puts an order, or its planned `leg` where that is not empty, back to a price that it had, on the grid or not.
    bool putBack(const Uuid& id, std::string_view leg, double price);
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
    /// The machine's calendar day that holds `date`.
    std::int64_t dayOf(sim::Date date) const { return setup_.localDay(sim::secondsSince1970(date)); }
    static Stats stats(std::span<const Trade> trades) { return sim::statsOf(trades); }
    /// Starts anew: no position, order, fill or trade. Prices, commission and ticket stay.
    void resetAccount(double balance);

    // The file --------------------------------------------------------------------------------------------------------
    // Changes are written about a second after the first of them; a failed write is tried again every five. While
    // another process holds the account, this one looks every second whether that has ended. It then takes the account
    // over as the file has it, and what was traded here meanwhile is gone.
    /// Writes now what is not written yet, before the process ends; whether all is written.
    bool flushPendingSave();
    /// Whether changes are kept: not without a store, nor while another process holds the account's file.
    bool keepsAccount() const;
    /// Another process has the account's file.
    bool heldElsewhere() const { return setup_.store && !keepsAccount(); }
    /// What a person must know for as long as it lasts: the account is read only, is not saved, or could not be read.
    std::optional<std::string> problem() const;
    /// The newest thing that went wrong with the file, also when it is over.
    const std::optional<std::string>& lastError() const { return keeping_.lastError; }
    /// When the file was last written by this process.
    std::optional<sim::Date> lastSave() const { return keeping_.savedAt; }
    sim::Snapshot snapshot() const;

 private:
    static constexpr double saveDelay = 1.0;
    static constexpr double excursionDelay = 10.0;  // for what only the market has changed
    static constexpr double retryDelay = 5.0;
    static constexpr double lookPeriod = 1.0;  // real seconds between two looks at another process's lock
    struct Booking {
        std::int64_t before;  // the position's quantity
        Position after;
        std::int64_t closed;
        double fee;
    };

    /// While one exists, notices of the account wait; the end of the outermost one gives them.
    class [[nodiscard]] Operation {
     public:
        explicit Operation(SimEngine& engine) : engine_(engine) { ++engine_.operations_; }
        Operation(const Operation&) = delete;
        ~Operation() {
            if (--engine_.operations_ == 0 && engine_.changedFields_ != 0) engine_.tellChanges();
        }

     private:
        SimEngine& engine_;
    };
    void note(Field field) { changedFields_ |= 1u << static_cast<unsigned>(field); }
    void tellChanges();

    void forget(const std::vector<std::string>& roots);
    void match(std::string_view sym, const sim::SimPrices::Market& market);
    bool fill(Order& order, double price);
    std::optional<Booking> bookFill(const Order& order, double price, const Spec& spec);
    void rollUp(const Order& order, double price, const Booking& booking);
    void closeTrade(const Order& order, double price, const OpenTrade& open, double realized);
    static bool widen(sim::OpenTrade& open, double result);
    void follow(std::string_view sym, double price);
    void addFill(const Order& order, double price, double fee);
    void reconcileBrackets(std::string_view sym, std::int64_t newQty);
    void buildLegs(const Order& filled, double price, std::int64_t qty, double tick);
    void relinkOco(std::string_view sym);

    Order newOrder(std::string_view sym, Side side, OrderType type, std::int64_t qty);
    Order* orderOf(const Uuid& id);
    bool move(Order& order, double price);
    bool moveLeg(Order& order, std::string_view leg, double price);
    void append(Order order);
    void removeOrders(const std::function<bool(const Order&)>& test);
    void removeLegs(std::string_view sym);
    Order takeOrder(std::size_t at);

    void load();
    void takeOver();
    void accountReplaced();
    void noteError(const std::string& line);
    void persist();
    void persistLater();
    void save();
    void saved(std::uint64_t revision, const std::optional<std::string>& problem);
    void log(const std::string& line) const;

    /// How the account is kept.
    struct Keeping {
        bool pending = false;        // a save is due
        bool later = false;          // one is to be due
        std::uint64_t revision = 0;  // counts changes
        std::uint64_t savedRevision = 0;
        std::optional<std::string> failure;  // of the last save, until one succeeds
        bool setAside = false;               // the file could not be read, and is kept until the first save
        std::optional<std::string> lastError;
        std::optional<sim::Date> savedAt;
        SerialQueue::TimerId retry = SerialQueue::noTimer, look = SerialQueue::noTimer;
    };

    SimSetup setup_;
    sim::Snapshot account_;  // its commission is `commission`
    sim::SimPrices prices_;
    sim::SimWatches watches_;
    sim::RootMap<Spec> specs_;
    Keeping keeping_;
    int operations_ = 0;          // under way, one inside the other
    unsigned changedFields_ = 0;  // of the operation under way, a bit for each
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

}  // namespace vmr
