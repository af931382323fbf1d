#include "sim/SimEngine.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/LocalDay.h"
#include "market/Roots.h"
#include "sim/Quantity.h"
#include "sim/TickGrid.h"

namespace vmr {

namespace {
bool isUsable(const std::optional<double>& price) { return price && std::isfinite(*price); }
}  // namespace

SimEngine::SimEngine(SimSetup setup) : setup_(std::move(setup)) {
    for (const BuiltInFuture& row : builtInInstruments) specs_[row.sym] = {row.tick(), row.tickValue};
    if (!setup_.localDay) setup_.localDay = localDay;
    load();
}

SimEngine::~SimEngine() {
    for (const auto timer : {keeping_.retry, keeping_.look})
        if (timer != SerialQueue::noTimer) setup_.main->cancel(timer);
}

// A subscriber that works the account gives notices of its own.
void SimEngine::tellChanges() {
    const unsigned fields = std::exchange(changedFields_, 0u);
    for (unsigned field = 0; fields >> field != 0; ++field)
        if (fields >> field & 1u) changed(static_cast<Field>(field));
}

sim::Date SimEngine::now() const { return sim::dateFrom1970(setup_.clock.now()); }

void SimEngine::onTrade(std::string_view sym, double price, double at) {
    const sim::SimPrices::Market* market = prices_.trade(sym, price, at);
    if (!market) return;
    if (!account_.orders.empty()) match(sym, *market);
    // behind the fills: what it ended did not stand at this price any more
    if (!account_.openTrades.empty()) follow(sym, price);
}

void SimEngine::onQuote(std::string_view sym, double bid, double ask, double at) {
    const sim::SimPrices::Market* market = prices_.quote(sym, bid, ask, at);
    if (market && !account_.orders.empty()) match(sym, *market);
}

void SimEngine::seedLast(std::string_view sym, double price, std::optional<double> when) {
    const double time = setup_.clock.now();
    prices_.seed(sym, price, std::min(when.value_or(time), time));
}

bool SimEngine::marketOpen() const {
    return setup_.session.marketOpen(static_cast<std::int64_t>(std::floor(setup_.clock.now())), false);
}

std::optional<double> SimEngine::stalePrice(std::string_view sym) const {
    const auto age = prices_.of(sym).age(setup_.clock.now());
    if (!age || !marketOpen()) return std::nullopt;
    return *age > freshFor || !watches_.connected(sym) ? age : std::nullopt;
}

void SimEngine::watch(const void* viewer, const std::string& root, const std::string& contract) {
    forget(watches_.open(viewer, root, contract));
}

void SimEngine::roll(const std::string& root, const std::string& contract) {
    if (watches_.roll(root, contract)) forget({root});
}

void SimEngine::forgetPrices() {
    std::vector<std::string> roots;
    for (const auto& market : prices_.all()) roots.push_back(market.root);
    forget(roots);
}

// A position shows the contract in which it was opened once the root follows another.
void SimEngine::forget(const std::vector<std::string>& roots) {
    const Operation operation(*this);
    for (const std::string& root : roots) {
        prices_.forget(root);
        if (account_.openTrades.contains(root)) note(Field::positions);
    }
}

void SimEngine::updateSpecs(const std::map<std::string, Spec>& specs) {
    for (const auto& [sym, spec] : specs) specs_[sym] = spec;
}

double SimEngine::roundTick(std::string_view sym, double price) const {
    const Spec* spec = specs_.find(sym);
    return spec ? sim::TickGrid(spec->tick).nearest(price) : price;
}

std::optional<SimEngine::Order> SimEngine::place(std::string_view sym, Side side, OrderType type, std::int64_t qty,
                                                 Price limit, Price stop, const std::optional<BracketSpec>& bracket) {
    const Operation operation(*this);
    if (!specs_.find(sym) || qty < 1 || !marketOpen()) return std::nullopt;
    // An order at an infinite price or NaN would never fill, and the account could not be saved with it.
    if ((limit && !isUsable(limit)) || (stop && !isUsable(stop))) return std::nullopt;
    Order order = newOrder(sym, side, type, qty);
    order.limitPrice = limit;
    order.stopPrice = stop;
    order.bracket = bracket;
    const bool buys = side == Side::buy;
    if (type == OrderType::market) {
        const auto top = book(sym);
        if (!top || !fill(order, buys ? top->ask : top->bid)) return std::nullopt;
    } else if (type == OrderType::limit) {
        if (!limit) return std::nullopt;
        const auto top = book(sym);
        const bool marketable = top && (buys ? top->ask <= *limit : *limit <= top->bid);
        if (!marketable)
            append(order);
        else if (!fill(order, *limit))
            return std::nullopt;
    } else {
        if (!stop) return std::nullopt;
        append(order);
    }
    persist();
    return order;
}

bool SimEngine::cancel(const Uuid& id) {
    const Operation operation(*this);
    const Order* order = orderOf(id);
    if (!order) return false;
    takeOrder(static_cast<std::size_t>(order - account_.orders.data()));
    persist();
    return true;
}

// Copies the root, here and in `flatten`: `sym` may point into an order that is about to be removed.
void SimEngine::cancelAll(std::string_view sym) {
    const Operation operation(*this);
    removeOrders([root = std::string(sym)](const Order& order) { return order.sym == root; });
    persist();
}

void SimEngine::cancelAll() {
    const Operation operation(*this);
    removeOrders([](const Order&) { return true; });
    persist();
}

bool SimEngine::modify(const Uuid& id, double price) {
    Order* order = orderOf(id);
    return order && move(*order, roundTick(order->sym, price));
}

bool SimEngine::putBack(const Uuid& id, std::string_view leg, double price) {
    Order* order = orderOf(id);
    return order && (leg.empty() ? move(*order, price) : moveLeg(*order, leg, price));
}

bool SimEngine::move(Order& order, double price) {
    const Operation operation(*this);
    if (!(price > 0) || !std::isfinite(price)) return false;
    if (order.limitPrice)
        order.limitPrice = price;
    else if (order.stopPrice)
        order.stopPrice = price;
    note(Field::orders);
    persist();
    return true;
}

bool SimEngine::flatten(std::string_view sym) {
    const Operation operation(*this);
    const auto position = account_.positions.find(sym);
    if (position == account_.positions.end() || position->second.qty == 0) return false;
    // what `place` would refuse must leave the legs where they are
    if (!marketOpen() || !specs_.find(sym) || !book(sym)) return false;
    const std::int64_t qty = position->second.qty;
    const std::string root(sym);
    removeLegs(root);  // first, so that the closing fill does not resize them
    return place(root, qty > 0 ? Side::sell : Side::buy, OrderType::market, sim::sizeOf(qty)).has_value();
}

SimEngine::Order SimEngine::newOrder(std::string_view sym, Side side, OrderType type, std::int64_t qty) {
    Order order;
    order.id = setup_.ids.next();
    order.sym = sym;
    order.side = side;
    order.type = type;
    order.qty = qty;
    order.createdAt = now();
    return order;
}

SimEngine::Order* SimEngine::orderOf(const Uuid& id) {
    for (Order& order : account_.orders)
        if (order.id == id) return &order;
    return nullptr;
}

void SimEngine::append(Order order) {
    account_.orders.push_back(std::move(order));
    note(Field::orders);
}

SimEngine::Order SimEngine::takeOrder(std::size_t at) {
    auto& orders = account_.orders;
    Order order = std::move(orders[at]);
    orders.erase(orders.begin() + static_cast<std::ptrdiff_t>(at));
    note(Field::orders);
    return order;
}

void SimEngine::removeOrders(const std::function<bool(const Order&)>& test) {
    if (std::erase_if(account_.orders, test) > 0) note(Field::orders);
}

void SimEngine::removeLegs(std::string_view sym) {
    removeOrders([sym](const Order& order) { return order.isLeg() && order.sym == sym; });
}

}  // namespace vmr
