#include "model/SimTrading.h"

#include <algorithm>

#include "sim/OrderRequest.h"

namespace vmr {

namespace {
std::string_view kindOf(const sim::Order& order) {
    if (order.tag == sim::slTag) return "SL";
    if (order.tag == sim::tpTag) return "TP";
    if (order.type == sim::OrderType::limit) return "LMT";
    return order.type == sim::OrderType::stop ? "STP" : "STP LMT";
}
}  // namespace

void SimTrading::lines(const std::string& root, TradingLines& out) const {
    out.position.reset();
    out.orders.clear();
    out.legs.clear();
    out.contract = engine_.watches().contract(root);
    const sim::Spec* spec = engine_.specs().find(root);
    out.tick = spec ? spec->tick : 0;
    out.tickValue = spec ? spec->tickValue : TradingLines().tickValue;
    if (const auto found = engine_.positions().find(root); found != engine_.positions().end() && found->second.qty != 0)
        out.position = {found->second.qty, found->second.avg, otherContract(root)};
    for (const sim::Order& order : engine_.orders()) {
        if (order.sym != root) continue;
        if (const auto price = order.limitPrice ? order.limitPrice : order.stopPrice)
            out.orders.push_back({order.id, *price, order.side == sim::Side::buy, order.qty, kindOf(order)});
        const auto legs = engine_.projectedBracket(order);
        if (legs.sl) out.legs.push_back({order.id, "SL", *legs.sl});
        if (legs.tp) out.legs.push_back({order.id, "TP", *legs.tp});
    }
}

std::string SimTrading::otherContract(const std::string& root) const {
    const auto open = engine_.openTrades().find(root);
    if (open == engine_.openTrades().end() || !open->second.contract) return {};
    const std::string_view now = engine_.watches().contract(root);
    return now.empty() || now == *open->second.contract ? std::string() : *open->second.contract;
}

double SimTrading::unrealized(const std::string& root) const { return engine_.unrealized(root); }

std::size_t SimTrading::workingCount(const std::string& root) const {
    return static_cast<std::size_t>(std::count_if(engine_.orders().begin(), engine_.orders().end(),
                                                  [&](const sim::Order& order) { return order.sym == root; }));
}

std::optional<double> SimTrading::last(const std::string& root) const { return engine_.last(root); }

bool SimTrading::mayChange() const {
    if (changeable()) return true;
    tell(engine_.problem());
    return false;
}

void SimTrading::place(const std::string& root, std::string_view side, std::string_view type, double price) {
    const auto wantedSide = sim::sideNamed(side);
    const auto wantedType = sim::orderTypeNamed(type);
    if (!wantedSide || !wantedType || !mayChange()) return;
    sim::OrderRequest request{root, *wantedSide, *wantedType, engine_.ticketQty, {}, {}, engine_.ticketBracket};
    (*wantedType == sim::OrderType::limit ? request.limit : request.stop) = price;
    tell(request.enter(engine_));
}

void SimTrading::setProtective(const std::string& root, std::string_view kind, double price) {
    if (!mayChange()) return;
    if (const auto problem = sim::priceProblem(price)) return tell(problem);
    engine_.setProtective(root, kind, price);
}

void SimTrading::flatten(const std::string& root) {
    if (mayChange()) tell(sim::flattenOrTell(engine_, root));
}

void SimTrading::tell(const std::optional<std::string>& problem) const {
    if (problem && refused_) refused_(*problem);
}

}  // namespace vmr
