#include <algorithm>
#include <cmath>

#include "sim/Quantity.h"
#include "sim/SimEngine.h"
#include "sim/TickGrid.h"

namespace vmr {

using sim::slTag;
using sim::tpTag;

namespace {
sim::Side closingSide(std::int64_t qty) { return qty > 0 ? sim::Side::sell : sim::Side::buy; }

// `ticks` away from `anchor` on the gaining side of a long (`direction` 1) or a short (-1).
double legPrice(double anchor, double tick, double direction, std::int64_t ticks) {
    return sim::TickGrid(tick).moved(anchor, 2 * direction * static_cast<double>(ticks));
}

// The price at which a working order stands.
std::optional<double> anchorOf(const sim::Order& order) {
    return order.limitPrice ? order.limitPrice : order.stopPrice;
}
}  // namespace

void SimEngine::reconcileBrackets(std::string_view sym, std::int64_t newQty) {
    auto& orders = account_.orders;
    for (std::size_t i = 0; i < orders.size();) {
        Order& order = orders[i];
        if (!order.isLeg() || order.sym != sym) {
            ++i;
        } else if (newQty == 0 || order.side != closingSide(newQty)) {
            takeOrder(i);
        } else {
            if (order.qty != sim::sizeOf(newQty)) {
                order.qty = sim::sizeOf(newQty);
                order.state = OrderState::working;
                order.filledAt.reset();
                order.fillPrice.reset();
                order.bracket.reset();
                note(Field::orders);
            }
            ++i;
        }
    }
}

// The legs are for the whole position, not only for the part that `filled` opened. They lie off the grid if the fill
// did.
void SimEngine::buildLegs(const Order& filled, double price, std::int64_t qty, double tick) {
    removeLegs(filled.sym);
    const double direction = qty > 0 ? 1 : -1;
    const auto leg = [&](OrderType type, std::string_view tag) {
        Order order = newOrder(filled.sym, closingSide(qty), type, sim::sizeOf(qty));
        order.tag = tag;
        return order;
    };
    const std::int64_t slTicks = filled.bracket->slTicks.value_or(0);
    const std::int64_t tpTicks = filled.bracket->tpTicks.value_or(0);
    if (slTicks >= 1) {
        Order stop = leg(OrderType::stop, slTag);
        stop.stopPrice = legPrice(price, tick, -direction, slTicks);
        append(std::move(stop));
    }
    if (tpTicks >= 1) {
        Order target = leg(OrderType::limit, tpTag);
        target.limitPrice = legPrice(price, tick, direction, tpTicks);
        append(std::move(target));
    }
    if (slTicks >= 1 && tpTicks >= 1) relinkOco(filled.sym);
}

void SimEngine::relinkOco(std::string_view sym) {
    const auto first = [&](std::string_view tag) {
        return std::find_if(account_.orders.begin(), account_.orders.end(),
                            [&](const Order& order) { return order.tag == tag && order.sym == sym; });
    };
    const auto sl = first(slTag);
    const auto tp = first(tpTag);
    if (sl == account_.orders.end() || tp == account_.orders.end()) return;
    sl->ocoId = tp->id;
    tp->ocoId = sl->id;
    note(Field::orders);
}

bool SimEngine::setProtective(std::string_view sym, std::string_view kind, double price) {
    const Operation operation(*this);
    if (kind != slTag && kind != tpTag) return false;
    const auto found = account_.positions.find(sym);
    if (found == account_.positions.end() || found->second.qty == 0) return false;
    const std::int64_t qty = found->second.qty;
    const double px = roundTick(sym, price);
    if (!(px > 0) || !std::isfinite(px)) return false;
    const bool isStop = kind == slTag;
    Order leg = newOrder(sym, closingSide(qty), isStop ? OrderType::stop : OrderType::limit, sim::sizeOf(qty));
    (isStop ? leg.stopPrice : leg.limitPrice) = px;
    leg.tag = kind;
    const std::string root = leg.sym;
    removeOrders([&](const Order& order) { return order.tag == leg.tag && order.sym == root; });
    append(std::move(leg));
    relinkOco(root);
    persist();
    return true;
}

bool SimEngine::isPendingEntry(const Order& order) {
    return order.state == OrderState::working && order.tag.empty() && order.bracket.has_value();
}

SimEngine::LegPrices SimEngine::projectedBracket(const Order& order) const {
    const auto anchor = anchorOf(order);
    const Spec* spec = specs_.find(order.sym);
    if (!isPendingEntry(order) || !anchor || !spec) return {};
    const double direction = order.side == Side::buy ? 1 : -1;
    LegPrices legs;
    if (order.bracket->slTicks) legs.sl = legPrice(*anchor, spec->tick, -direction, *order.bracket->slTicks);
    if (order.bracket->tpTicks) legs.tp = legPrice(*anchor, spec->tick, direction, *order.bracket->tpTicks);
    return legs;
}

bool SimEngine::modifyProjectedLeg(const Uuid& id, std::string_view leg, double price) {
    Order* order = orderOf(id);
    return order && moveLeg(*order, leg, roundTick(order->sym, price));
}

bool SimEngine::moveLeg(Order& order, std::string_view leg, double price) {
    const Operation operation(*this);
    constexpr double beyondTicks = 0x1p63;
    if (!isPendingEntry(order)) return false;
    const auto anchor = anchorOf(order);
    const Spec* spec = specs_.find(order.sym);
    if (!anchor || !spec || !(spec->tick > 0)) return false;
    if (!(price > 0) || !std::isfinite(price)) return false;
    const double ticks = std::max(1.0, std::round(std::abs(price - *anchor) / spec->tick));
    if (!(ticks < beyondTicks) || (leg != slTag && leg != tpTag)) return false;
    (leg == slTag ? order.bracket->slTicks : order.bracket->tpTicks) = static_cast<std::int64_t>(ticks);
    note(Field::orders);
    persist();
    return true;
}

}  // namespace vmr
