// The simulator in the state document.
#include "model/SimDesk.h"
#include "model/SimPanelFacts.h"
#include "model/StateRecords.h"

namespace vmr::stateRecords {

namespace {
json identity(const std::optional<Uuid>& id) { return id ? json(id->text()) : json(nullptr); }
json count(const std::optional<std::int64_t>& value) { return value ? json(*value) : json(nullptr); }

json record(const sim::Order& order, bool watched) {
    json bracket = nullptr;
    if (order.bracket)
        bracket = {{"slTicks", count(order.bracket->slTicks)}, {"tpTicks", count(order.bracket->tpTicks)}};
    return {{"id", order.id.text()},
            {"sym", order.sym},
            {"side", sim::rawText(order.side)},
            {"type", sim::rawText(order.type)},
            {"qty", order.qty},
            {"limitPrice", number(order.limitPrice)},
            {"stopPrice", number(order.stopPrice)},
            {"state", sim::rawText(order.state)},
            {"createdAt", number(order.createdAt)},
            {"filledAt", number(order.filledAt)},
            {"fillPrice", number(order.fillPrice)},
            {"ocoId", identity(order.ocoId)},
            {"bracket", std::move(bracket)},
            {"tag", order.tag},
            {"watched", watched}};
}

json record(const sim::Fill& fill) {
    return {{"id", fill.id.text()},
            {"sym", fill.sym},
            {"side", sim::rawText(fill.side)},
            {"qty", fill.qty},
            {"price", number(fill.price)},
            {"commission", number(fill.commission)},
            {"ts", number(fill.ts)},
            {"tag", fill.tag}};
}

json record(const sim::Trade& trade) {
    return {{"id", trade.id.text()},
            {"sym", trade.sym},
            {"side", sim::rawText(trade.side)},
            {"qty", trade.qty},
            {"entry", number(trade.entry)},
            {"exit", number(trade.exit)},
            {"pnl", number(trade.pnl)},
            {"fees", number(trade.fees)},
            {"openedAt", number(trade.openedAt)},
            {"closedAt", number(trade.closedAt)},
            {"exitTag", trade.exitTag},
            {"mae", number(trade.mae)},
            {"mfe", number(trade.mfe)}};
}

json record(const sim::OpenTrade& open) {
    return {{"side", sim::rawText(open.side)},
            {"maxQty", open.maxQty},
            {"entryAvg", number(open.entryAvg)},
            {"openedAt", number(open.openedAt)},
            {"realizedStart", number(open.realizedStart)},
            {"fees", number(open.fees)},
            {"exitQty", open.exitQty},
            {"exitNotional", number(open.exitNotional)},
            {"contract", text(open.contract)},
            {"mae", number(open.mae)},
            {"mfe", number(open.mfe)}};
}

json record(const sim::Stats& stats) {
    json curve = json::array();
    for (const double point : stats.curve) curve.push_back(number(point));
    return {{"count", stats.count},
            {"wins", stats.wins},
            {"winRate", number(stats.winRate)},
            {"net", number(stats.net)},
            {"fees", number(stats.fees)},
            {"profitFactor", number(stats.profitFactor)},
            {"avgWin", number(stats.avgWin)},
            {"avgLoss", number(stats.avgLoss)},
            {"payoff", number(stats.payoff)},
            {"expectancy", number(stats.expectancy)},
            {"maxDrawdown", number(stats.maxDrawdown)},
            {"best", number(stats.best)},
            {"worst", number(stats.worst)},
            {"avgDurationSec", number(stats.avgDurationSec)},
            {"slExits", stats.slExits},
            {"tpExits", stats.tpExits},
            {"manualExits", stats.manualExits},
            {"curve", std::move(curve)}};
}

template <class Records>
json all(const Records& records) {
    json out = json::array();
    for (const auto& one : records) out.push_back(record(one));
    return out;
}
}  // namespace

json record(const SimEngine& engine) {
    json positions = json::object(), open = json::object(), quotes = json::object(), lasts = json::object();
    json unrealized = json::object();
    for (const auto& [root, position] : engine.positions()) {
        positions[root] = {
            {"qty", position.qty}, {"avg", number(position.avg)}, {"realized", number(position.realized)}};
        unrealized[root] = number(engine.unrealized(root));
    }
    json orders = json::array(), contracts = json::object(), stale = json::object();
    for (const sim::Order& order : engine.orders())
        orders.push_back(record(order, engine.watches().watched(order.sym)));
    for (const auto& [root, trade] : engine.openTrades()) open[root] = record(trade);
    for (const auto& [root, contract] : engine.watches().contracts()) contracts[root] = contract;
    for (const auto& [root, market] : engine.prices().all()) {
        if (market.quote) quotes[root] = {{"bid", number(market.quote->bid)}, {"ask", number(market.quote->ask)}};
        if (!market.last) continue;
        lasts[root] = number(*market.last);
        if (const auto age = engine.stalePrice(root)) stale[root] = number(*age);
    }
    return {{"balance", number(engine.balance())},   {"startBalance", number(engine.startBalance())},
            {"positions", std::move(positions)},     {"orders", std::move(orders)},
            {"fills", all(engine.fills())},          {"trades", all(engine.trades())},
            {"openTrades", std::move(open)},         {"commission", number(engine.commission)},
            {"quotes", std::move(quotes)},           {"lasts", std::move(lasts)},
            {"contracts", std::move(contracts)},     {"stalePrices", std::move(stale)},
            {"unrealized", std::move(unrealized)},   {"totalUnrealized", number(engine.totalUnrealized())},
            {"dayPnL", number(engine.dayPnL())},     {"stats", record(SimEngine::stats(engine.trades()))},
            {"keepsAccount", engine.keepsAccount()}, {"problem", text(engine.problem())},
            {"lastError", text(engine.lastError())}, {"lastSave", number(engine.lastSave())}};
}

namespace {
json panelRows(const SimDesk& desk) {
    const SimEngine& engine = desk.engine();
    json out = {
        {"positions", json::array()}, {"orders", json::array()}, {"history", json::array()}, {"fills", json::array()}};
    for (const SimPositionRow& row : simPositionRows(engine, desk.ticket()))
        out["positions"].push_back({{"text", row.size + " " + row.name() + " " + row.average},
                                    {"pnl", simPnl(engine, row.root).text},
                                    {"addSl", text(row.addSl)},
                                    {"addTp", text(row.addTp)}});
    for (const SimOrderRow& row : simOrderRows(engine))
        out["orders"].push_back(row.side + " " + row.qty + " " + row.root + " " + row.type + " " + row.price);
    for (const SimHistoryRow& row : simHistoryRows(engine))
        out["history"].push_back(row.time + " " + row.root + " " + row.side + " " + row.qty + " " + row.prices + " " +
                                 row.result);
    for (const SimFillRow& row : simFillRows(engine))
        out["fills"].push_back(row.time + " " + row.side + " " + row.qty + " " + row.root + " " + row.price +
                               (row.tag.empty() ? "" : " " + row.tag));
    return out;
}

json ticketRecord(const SimDesk& desk) {
    const sim::SimTicket& ticket = desk.ticket();
    const auto field = [&](sim::OrderType type) {
        const auto shown = desk.field(type);
        return json{{"text", *ticket.fieldOf(type)}, {"read", shown.read}, {"wrong", shown.wrong}};
    };
    return {{"qty", ticket.qty},
            {"limit", field(sim::OrderType::limit)},
            {"stop", field(sim::OrderType::stop)},
            {"bracketOn", ticket.bracketOn},
            {"slTicks", ticket.slTicks},
            {"tpTicks", ticket.tpTicks},
            {"useTicks", ticket.useTicks}};
}
}  // namespace

json record(const SimDesk& desk) {
    const SimEngine& engine = desk.engine();
    const SimPerformance performance = simPerformance(engine, desk.perfToday());
    json metrics = json::object(), days = json::object();
    for (const SimMetric& metric : performance.metrics) metrics[metric.caption] = metric.value;
    for (const SimDay& day : performance.days) days[day.name] = day.text;
    return {
        {"title", desk.title()},
        {"empty", desk.emptyText()},
        {"marketClosed", desk.marketClosed()},
        {"warning", desk.warning()},
        {"readOnly", text(desk.readOnly())},
        {"ticket", ticketRecord(desk)},
        {"question", desk.question() ? json(desk.question()->text) : json(nullptr)},
        {"notice", text(desk.notice())},
        {"headings",
         {simPositionsHeading(engine), simOrdersHeading(engine), "PERFORMANCE", simHistoryHeading(engine), "FILLS"}},
        {"rows", panelRows(desk)},
        {"perfToday", desk.perfToday()},
        {"metrics", std::move(metrics)},
        {"exits", performance.exits},
        {"days", std::move(days)}};
}

}  // namespace vmr::stateRecords
