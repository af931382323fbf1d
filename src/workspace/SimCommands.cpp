#include "app/SimCommands.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

#include "base/NumberText.h"

namespace vmr {

namespace {
using Words = std::vector<std::string>;

Words split(std::string_view text) {
    Words words;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t begin = text.find_first_not_of(" \t\r", at);
        if (begin == std::string_view::npos) break;
        at = std::min(text.find_first_of(" \t\r", begin), text.size());
        words.emplace_back(text.substr(begin, at - begin));
    }
    return words;
}

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

bool placeOrder(SimEngine& engine, const Words& words) {
    if (words.size() < 4) return false;
    const auto side = sim::sideNamed(words[1]);
    const auto type = sim::orderTypeNamed(words[2]);
    const auto qty = parseInt(words[3]);
    const auto rest = readOrderWords(words);
    if (!side || !type || !qty || !rest) return false;
    const bool bracketed = rest->bracket.slTicks || rest->bracket.tpTicks;
    engine.place(words[0], *side, *type, *qty, rest->limit, rest->stop,
                 bracketed ? std::optional(rest->bracket) : std::nullopt);
    return true;
}

// Each tells whether its arguments can be read.
using Command = bool (*)(SimEngine&, const Words&);
const std::map<std::string, Command, std::less<>> commands{
    {"order", placeOrder},
    {"cancel",
     [](SimEngine& engine, const Words& words) {
         if (words.size() != 1) return false;
         if (const auto id = identity(engine, words[0])) engine.cancel(*id);
         return true;
     }},
    {"modify",
     [](SimEngine& engine, const Words& words) {
         const auto to = words.size() == 2 ? price(words[1]) : std::nullopt;
         if (!to) return false;
         if (const auto id = identity(engine, words[0])) engine.modify(*id, *to);
         return true;
     }},
    {"flatten",
     [](SimEngine& engine, const Words& words) {
         if (words.size() != 1) return false;
         engine.flatten(words[0]);
         return true;
     }},
    {"protect",
     [](SimEngine& engine, const Words& words) {
         const auto to = words.size() == 3 ? price(words[2]) : std::nullopt;
         if (!to || (words[1] != sim::slTag && words[1] != sim::tpTag)) return false;
         engine.setProtective(words[0], words[1], *to);
         return true;
     }},
    {"leg",
     [](SimEngine& engine, const Words& words) {
         const auto to = words.size() == 3 ? price(words[2]) : std::nullopt;
         if (!to || (words[1] != sim::slTag && words[1] != sim::tpTag)) return false;
         if (const auto id = identity(engine, words[0])) engine.modifyProjectedLeg(*id, words[1], *to);
         return true;
     }},
    {"reset", [](SimEngine& engine, const Words& words) {
         const auto balance = words.size() == 1 ? price(words[0]) : std::nullopt;
         if (!balance) return false;
         engine.resetAccount(*balance);
         return true;
     }}};
}  // namespace

std::optional<std::string> runSimCommand(SimEngine& engine, const std::string& name, std::string_view arguments) {
    const auto command = commands.find(name);
    if (command == commands.end()) return std::nullopt;
    const sim::Snapshot before = engine.snapshot();
    if (!command->second(engine, split(arguments))) return "error: wrong arguments for " + name + "; see help";
    return "ok " + difference(before, engine.snapshot());
}

}  // namespace vmr
