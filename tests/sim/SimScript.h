// A paper account in virtual time that follows a script.
#pragma once

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "base/CommandTable.h"
#include "base/NumberText.h"
#include "sim/SimEngine.h"
#include "support/time/TestTime.h"

namespace vmr::test {

/// Commands end with ";". Orders are named by their place in the working list, counted from 0:
/// trade P; quote B A; seed P; buy|sell QTY [limit=P] [stop=P] [sl=N] [tp=N]; cancel I; modify I P; leg I SL|TP P;
/// back I SL|TP|- P; protect SL|TP P; flatten; cancelAll; reset BALANCE; root SYM; wait S; closed (from now on); open
/// PANE CONTRACT; roll CONTRACT; offline PANE
class SimScript {
 public:
    SimScript(TestTime& clock, SimEngine& account) : time(clock), engine(account) {}

    TestTime& time;
    SimEngine& engine;
    std::string root = "NQ";
    std::string refused;  ///< the commands that did nothing, by name

    SimScript& run(const std::string& script) {
        std::istringstream all(script);
        for (std::string command; std::getline(all, command, ';');) {
            words_ = CommandWords(command).all();
            if (!words_.empty() && !carryOut(words_[0])) refused += " " + words_[0];
        }
        return *this;
    }
    /// A working entry's planned legs are given by their prices, [SL/TP].
    /// "POSITION", and " | works ORDERS", " | fills FILLS" (oldest first), " | refuses COMMANDS" where there are any.
    std::string outcome() const {
        const auto found = engine.positions().find(root);
        std::string out = "none", works, fills;
        if (found != engine.positions().end())
            out = std::to_string(found->second.qty) + "@" + doubleText(found->second.avg);
        for (const sim::Order& order : engine.orders()) {
            works += (works.empty() ? " | works " : ", ") + word(order.side, order.qty);
            if (order.stopPrice) works += " stop " + doubleText(*order.stopPrice);
            if (order.limitPrice) works += " limit " + doubleText(*order.limitPrice);
            if (!order.tag.empty()) works += " " + order.tag;
            if (order.bracket) {
                const auto legs = engine.projectedBracket(order);
                works += " [" + priceText(legs.sl) + "/" + priceText(legs.tp) + "]";
            }
            if (order.ocoId) works += " >" + place(*order.ocoId);
        }
        for (auto fill = engine.fills().rbegin(); fill != engine.fills().rend(); ++fill)
            fills += (fills.empty() ? " | fills " : ", ") + word(fill->side, fill->qty) + " " +
                     doubleText(fill->price) + fill->tag;
        return out + works + fills + (refused.empty() ? "" : " | refuses" + refused);
    }

 private:
    static std::string word(sim::Side side, std::int64_t qty) {
        return (side == sim::Side::buy ? "buy " : "sell ") + std::to_string(qty);
    }
    static std::string priceText(std::optional<double> price) { return price ? doubleText(*price) : "-"; }
    std::string place(const Uuid& id) const {
        for (std::size_t i = 0; i < engine.orders().size(); ++i)
            if (engine.orders()[i].id == id) return std::to_string(i);
        return "?";
    }
    double number(std::size_t at) const {
        return parseDouble(words_.at(at)).value_or(std::numeric_limits<double>::quiet_NaN());
    }
    Uuid order() const {
        const auto i = static_cast<std::size_t>(number(1));
        return i < engine.orders().size() ? engine.orders()[i].id : Uuid{};
    }
    bool enter() {
        std::optional<double> limit, stop;
        std::optional<sim::BracketSpec> bracket;
        for (const std::string& word : words_) {
            const auto value = parseDouble(word.substr(word.find('=') + 1)).value_or(0);
            if (word.starts_with("limit")) limit = value;
            if (word.starts_with("stop")) stop = value;
            if ((word.starts_with("sl") || word.starts_with("tp")) && !bracket) bracket.emplace();
            if (word.starts_with("sl")) bracket->slTicks = static_cast<std::int64_t>(value);
            if (word.starts_with("tp")) bracket->tpTicks = static_cast<std::int64_t>(value);
        }
        const auto type = stop ? (limit ? sim::OrderType::stopLimit : sim::OrderType::stop)
                               : (limit ? sim::OrderType::limit : sim::OrderType::market);
        const auto side = *sim::sideNamed(words_[0]);
        return engine.place(root, side, type, *parseInt(words_.at(1)), limit, stop, bracket).has_value();
    }
    bool carryOut(const std::string& name) {
        constexpr double closedHours = 1781366400.0;  // a Saturday, 12:00 in New York
        if (name == "buy" || name == "sell") return enter();
        if (name == "cancel") return engine.cancel(order());
        if (name == "flatten") return engine.flatten(root);
        if (name == "protect") return engine.setProtective(root, words_.at(1), number(2));
        if (name == "modify") return engine.modify(order(), number(2));
        if (name == "leg") return engine.modifyProjectedLeg(order(), words_.at(2), number(3));
        if (name == "back") return engine.putBack(order(), words_.at(2) == "-" ? "" : words_.at(2), number(3));
        if (name == "root") return root = words_.at(1), true;
        if (name == "cancelAll") return engine.cancelAll(root), true;
        if (name == "closed") return time.setNow(closedHours), true;
        if (name == "roll") return engine.roll(root, words_.at(1)), true;
        const auto* pane = &panes_[words_.at(1) == "1" ? 0 : 1];
        if (name == "open") return engine.watch(pane, root, words_.at(2)), engine.setConnected(pane, true), true;
        if (name == "leave") return engine.watch(pane, "", ""), true;
        if (name == "offline") return engine.setConnected(pane, false), true;
        if (name == "trade") return engine.onTrade(root, number(1)), true;
        if (name == "quote") return engine.onQuote(root, number(1), number(2)), true;
        if (name == "seed") return engine.seedLast(root, number(1)), true;
        if (name == "wait") return time.advance(number(1)), true;
        if (name == "reset") return engine.resetAccount(number(1)), true;
        ADD_FAILURE() << "no such command: " << name;
        return false;
    }

    std::vector<std::string> words_;  // of the command under way
    const char panes_[2] = {};        // their addresses stand for panes
};

}  // namespace vmr::test
