// An engine in virtual time that is driven by short scripts and told as short texts.
#pragma once

#include <gmock/gmock.h>

#include <limits>
#include <sstream>

#include "base/NumberText.h"
#include "sim/SimEngine.h"
#include "support/TestTime.h"

namespace vmr::test {

inline constexpr double openHours = 1781100000.0;    // a Wednesday, 10:00 in New York
inline constexpr double closedHours = 1781366400.0;  // the Saturday after

/// Commands end with ";". Orders are named by their place in the working list, counted from 0:
/// trade P; quote B A; seed P; buy|sell QTY [limit=P] [stop=P] [sl=N] [tp=N]; cancel I; modify I P; leg I SL|TP P;
/// protect SL|TP P; flatten; cancelAll; reset B; root SYM; spec TICK VALUE; commission C; wait S; closed; open
class SimScript {
 public:
    TestTime time{openHours};
    SessionTime session;
    SimEngine engine{{.clock = time, .session = session, .ids = UuidSource(1)}};
    std::string root = "NQ";
    std::string refused;  ///< the commands that did nothing, by name

    SimScript& run(const std::string& script) {
        std::istringstream all(script);
        for (std::string command; std::getline(all, command, ';');) {
            std::istringstream words(command);
            std::string name;
            if (words >> name && !carryOut(name, words)) refused += (refused.empty() ? "" : " ") + name;
        }
        return *this;
    }

    std::string position() const {
        const auto found = engine.positions().find(root);
        if (found == engine.positions().end()) return "none";
        return std::to_string(found->second.qty) + "@" + doubleText(found->second.avg);
    }
    std::string orders() const {
        std::string out;
        for (const sim::Order& order : engine.orders()) {
            out += (out.empty() ? "" : ", ") + word(order.side, order.qty);
            if (order.stopPrice) out += " stop " + doubleText(*order.stopPrice);
            if (order.limitPrice) out += " limit " + doubleText(*order.limitPrice);
            if (!order.tag.empty()) out += " " + order.tag;
            if (order.bracket) out += " [" + ticks(order.bracket->slTicks) + "/" + ticks(order.bracket->tpTicks) + "]";
            if (order.ocoId) out += " >" + place(*order.ocoId);
        }
        return out;
    }
    std::string fills() const {  // oldest first
        std::string out;
        for (auto fill = engine.fills().rbegin(); fill != engine.fills().rend(); ++fill)
            out += (out.empty() ? "" : ", ") + word(fill->side, fill->qty) + " " + doubleText(fill->price) + fill->tag;
        return out;
    }
    std::string trades() const {  // newest first
        std::string out;
        for (const sim::Trade& t : engine.trades())
            out += (out.empty() ? "" : ", ") + word(t.side, t.qty) + " " + doubleText(t.entry) + ">" +
                   doubleText(t.exit) + " pnl " + doubleText(t.pnl) + " fees " + doubleText(t.fees) + t.exitTag;
        return out;
    }

 private:
    static std::string word(sim::Side side, std::int64_t qty) {
        return std::string(rawText(side)) + " " + std::to_string(qty);
    }
    static std::string ticks(std::optional<std::int64_t> count) { return count ? std::to_string(*count) : "-"; }
    std::string place(const Uuid& id) const {
        for (std::size_t i = 0; i < engine.orders().size(); ++i)
            if (engine.orders()[i].id == id) return std::to_string(i);
        return "?";
    }
    static double price(std::istringstream& words) {
        std::string word;
        words >> word;
        return parseDouble(word).value_or(std::numeric_limits<double>::quiet_NaN());
    }
    Uuid orderId(std::istringstream& words) const {
        std::size_t i = 0;
        words >> i;
        return i < engine.orders().size() ? engine.orders()[i].id : Uuid{};
    }
    bool place(sim::Side side, std::istringstream& words) {
        std::int64_t qty = 0;
        words >> qty;
        std::optional<double> limit, stop;
        std::optional<sim::BracketSpec> bracket;
        for (std::string word; words >> word;) {
            const std::string key = word.substr(0, word.find('='));
            const auto value = parseDouble(word.substr(key.size() + 1));
            if (key == "limit") limit = value;
            if (key == "stop") stop = value;
            if ((key == "sl" || key == "tp") && !bracket) bracket.emplace();
            if (key == "sl") bracket->slTicks = static_cast<std::int64_t>(*value);
            if (key == "tp") bracket->tpTicks = static_cast<std::int64_t>(*value);
        }
        const auto type = stop ? (limit ? sim::OrderType::stopLimit : sim::OrderType::stop)
                               : (limit ? sim::OrderType::limit : sim::OrderType::market);
        return engine.place(root, side, type, qty, limit, stop, bracket).has_value();
    }
    bool carryOut(const std::string& name, std::istringstream& words) {
        std::string text;
        if (name == "buy" || name == "sell") return place(*sim::sideNamed(name), words);
        if (name == "cancel") return engine.cancel(orderId(words));
        if (name == "flatten") return engine.flatten(root);
        if (name == "protect") return words >> text, engine.setProtective(root, text, price(words));
        if (name == "modify") {
            const Uuid id = orderId(words);
            return engine.modify(id, price(words));
        }
        if (name == "leg") {
            const Uuid id = orderId(words);
            return words >> text, engine.modifyProjectedLeg(id, text, price(words));
        }
        if (name == "root") return static_cast<bool>(words >> root);
        if (name == "cancelAll") return engine.cancelAll(root), true;
        if (name == "closed") return time.setNow(closedHours), true;
        if (name == "open") return time.setNow(openHours), true;
        const double a = price(words);
        if (name == "trade") return engine.onTrade(root, a), true;
        if (name == "quote") return engine.onQuote(root, a, price(words)), true;
        if (name == "seed") return engine.seedLast(root, a), true;
        if (name == "reset") return engine.resetAccount(a), true;
        if (name == "spec") return engine.updateSpecs({{root, {a, price(words)}}}), true;
        if (name == "commission") return engine.commission = a, true;
        if (name == "wait") return time.advance(a), true;
        ADD_FAILURE() << "no such command: " << name;
        return false;
    }
};

}  // namespace vmr::test
