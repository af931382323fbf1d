// The menu of a right click on the chart: which orders can be entered at a price, and what choosing one does.
#include <array>
#include <charconv>
#include <cmath>

#include "base/NumberText.h"
#include "chart/ChartInput.h"

namespace vmr {

namespace {
using Action = OrderMenuItem::Action;

std::string fixedText(double price, int decimals) {
    std::array<char, 400> text;  // the longest double has 309 digits before the point
    const auto end = std::to_chars(text.data(), text.data() + text.size(), price, std::chars_format::fixed, decimals);
    return {text.data(), end.ptr};
}

// Whole from 100 on, else with two decimals, or with as many as a finer tick needs: an order must not stand at another
// price than the menu says. A price off every grid, which no account takes, gets two.
std::string priceText(double price) {
    constexpr int usual = 2, most = 6;
    if (std::trunc(price) == price && price >= 100) return fixedText(price, 0);
    for (int decimals = usual; decimals <= most; ++decimals) {
        std::string text = fixedText(price, decimals);
        if (parseDouble(text) == price) return text;
    }
    return fixedText(price, usual);
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
