// The menu of a right click on the chart: which orders can be entered at a price, and what choosing one does.
#include <cmath>
#include <cstdio>

#include "chart/ChartInput.h"

namespace vmr {

namespace {
using Action = OrderMenuItem::Action;

std::string priceText(double price) {
    char text[64];
    std::snprintf(text, sizeof text, std::trunc(price) == price && price >= 100 ? "%.0f" : "%.2f", price);
    return text;
}

std::string ageText(double seconds) {
    const auto whole = static_cast<long long>(seconds);
    return whole < 120 ? std::to_string(whole) + " s" : std::to_string(whole / 60) + " min";
}
}  // namespace

std::vector<OrderMenuItem> ChartInput::orderMenu(ChartPoint at) const {
    if (!trades() || plot().onPriceAxis(at.x)) return {};
    const double there = priceAt(at.y);
    if (!std::isfinite(there)) return {};
    const double price = trading->roundTick(simRoot, there);
    const auto last = trading->last(simRoot);
    const bool below = !last || price <= *last;
    const bool above = !last || *last <= price;

    std::vector<OrderMenuItem> menu;
    if (const auto age = trading->stalePrice(simRoot)) {
        menu.push_back({Action::note, "The last price is " + ageText(*age) + " old", 0, {}, {}});
        menu.push_back({});
    }
    const std::string text = " @ " + priceText(price);
    TradingLines lines;
    trading->lines(simRoot, lines);
    if (const auto& position = lines.position) {
        const bool isLong = position->qty > 0;
        if (isLong ? below : above) menu.push_back({Action::setSL, "Set SL" + text, price, {}, {}});
        if (isLong ? above : below) menu.push_back({Action::setTP, "Set TP" + text, price, {}, {}});
        menu.push_back({});
    }
    const std::string qty = std::to_string(trading->ticketQty());
    if (below) menu.push_back({Action::order, "Buy " + qty + " Limit" + text, price, "buy", "limit"});
    if (above) menu.push_back({Action::order, "Sell " + qty + " Limit" + text, price, "sell", "limit"});
    menu.push_back({});
    if (above) menu.push_back({Action::order, "Buy " + qty + " Stop" + text, price, "buy", "stop"});
    if (below) menu.push_back({Action::order, "Sell " + qty + " Stop" + text, price, "sell", "stop"});
    if (const std::size_t count = trading->workingCount(simRoot); count > 0) {
        menu.push_back({});
        menu.push_back({Action::cancelAll, "Cancel All (" + std::to_string(count) + ")", 0, {}, {}});
    }
    return menu;
}

void ChartInput::choose(const OrderMenuItem& item) {
    if (!trades()) return;
    switch (item.action) {
        case Action::separator:
        case Action::note:
            return;
        case Action::setSL:
            return trading->setProtective(simRoot, "SL", item.price);
        case Action::setTP:
            return trading->setProtective(simRoot, "TP", item.price);
        case Action::cancelAll:
            return trading->cancelAll(simRoot);
        case Action::order:
            if (!marketIsClosed()) return trading->place(simRoot, item.side, item.type, item.price);
            if (onMarketClosedOrder) onMarketClosedOrder();
            return;
    }
}

bool ChartInput::marketIsClosed() const {
    return !session_.marketOpen(static_cast<std::int64_t>(std::floor(clock_.now())), false);
}

}  // namespace vmr
