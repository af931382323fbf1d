#include <algorithm>

#include "sim/SimEngine.h"

namespace vmr {

namespace {
using sim::Order;
using sim::OrderType;
using sim::Quote;
using sim::Side;

// The last trade or the touch reaches the limit; either is enough.
bool limitTriggers(const Order& order, double last, const std::optional<Quote>& book) {
    const double limit = *order.limitPrice;
    if (order.side == Side::buy) return last <= limit || (book && limit >= book->ask);
    return limit <= last || (book && limit <= book->bid);
}

bool stopTriggers(const Order& order, double last) {
    return order.side == Side::buy ? *order.stopPrice <= last : last <= *order.stopPrice;
}

double stopFillPrice(const Order& order, const Quote& book) {
    return order.side == Side::buy ? std::max(*order.stopPrice, book.ask) : std::min(*order.stopPrice, book.bid);
}

// Where the order fills now, if it does.
std::optional<double> fillPriceOf(const Order& order, double last, const std::optional<Quote>& book) {
    if (order.type == OrderType::limit && order.limitPrice && limitTriggers(order, last, book)) return order.limitPrice;
    if (order.type == OrderType::stop && order.stopPrice && book && stopTriggers(order, last))
        return stopFillPrice(order, *book);
    return std::nullopt;
}

bool converts(const Order& order, double last) {
    return order.type == OrderType::stopLimit && order.stopPrice && stopTriggers(order, last);
}

void toLimit(Order& order) {
    order.type = OrderType::limit;
    order.stopPrice.reset();
    order.filledAt.reset();
    order.fillPrice.reset();
}
}  // namespace

// A fill may remove orders before `i`, and then one is passed over until the next event; orders that it appends are
// reached in the same pass.
void SimEngine::match(std::string_view sym, const sim::SimPrices::Market& market) {
    if (!market.last) return;
    const Operation operation(*this);
    const double last = *market.last;
    const auto top = market.quote ? market.quote : market.book(specs_.find(sym));
    auto& orders = account_.orders;
    bool matched = false;
    for (std::size_t i = 0; i < orders.size();) {
        Order& order = orders[i];
        if (!sim::sameRoot(order.sym, sym) || order.state != OrderState::working) {
            ++i;
        } else if (const auto price = fillPriceOf(order, last, top)) {
            Order taken = takeOrder(i);
            fill(taken, *price);
            matched = true;
        } else if (converts(order, last)) {
            toLimit(order);
            note(Field::orders);
            matched = true;
        } else {
            ++i;
        }
    }
    if (matched) persist();
}

// Charges, books, resizes the protective orders, rolls up the round trip, notes the fill and makes new protective
// orders, in this order. False, and nothing happens, for a root without a spec, a quantity below 1 and a position that
// no 64-bit number holds.
bool SimEngine::fill(Order& order, double price) {
    const Spec* known = specs_.find(order.sym);
    if (!known) return false;
    const Spec spec = *known;
    const auto booking = bookFill(order, price, spec);
    if (!booking) return false;
    order.state = OrderState::filled;
    order.filledAt = now();
    order.fillPrice = price;
    reconcileBrackets(order.sym, booking->after.qty);
    rollUp(order, price, *booking);
    addFill(order, price, booking->fee);
    if (order.ocoId) {
        if (const Order* other = orderOf(*order.ocoId))
            takeOrder(static_cast<std::size_t>(other - account_.orders.data()));
    }
    if (order.bracket && booking->after.qty != 0) buildLegs(order, price, booking->after.qty, spec.tick);
    persist();
    return true;
}

}  // namespace vmr
