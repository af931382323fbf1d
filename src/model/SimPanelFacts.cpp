#include "model/SimPanelFacts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "base/LocalDay.h"
#include "sim/Quantity.h"
#include "sim/SimTexts.h"

namespace vmr {

namespace {
using sim::num;
using sim::priceText;

std::string sideText(sim::Side side) { return side == sim::Side::buy ? "BUY" : "SELL"; }

double netOf(const sim::Trade& trade) { return trade.pnl - trade.fees; }

// The contract in which the position was opened, where the root's prices are another's by now.
std::string otherContract(const SimEngine& engine, const std::string& root) {
    const auto open = engine.openTrades().find(root);
    if (open == engine.openTrades().end() || !open->second.contract) return "";
    const std::string_view now = engine.watches().contract(root);
    return now.empty() || now == *open->second.contract ? "" : *open->second.contract;
}

// An average lies between two ticks: it has two digits, or those of the root's tick where they are more.
std::string averageText(const SimEngine& engine, const std::string& root, double price) {
    constexpr double least = 100, most = 1e8;
    double scale = least;
    if (const sim::Spec* spec = engine.specs().find(root)) {
        const auto whole = [&](double by) { return std::abs(spec->tick * by - std::round(spec->tick * by)) < 1e-6; };
        while (scale < most && !whole(scale)) scale *= 10;
        if (!whole(scale)) scale = least;  // a third
    }
    return priceText(std::round(price * scale) / scale, 2);
}

std::size_t openCount(const SimEngine& engine) {
    return static_cast<std::size_t>(std::count_if(engine.positions().begin(), engine.positions().end(),
                                                  [](const auto& row) { return row.second.qty != 0; }));
}

std::vector<SimMetric> metricsOf(const sim::Stats& stats) {
    return {{"Trades", std::to_string(stats.count)},
            {"Win rate", fmt::format("{:.0f}%", stats.winRate)},
            {"Profit factor", num(stats.profitFactor)},
            {"Net P&L", num(stats.net)},
            {"Expectancy", num(stats.expectancy)},
            {"Payoff", fmt::format("{:.2f}", stats.payoff)},
            {"Avg win", num(stats.avgWin)},
            {"Avg loss", num(stats.avgLoss)},
            {"Max DD", num(stats.maxDrawdown)},
            {"Best", num(stats.best)},
            {"Worst", num(stats.worst)},
            {"Avg time", sim::dur(stats.avgDurationSec)}};
}

// The balance before the oldest trade that is left: what all of them and the trades in progress brought is taken off.
double balanceBefore(const SimEngine& engine) {
    double balance = engine.balance();
    for (const sim::Trade& trade : engine.trades()) balance -= netOf(trade);
    for (const auto& [root, open] : engine.openTrades()) {
        const auto position = engine.positions().find(root);
        balance += open.fees;
        if (position != engine.positions().end()) balance -= position->second.realized - open.realizedStart;
    }
    return balance;
}

std::vector<const sim::Trade*> oldestFirst(const std::vector<sim::Trade>& trades) {
    std::vector<const sim::Trade*> sorted;
    for (auto trade = trades.rbegin(); trade != trades.rend(); ++trade) sorted.push_back(&*trade);
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const sim::Trade* a, const sim::Trade* b) { return a->closedAt < b->closedAt; });
    return sorted;
}

std::vector<SimDay> daysOf(const SimEngine& engine) {
    constexpr std::size_t mostDays = 10;
    std::map<std::int64_t, double, std::greater<>> byDay;
    for (const sim::Trade& trade : engine.trades()) byDay[engine.dayOf(trade.closedAt)] += netOf(trade);
    std::vector<SimDay> days;
    for (const auto& [day, pnl] : byDay) {
        if (days.size() == mostDays) break;
        days.push_back({day, sim::dayText(day), pnl, (pnl >= 0 ? "+" : "") + num(pnl)});
    }
    return days;
}
}  // namespace

SimAccountFacts simAccountFacts(const SimEngine& engine) {
    const auto unpriced = std::ranges::count_if(
        engine.positions(), [&](const auto& row) { return row.second.qty != 0 && !engine.last(row.first); });
    return {engine.balance(), engine.balance() + engine.totalUnrealized(), engine.dayPnL(),
            static_cast<std::size_t>(unpriced)};
}

std::vector<SimPositionRow> simPositionRows(const SimEngine& engine, const sim::SimTicket& ticket) {
    std::vector<SimPositionRow> rows;
    for (const auto& [root, position] : engine.positions()) {
        if (position.qty == 0) continue;
        const bool isLong = position.qty > 0;
        rows.push_back({root, isLong, fmt::format("{} {}", isLong ? "LONG" : "SHORT", sim::sizeOf(position.qty)),
                        otherContract(engine, root), averageText(engine, root, position.avg),
                        ticket.protectText(engine, root, sim::slTag), ticket.protectText(engine, root, sim::tpTag)});
    }
    return rows;
}

SimPnl simPnl(const SimEngine& engine, const std::string& root) {
    const sim::Spec* spec = engine.specs().find(root);
    const double tickValue = spec ? spec->tickValue : 0, pnl = engine.unrealized(root);
    return {sim::pnlText(pnl, tickValue), sim::snappedPnl(pnl, tickValue) >= 0};
}

std::vector<SimOrderRow> simOrderRows(const SimEngine& engine) {
    std::vector<SimOrderRow> rows;
    for (const sim::Order& order : engine.orders()) {
        const auto price = order.limitPrice ? order.limitPrice : order.stopPrice;
        rows.push_back({order.id, order.side == sim::Side::buy, sideText(order.side), std::to_string(order.qty),
                        order.sym, std::string(rawText(order.type)), price ? num(*price) : "", order.tag});
    }
    return rows;
}

SimPerformance simPerformance(const SimEngine& engine, bool today) {
    SimPerformance out;
    const std::int64_t day = engine.dayOf(engine.now());
    std::vector<sim::Trade> counted;
    double balance = balanceBefore(engine), result = 0, peak = 0;
    for (const sim::Trade* trade : oldestFirst(engine.trades())) {
        balance += netOf(*trade);
        if (today && engine.dayOf(trade->closedAt) != day) continue;
        counted.push_back(*trade);
        result += netOf(*trade);
        peak = std::max(peak, result);
        out.curve.push_back({result, peak - result, balance, trade->closedAt});
    }
    const sim::Stats stats = SimEngine::stats(counted);
    out.metrics = metricsOf(stats);
    out.exits = fmt::format("Exits: SL {} · TP {} · Manual {} · Fees {}", stats.slExits, stats.tpExits,
                            stats.manualExits, num(stats.fees));
    out.days = daysOf(engine);
    return out;
}

SimCurvePlot simCurvePlot(const std::vector<SimCurvePoint>& curve) {
    constexpr double leastSpan = 1e-9;
    SimCurvePlot plot;
    if (curve.size() < 2) return plot;
    double low = 0, high = 0;
    for (const SimCurvePoint& point : curve) {
        low = std::min(low, point.result);
        high = std::max(high, point.result);
    }
    const double span = std::max(high - low, leastSpan);
    const auto height = [&](double value) { return (high - value) / span; };
    for (std::size_t i = 0; i < curve.size(); ++i)
        plot.points.push_back({static_cast<double>(i) / static_cast<double>(curve.size() - 1), height(curve[i].result),
                               height(curve[i].result + curve[i].drawdown)});
    plot.base = height(0);
    plot.gain = curve.back().result >= 0;
    return plot;
}

std::optional<SimCurveSpot> simCurveSpot(const std::vector<SimCurvePoint>& curve, double x) {
    if (curve.size() < 2 || std::isnan(x)) return std::nullopt;
    const auto last = static_cast<double>(curve.size() - 1);
    const auto index = static_cast<std::size_t>(std::round(std::clamp(x, 0.0, 1.0) * last));
    const SimCurvePoint& point = curve[index];
    const std::int64_t day = localDay(sim::secondsSince1970(point.at));
    return SimCurveSpot{index, fmt::format("Trade {} · {} {} · {}", index + 1, sim::dayText(day), sim::hhmm(point.at),
                                           num(point.balance))};
}

std::vector<SimHistoryRow> simHistoryRows(const SimEngine& engine, std::size_t most) {
    std::vector<SimHistoryRow> rows;
    for (const sim::Trade& trade : engine.trades()) {
        if (rows.size() == most) break;
        const double net = netOf(trade);
        rows.push_back(
            {trade.id, sim::hhmm(trade.closedAt), trade.sym, sideText(trade.side), std::to_string(trade.qty),
             averageText(engine, trade.sym, trade.entry) + " → " + averageText(engine, trade.sym, trade.exit),
             (net >= 0 ? "+" : "") + num(net), net >= 0});
    }
    return rows;
}

std::vector<SimFillRow> simFillRows(const SimEngine& engine, std::size_t most) {
    std::vector<SimFillRow> rows;
    for (const sim::Fill& fill : engine.fills()) {
        if (rows.size() == most) break;
        rows.push_back({fill.id, sim::hhmmss(fill.ts), sideText(fill.side), std::to_string(fill.qty), fill.sym,
                        priceText(fill.price, 2), fill.tag, fill.side == sim::Side::buy});
    }
    return rows;
}

std::string simPositionsHeading(const SimEngine& engine) { return fmt::format("POSITIONS ({})", openCount(engine)); }

std::string simOrdersHeading(const SimEngine& engine) { return fmt::format("WORKING ({})", engine.orders().size()); }

std::string simHistoryHeading(const SimEngine& engine) {
    const auto& trades = engine.trades();
    if (trades.empty()) return "HISTORY (0)";
    return fmt::format("HISTORY ({}) · {:.0f}% win", trades.size(), SimEngine::stats(trades).winRate);
}

}  // namespace vmr
