#include "workspace/TicketCommands.h"

#include <utility>

#include "base/NumberText.h"
#include "model/AppModel.h"
#include "model/SimDesk.h"
#include "workspace/SimCommands.h"

namespace vmr {

namespace {
std::string describe(const SimDesk& desk) {
    const sim::SimTicket& ticket = desk.ticket();
    const auto field = [&](const char* name, sim::OrderType type) {
        const auto shown = desk.field(type);
        if (ticket.fieldOf(type)->empty() && !shown.wrong) return std::string();
        return std::string("; ") + name + " " + (shown.wrong ? "is no price above 0" : shown.read);
    };
    return "ok qty " + std::to_string(ticket.qty) + "; bracket " + (ticket.bracketOn ? "on " : "off ") +
           std::to_string(ticket.slTicks) + " " + std::to_string(ticket.tpTicks) +
           (ticket.useTicks ? " ticks" : " points") + field("limit", sim::OrderType::limit) +
           field("stop", sim::OrderType::stop);
}

// "on", "on 40 80", "off"
bool setBracket(sim::SimTicket& ticket, CommandWords& words) {
    const std::string what = words.next();
    ticket.bracketOn = what == "on";
    if ((what != "on" && what != "off") || words.empty()) return what == "on" || what == "off";
    const auto sl = parseInt(words.next()), tp = parseInt(words.next());
    if (what == "off" || !sl || !tp || !words.empty()) return false;
    ticket.slTicks = *sl;
    ticket.tpTicks = *tp;
    return true;
}

// Whether `what` is a word of the ticket's own, and its arguments are right.
bool setTicket(sim::SimTicket& ticket, const std::string& what, CommandWords& words) {
    if (what == "bracket") return setBracket(ticket, words);
    if (what == "limit" || what == "stop") {
        (what == "limit" ? ticket.limitText : ticket.stopText) = words.rest();
        return true;
    }
    if (what == "qty") {
        const auto qty = parseInt(words.next());
        ticket.qty = qty.value_or(0);
        return qty && words.empty();
    }
    ticket.useTicks = what == "ticks";
    return (what == "ticks" || what == "points") && words.empty();
}

CommandAnswer cancel(SimDesk& desk, SimEngine& engine, const std::string& which) {
    if (which == "all")
        return answerOfAccount(engine, desk.root(), [&]() -> std::optional<std::string> {
            desk.cancelAll();
            return std::nullopt;
        });
    const auto id = Uuid::parse(which);
    return answerOfAccount(engine, desk.root(), [&] { return desk.cancel(id.value_or(Uuid{})); });
}

CommandAnswer press(SimDesk& desk, SimEngine& engine, sim::Side side, CommandWords& words) {
    const auto type = sim::orderTypeNamed(words.next());
    if (!type || *type == sim::OrderType::stopLimit || !words.empty()) return std::nullopt;
    return answerOfAccount(engine, desk.root(), [&] { return desk.press(side, *type); });
}

CommandAnswer run(SimDesk& desk, SimEngine& engine, CommandWords& words) {
    if (words.empty()) return describe(desk);
    const std::string what = words.next();
    if (const auto side = sim::sideNamed(what)) return press(desk, engine, *side, words);
    if (what == "cancel") return cancel(desk, engine, std::string(words.rest()));
    if (what == "flat" || what == "+sl" || what == "+tp") {
        const std::string root = words.empty() ? desk.root() : words.next();
        if (!words.empty()) return std::nullopt;
        return answerOfAccount(engine, root, [&] {
            return what == "flat" ? desk.flatten(root) : desk.protect(root, what == "+sl" ? sim::slTag : sim::tpTag);
        });
    }
    sim::SimTicket ticket = desk.ticket();
    if (!setTicket(ticket, what, words)) return std::nullopt;
    desk.setTicket(std::move(ticket));
    return describe(desk);
}
}  // namespace

Command ticketCommand(SimEngine& engine, std::function<AppModel*()> pane) {
    return {"ticket",
            "[qty N|bracket on [SL TP]|bracket off|ticks|points|limit TEXT|stop TEXT|buy market|limit|stop|sell "
            "market|limit|stop|flat [SYM]|+sl [SYM]|+tp [SYM]|cancel ID|all]",
            0, Command::restOfLine, [&engine, pane = std::move(pane)](CommandWords& words) -> CommandAnswer {
                SimDesk* desk = pane()->desk.get();
                return desk ? run(*desk, engine, words) : "error: there is no paper account here";
            }};
}

}  // namespace vmr
