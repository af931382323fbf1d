#include "workspace/SimCommands.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "base/NumberText.h"
#include "sim/OrderRequest.h"
#include "sim/SimLists.h"

namespace vmr {

namespace {
using Words = std::vector<std::string>;

std::optional<double> price(const std::string& text) {
    const auto value = parseDouble(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<Uuid> identity(const SimEngine& engine, const std::string& text) {
    for (const auto& order : engine.orders())
        if (order.id.text() == text) return order.id;
    return std::nullopt;
}

std::string describe(const sim::Order& order) {
    std::string out = order.id.text() + ' ' + std::string(rawText(order.side)) + ' ' + std::to_string(order.qty) + ' ' +
                      order.sym + ' ' + std::string(rawText(order.type));
    if (order.limitPrice) out += " limit=" + doubleText(*order.limitPrice);
    if (order.stopPrice) out += " stop=" + doubleText(*order.stopPrice);
    if (order.bracket && order.bracket->slTicks) out += " sl=" + std::to_string(*order.bracket->slTicks);
    if (order.bracket && order.bracket->tpTicks) out += " tp=" + std::to_string(*order.bracket->tpTicks);
    return order.tag.empty() ? out : out + ' ' + order.tag;
}

std::string difference(const sim::Snapshot& before, const sim::Snapshot& after) {
    std::string out;
    const auto tell = [&out](const std::string& part) { out += (out.empty() ? "" : "; ") + part; };
    const auto find = [](const std::vector<sim::Order>& orders, const Uuid& id) {
        const auto found =
            std::find_if(orders.begin(), orders.end(), [&](const auto& order) { return order.id == id; });
        return found == orders.end() ? nullptr : &*found;
    };
    for (auto fill = after.fills.begin(); fill != after.fills.end(); ++fill) {
        if (!before.fills.empty() && fill->id == before.fills.front().id) break;
        tell("filled " + std::string(rawText(fill->side)) + ' ' + std::to_string(fill->qty) + ' ' + fill->sym + " @ " +
             doubleText(fill->price));
    }
    for (const auto& order : before.orders)
        if (!find(after.orders, order.id)) tell("gone " + order.id.text());
    for (const auto& order : after.orders) {
        const auto* old = find(before.orders, order.id);
        if (!old) tell("working " + describe(order));
        if (old && *old != order) tell("now " + describe(order));
    }
    for (const auto& [root, position] : after.positions) {
        const auto old = before.positions.find(root);
        if (old == before.positions.end() || old->second != position)
            tell("position " + root + ' ' + std::to_string(position.qty) + " @ " + doubleText(position.avg));
    }
    if (after.balance != before.balance) tell("balance " + doubleText(after.balance));
    if (after.startBalance != before.startBalance) tell("start balance " + doubleText(after.startBalance));
    return out.empty() ? "nothing changed" : out;
}

struct OrderWords {
    std::optional<double> limit, stop;
    sim::BracketSpec bracket;
};

std::optional<OrderWords> readOrderWords(const Words& words) {
    OrderWords out;
    for (std::size_t i = 4; i < words.size(); ++i) {
        const auto equals = words[i].find('=');
        if (equals == std::string::npos) return std::nullopt;
        const std::string key = words[i].substr(0, equals), value = words[i].substr(equals + 1);
        if (key == "limit" || key == "stop") {
            auto& target = key == "limit" ? out.limit : out.stop;
            if (!(target = price(value))) return std::nullopt;
        } else if (key == "sl" || key == "tp") {
            auto& target = key == "sl" ? out.bracket.slTicks : out.bracket.tpTicks;
            if (!(target = parseInt(value))) return std::nullopt;
        } else {
            return std::nullopt;
        }
    }
    return out;
}

// What a command did: why not, or what to add to its answer.
struct Outcome {
    std::optional<std::string> problem{};
    std::string note{};
};
using Answer = std::optional<Outcome>;  // nothing when the arguments cannot be read; their number is right

// Runs what may fill at once, and tells when the price that it filled at was not fresh.
template <class Operation>
Outcome fillingAt(SimEngine& engine, const std::string& root, Operation operation) {
    const auto age = engine.stalePrice(root);
    const auto newest = [&engine] { return engine.fills().empty() ? Uuid{} : engine.fills().front().id; };
    const Uuid before = newest();
    Outcome out{operation()};
    const bool filled = newest() != before;
    if (age && filled) out.note = " (price is " + std::to_string(static_cast<std::int64_t>(*age)) + " s old)";
    return out;
}

Answer placeOrder(SimEngine& engine, const Words& words) {
    const auto side = sim::sideNamed(words[1]);
    const auto type = sim::orderTypeNamed(words[2]);
    const auto qty = parseInt(words[3]);
    const auto rest = readOrderWords(words);
    if (!side || !type || !qty || !rest) return std::nullopt;
    sim::OrderRequest request{words[0], *side, *type, *qty, rest->limit, rest->stop, {}};
    if (rest->bracket.slTicks || rest->bracket.tpTicks) request.bracket = rest->bracket;
    return fillingAt(engine, request.sym, [&] { return request.enter(engine); });
}

Answer cancelOrder(SimEngine& engine, const Words& words) {
    if (const auto id = identity(engine, words[0])) engine.cancel(*id);
    return Outcome{};
}

Answer modifyOrder(SimEngine& engine, const Words& words) {
    const auto to = price(words[1]);
    if (!to) return std::nullopt;
    if (const auto problem = sim::priceProblem(*to)) return Outcome{problem};
    if (const auto id = identity(engine, words[0])) engine.modify(*id, *to);
    return Outcome{};
}

Answer flattenPosition(SimEngine& engine, const Words& words) {
    return fillingAt(engine, words[0], [&] { return sim::flattenOrTell(engine, words[0]); });
}

bool isLegTag(const std::string& word) { return word == sim::slTag || word == sim::tpTag; }

Answer protectPosition(SimEngine& engine, const Words& words) {
    const auto to = price(words[2]);
    if (!to || !isLegTag(words[1])) return std::nullopt;
    if (const auto problem = sim::priceProblem(*to)) return Outcome{problem};
    engine.setProtective(words[0], words[1], *to);
    return Outcome{};
}

Answer moveLeg(SimEngine& engine, const Words& words) {
    const auto to = price(words[2]);
    if (!to || !isLegTag(words[1])) return std::nullopt;
    if (const auto problem = sim::priceProblem(*to)) return Outcome{problem};
    if (const auto id = identity(engine, words[0])) engine.modifyProjectedLeg(*id, words[1], *to);
    return Outcome{};
}

Answer resetAccount(SimEngine& engine, const Words& words) {
    const auto balance = price(words[0]);
    if (!balance) return std::nullopt;
    engine.resetAccount(*balance);
    return Outcome{};
}

// The account in one line. An order of a root that no pane shows does not see the market.
std::string listing(const SimEngine& engine) {
    std::string out = "ok balance " + doubleText(engine.balance());
    for (const auto& [root, position] : engine.positions())
        if (position.qty != 0)
            out += "; position " + root + ' ' + std::to_string(position.qty) + " @ " + doubleText(position.avg);
    for (const auto& order : engine.orders())
        out += "; working " + describe(order) + (engine.watches().watched(order.sym) ? "" : " (not watched)");
    if (const auto problem = engine.problem()) out += "; " + *problem;
    return out;
}

CommandAnswer exportList(const SimEngine& engine, CommandWords& words) {
    const std::string what = words.next(), list = words.next();
    const std::string file(words.rest());
    if (what != "export" || (list != "trades" && list != "fills") || file.empty()) return std::nullopt;
    const bool trades = list == "trades";
    const std::string csv = trades ? sim::tradesCsv(engine.trades()) : sim::fillsCsv(engine.fills());
    if (const auto problem = sim::writeCsv(file, csv)) return "error: " + *problem;
    return "ok " + std::to_string(trades ? engine.trades().size() : engine.fills().size()) + " " + list + " to " + file;
}
}  // namespace

std::string answerOfAccount(SimEngine& engine, const std::string& root,
                            const std::function<std::optional<std::string>()>& operation) {
    const sim::Snapshot before = engine.snapshot();
    const Outcome done = fillingAt(engine, root, operation);
    if (done.problem) return "error: " + *done.problem;
    return "ok " + difference(before, engine.snapshot()) + done.note;
}

void addSimCommands(CommandTable& table, SimEngine& engine) {
    using Call = Answer (*)(SimEngine&, const Words&);
    const auto add = [&](const char* name, const char* arguments, std::size_t least, std::size_t most, Call call) {
        table.add({name, arguments, least, most, [&engine, call](CommandWords& words) -> CommandAnswer {
                       const sim::Snapshot before = engine.snapshot();
                       const Answer done = call(engine, words.all());
                       if (!done) return std::nullopt;
                       if (done->problem) return "error: " + *done->problem;
                       return "ok " + difference(before, engine.snapshot()) + done->note;
                   }});
    };
    table.add(
        {"sim", "[export trades|fills FILE]", 0, Command::restOfLine, [&engine](CommandWords& words) -> CommandAnswer {
             return words.empty() ? listing(engine) : exportList(engine, words);
         }});
    add("order", "SYM buy|sell market|limit|stop|stopLimit QTY [limit=P] [stop=P] [sl=TICKS] [tp=TICKS]", 4,
        Command::restOfLine, placeOrder);
    add("cancel", "ID", 1, 1, cancelOrder);
    add("modify", "ID PRICE", 2, 2, modifyOrder);
    add("flatten", "SYM", 1, 1, flattenPosition);
    add("protect", "SYM SL|TP PRICE", 3, 3, protectPosition);
    add("leg", "ID SL|TP PRICE", 3, 3, moveLeg);
    add("reset", "BALANCE", 1, 1, resetAccount);
}

}  // namespace vmr
