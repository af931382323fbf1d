#include <algorithm>
#include <cmath>

#include "sim/Quantity.h"
#include "sim/SimEngine.h"

namespace vmr {

using sim::cappedSum;
using sim::sizeOf;

namespace {
double moneyPerPoint(const sim::Spec& spec) { return spec.tickValue / spec.tick; }

bool sameSign(std::int64_t a, std::int64_t b) { return (a < 0) == (b < 0); }

template <class Record>
void addFront(std::vector<Record>& list, Record record, std::size_t most) {
    list.insert(list.begin(), std::move(record));
    if (list.size() > most) list.resize(most);
}
}  // namespace

std::optional<SimEngine::Booking> SimEngine::bookFill(const Order& order, double price, const Spec& spec) {
    if (order.qty < 1) return std::nullopt;
    const auto row = account_.positions.find(order.sym);
    const Position old = row == account_.positions.end() ? Position{} : row->second;
    const std::int64_t signedQty = order.side == Side::buy ? order.qty : -order.qty;
    const auto newQty = sim::sumOf(old.qty, signedQty);
    if (!newQty) return std::nullopt;

    Booking booking{old.qty, {*newQty, old.avg, old.realized}, 0, commission * static_cast<double>(order.qty)};
    account_.balance -= booking.fee;
    if (old.qty != 0 && !sameSign(old.qty, signedQty)) {
        booking.closed = std::min(sizeOf(old.qty), order.qty);
        const double gained = old.qty > 0 ? price - old.avg : old.avg - price;
        const double pnl = moneyPerPoint(spec) * (gained * static_cast<double>(booking.closed));
        account_.balance += pnl;
        booking.after.realized += pnl;
        if (*newQty == 0)
            booking.after.avg = 0;
        else if (!sameSign(*newQty, old.qty))
            booking.after.avg = price;  // a reversal opens the other side at this fill
    } else {
        booking.after.avg = (old.avg * static_cast<double>(sizeOf(old.qty)) + price * static_cast<double>(order.qty)) /
                            static_cast<double>(sizeOf(*newQty));
    }
    account_.positions[order.sym] = booking.after;
    note(Field::balance);
    note(Field::positions);
    return booking;
}

// A trade of the market, or one of its own fills: the round trip stands at `result` before fees. Whether that is
// farther out than before.
bool SimEngine::widen(sim::OpenTrade& open, double result) {
    // a root with a broken price step must not make the account unsaveable
    if (!open.mae || !open.mfe || !std::isfinite(result) || (result >= *open.mae && result <= *open.mfe)) return false;
    open.mae = std::min(*open.mae, result);
    open.mfe = std::max(*open.mfe, result);
    return true;
}

// What was realized of the round trip, and what is open of it.
void SimEngine::follow(std::string_view sym, double price) {
    const auto open = account_.openTrades.find(sym);
    if (open == account_.openTrades.end()) return;
    const auto position = account_.positions.find(sym);
    const Spec* spec = specs_.find(sym);
    if (position == account_.positions.end() || !spec) return;
    const double points = (price - position->second.avg) * static_cast<double>(position->second.qty);
    if (widen(open->second, position->second.realized - open->second.realizedStart + moneyPerPoint(*spec) * points))
        persistLater();
}

// The whole fee of a reversing order goes to the trade that it ends.
void SimEngine::rollUp(const Order& order, double price, const Booking& booking) {
    const Position& after = booking.after;
    const std::string_view contract = watches_.contract(order.sym);
    const auto opened = [&](double entry, double fees) {
        return OpenTrade{.side = after.qty < 0 ? Side::sell : Side::buy,
                         .maxQty = sizeOf(after.qty),
                         .entryAvg = entry,
                         .openedAt = *order.filledAt,
                         .realizedStart = after.realized,
                         .fees = fees,
                         .contract = contract.empty() ? std::nullopt : std::optional(std::string(contract)),
                         .mae = 0,
                         .mfe = 0};
    };
    if (booking.before == 0) {
        account_.openTrades[order.sym] = opened(after.avg, booking.fee);
        return;
    }
    const auto found = account_.openTrades.find(order.sym);
    if (found == account_.openTrades.end()) return;  // a loaded account may hold a position without its round trip
    OpenTrade& open = found->second;
    open.fees += booking.fee;
    if (booking.closed == 0) {
        open.maxQty = std::max(sizeOf(after.qty), open.maxQty);
        open.entryAvg = after.avg;
        return follow(order.sym, price);
    }
    open.exitQty = cappedSum(open.exitQty, booking.closed);
    open.exitNotional += price * static_cast<double>(booking.closed);
    if (after.qty != 0 && sameSign(after.qty, booking.before)) return follow(order.sym, price);
    widen(open, after.realized - open.realizedStart);
    closeTrade(order, price, open, after.realized);
    if (after.qty == 0)
        account_.openTrades.erase(found);
    else
        open = opened(price, 0);
}

void SimEngine::closeTrade(const Order& order, double price, const OpenTrade& open, double realized) {
    Trade trade{.id = setup_.ids.next(),
                .sym = order.sym,
                .side = open.side,
                .qty = open.maxQty,
                .entry = open.entryAvg,
                .exit = open.exitQty >= 1 ? open.exitNotional / static_cast<double>(open.exitQty) : price,
                .pnl = realized - open.realizedStart,
                .fees = open.fees,
                .openedAt = open.openedAt,
                .closedAt = *order.filledAt,
                .exitTag = order.tag,
                .mae = open.mae,
                .mfe = open.mfe};
    addFront(account_.trades, std::move(trade), maxTrades);
    note(Field::trades);
}

void SimEngine::addFill(const Order& order, double price, double fee) {
    Fill fill{setup_.ids.next(), order.sym, order.side, order.qty, price, fee, *order.filledAt, order.tag};
    addFront(account_.fills, std::move(fill), maxFills);
    note(Field::fills);
}

double SimEngine::unrealized(std::string_view sym) const {
    const auto found = account_.positions.find(sym);
    if (found == account_.positions.end() || found->second.qty == 0) return 0;
    const Position& position = found->second;
    const std::optional<double>& last = this->last(sym);
    const Spec* spec = specs_.find(sym);
    if (!last || !spec) return 0;
    return moneyPerPoint(*spec) * ((*last - position.avg) * static_cast<double>(position.qty));
}

double SimEngine::totalUnrealized() const {
    double sum = 0;
    for (const auto& [sym, position] : account_.positions) sum += unrealized(sym);
    return sum;
}

double SimEngine::dayPnL() const {
    constexpr double longestDay =
        100000;  // seconds, above the 25 hours of a clock change; spares most trades the calendar
    const double time = setup_.clock.now();
    const std::int64_t today = setup_.localDay(time);
    double sum = 0;
    for (const Trade& trade : account_.trades) {
        const double closed = sim::secondsSince1970(trade.closedAt);
        if (std::abs(closed - time) < longestDay && setup_.localDay(closed) == today) sum += trade.pnl - trade.fees;
    }
    return sum + totalUnrealized();
}

void SimEngine::accountReplaced() {
    const Operation operation(*this);
    for (const Field field :
         {Field::balance, Field::startBalance, Field::positions, Field::orders, Field::fills, Field::trades})
        note(field);
}

void SimEngine::resetAccount(double balance) {
    account_ = {};
    account_.balance = account_.startBalance = balance;
    accountReplaced();
    persist();
}

}  // namespace vmr
