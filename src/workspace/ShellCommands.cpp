#include "workspace/ShellCommands.h"

#include <cmath>

#include <algorithm>

#include "base/NumberText.h"
#include "market/ClockSetting.h"
#include "workspace/ActionCommands.h"
#include "workspace/PanelCommands.h"
#include "workspace/SettingsCommands.h"
#include "workspace/SimCommands.h"
#include "workspace/TicketCommands.h"
#include "workspace/WindowCommands.h"

namespace vmr {

ShellCommands::ShellCommands(ShellSurroundings surroundings)
    : at_(std::move(surroundings)),
      commands_({" | ", [](const std::string& name) { return "unknown command " + name + "; see help"; },
                 [](const Command& command) { return "wrong arguments for " + command.name + "; see help"; }}) {
    addSessionCommands();
    addChartCommands();
    addProcessCommands();
}

void ShellCommands::run(const std::string& line) {
    CommandWords words(line);
    if (words.empty()) return;
    if (const std::string text = answer(words); !text.empty()) tell(text);
}

std::string ShellCommands::answer(CommandWords& words) {
    number_ = at_.panes.activeNumber();
    if (words.rest().starts_with('@')) {
        const std::string name = words.next().substr(1);
        const auto number = parseInt(name);
        number_ = number && *number >= 1 && *number <= INT32_MAX ? static_cast<int>(*number) : 0;
        if (!at_.panes.find(number_)) return "error: there is no pane " + name;
        if (words.empty()) return "error: what is pane " + name + " to do? see help";
    }
    pane_ = at_.panes.find(number_);
    return commands_.run(words.rest());
}

void ShellCommands::addForPane(Command command) {
    command.run = [this, run = std::move(command.run)](CommandWords& words) -> CommandAnswer {
        return pane_ ? run(words) : "error: no pane is open; see pane open";
    };
    commands_.add(std::move(command));
}

void ShellCommands::addSessionCommands() {
    addForPane({"sign-in", "EMAIL PASSWORD [forget]", 2, 3, [this](CommandWords& words) { return signIn(words); },
                "sign-in needs EMAIL PASSWORD [forget]"});
    addForPane({"sign-out", "", 0, 0, [this](CommandWords&) {
                    pane_->signOut();
                    return "ok signed out";
                }});
}

void ShellCommands::addChartCommands() {
    addForPane({"open", "CANDLE_CHANNEL [DERIVED_CHANNEL]", 1, 2, [this](CommandWords& words) { return open(words); },
                "open needs CANDLE_CHANNEL [DERIVED_CHANNEL]"});
    addForPane({"symbol", "SYM", 1, 1, [this](CommandWords& words) { return symbol(words.next()); }});
    addForPane({"timeframe", "N", 1, 1, [this](CommandWords& words) { return timeframe(words.next()); }});
    addForPane(
        {"expiration", "YYYY-MM-DD|all", 1, 1, [this](CommandWords& words) { return expiration(words.next()); }});
    addForPane({"gex-source", "", 0, 0, [this](CommandWords&) {
                    pane_->cycleGexSource();
                    return "ok gex-source " + pane_->config->gexSource;
                }});
    addForPane({"3d", "on|off", 1, 1, [this](CommandWords& words) -> CommandAnswer {
                    const std::string word = words.next();
                    if (word != "on" && word != "off") return std::nullopt;
                    pane_->setGex3DActive(word == "on");
                    return "ok 3d " + word;
                }});
    addForPane({"set", "KEY JSON", 2, Command::restOfLine, [this](CommandWords& words) { return set(words); },
                "set needs KEY JSON"});
    addPanelCommands([this](Command row) { addForPane(std::move(row)); }, [this] { return pane_; },
                     whileThere_([this](const std::string& text) { tell(text); }));
    addForPane(ticketCommand(at_.sim, [this] { return pane_; }));
    addForPane(settingsCommand(at_.settings, [this] { return pane_; }));
}

void ShellCommands::addProcessCommands() {
    commands_.add({"state", "FILE", 1, Command::restOfLine, [this](CommandWords& words) { return state(words); },
                   "state needs a FILE"});
    commands_.add({"relay", "COMMAND (practice)", 0, Command::restOfLine, [this](CommandWords& words) {
                       if (!at_.practiceRelay)
                           return std::string("error: there is no practice relay; start with --practice");
                       return at_.practiceRelay(std::string(words.rest()));
                   }});
    addSimCommands(commands_, at_.sim);
    commands_.add({"pane", "open|close N", 1, 2, [this](CommandWords& words) { return pane(words); }});
    addWindowCommands(commands_, at_.windows, [this] { return number_; });
    addActionCommands(
        commands_,
        [this] {
            return ActionContext{pane_, at_.windows ? at_.windows->showing(number_) : nullptr, at_.windows};
        },
        at_.keys);
    commands_.add({"clock", "pause|resume|speed X|set MOMENT (practice)", 1, 2,
                   [this](CommandWords& words) { return clock(words); }});
    commands_.add(
        {"bench", "SECONDS (of frames to measure)", 1, 1, [this](CommandWords& words) { return bench(words); }});
    commands_.add({"quit", "", 0, 0, [this](CommandWords&) {
                       at_.quit();
                       return "ok quitting";
                   }});
    commands_.add({"help", "", 0, Command::restOfLine,
                   [this](CommandWords&) { return "ok " + commands_.help() + " | @N COMMAND (in pane N)"; }});
}

CommandAnswer ShellCommands::bench(CommandWords& words) {
    const auto seconds = parseDouble(words.next());
    if (!seconds || !(*seconds > 0) || !std::isfinite(*seconds) || !at_.bench) return std::nullopt;
    return at_.bench(*seconds) ? "ok bench" : "error: a benchmark is running";
}

CommandAnswer ShellCommands::signIn(CommandWords& words) {
    const std::string email = words.next();
    const std::string password = words.next();
    const bool forget = !words.empty();
    if (forget && words.rest() != "forget") return std::nullopt;
    if (pane_->session.signingIn) return "error: a sign-in is running";
    // the pane is still there when it calls
    pane_->signIn(email, password, !forget, [this, pane = pane_, email](bool ok) {
        tell(ok ? "ok signed in as " + email : "error: " + pane->session.authError->value_or("sign-in failed"));
    });
    return "";
}

CommandAnswer ShellCommands::open(CommandWords& words) {
    const std::string candles = words.next();
    pane_->openChart(candles, words.next());
    return "ok open " + pane_->channels->chartChannel;
}

CommandAnswer ShellCommands::symbol(const std::string& sym) {
    const bool known = pane_->catalog.isStock(sym) || pane_->catalog.effectiveContract(sym);
    if (!known) return "error: unknown symbol " + sym;
    pane_->switchSymbol(sym);
    return "ok symbol " + sym;
}

CommandAnswer ShellCommands::timeframe(const std::string& minutes) {
    const auto value = parseInt(minutes);
    if (!value) return "error: timeframe needs a whole number of minutes";
    pane_->setTimeframe(*value);
    return "ok timeframe " + std::to_string(pane_->bars.timeframe.get());
}

CommandAnswer ShellCommands::expiration(const std::string& iso) {
    const auto& offered = pane_->options.futureExps.get();
    if (iso == "all") {
        pane_->setExpiration("");
        return "ok expiration all";
    }
    if (std::find(offered.begin(), offered.end(), iso) == offered.end())
        return "error: no such expiration on offer: " + iso;
    pane_->setExpiration(iso);
    return "ok expiration " + iso;
}

CommandAnswer ShellCommands::set(CommandWords& words) {
    const std::string key = words.next();
    GexConfig changed = pane_->config;
    if (const auto problem = changed.set(key, words.rest())) return "error: " + *problem;
    pane_->setConfig(changed);
    return "ok set " + key;
}

CommandAnswer ShellCommands::state(CommandWords& words) {
    const std::string file(words.rest());
    if (const auto problem = at_.writeState(file)) return "error: " + *problem;
    return "ok state " + file;
}

CommandAnswer ShellCommands::pane(CommandWords& words) {
    const std::string what = words.next();
    if (what == "open" && words.empty()) {
        if (const auto number = at_.panes.open()) return "ok pane " + std::to_string(*number);
        return std::string("error: ") + PaneHost::noRoomText;
    }
    const auto number = what == "close" ? parseInt(words.next()) : std::nullopt;
    if (!number || *number < 1 || *number > INT32_MAX) return std::nullopt;
    if (const auto problem = at_.panes.close(static_cast<int>(*number))) return "error: " + *problem;
    return "ok pane " + std::to_string(*number) + " closed";
}

CommandAnswer ShellCommands::clock(CommandWords& words) {
    if (!at_.clock) return "error: the clock is the machine's own; start with --practice";
    const std::string what = words.next();
    const std::string value = words.next();
    if (what == "pause" && value.empty()) {
        at_.clock->pause();
        return "ok clock paused";
    }
    if (what == "resume" && value.empty()) {
        at_.clock->resume();
        return "ok clock resumed";
    }
    if (what == "speed") {
        const auto speed = parseDouble(value);
        if (!speed || !at_.clock->setSpeed(*speed)) return "error: the speed is a number above 0, at most 10000";
        return "ok clock speed " + doubleText(*speed);
    }
    if (what != "set") return std::nullopt;
    const auto moment = parseMoment(value);
    if (!moment || !at_.clock->setNow(*moment)) return "error: set needs a moment such as 2026-06-10T10:00:00";
    return "ok clock set " + value;
}

}  // namespace vmr
