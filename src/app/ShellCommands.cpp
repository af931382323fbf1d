#include "app/ShellCommands.h"

#include <algorithm>
#include <iostream>
#include <mutex>
#include <thread>

#include "app/SimCommands.h"
#include "base/NumberText.h"

namespace vmr {

namespace {
constexpr std::string_view blanks = " \t\r";

std::string_view trim(std::string_view text) {
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Takes the first word off `text`.
std::string word(std::string_view& text) {
    text = trim(text);
    const auto end = std::min(text.find_first_of(blanks), text.size());
    std::string first(text.substr(0, end));
    text = trim(text.substr(end));
    return first;
}
}  // namespace

void ShellCommands::run(const std::string& line) {
    std::string_view rest = line;
    const std::string name = word(rest);
    if (name.empty()) return;
    if (name == "sign-in") return signIn(rest);
    Program::print("[cmd] " + carryOut(name, rest));
}

ShellCommands::Answer ShellCommands::carryOut(const std::string& name, std::string_view rest) {
    if (name == "open") return open(rest);
    if (name == "set") return set(rest);
    if (name == "relay") return relay(rest);
    if (name == "sign-out" && rest.empty()) {
        program_.pane().signOut();
        return "ok signed out";
    }
    if (name == "quit" && rest.empty()) {
        quit_();
        return "ok quitting";
    }
    if (name == "help")
        return "ok sign-in EMAIL PASSWORD [forget] | sign-out | open CANDLE_CHANNEL [DERIVED_CHANNEL] | symbol SYM | "
               "timeframe N | expiration YYYY-MM-DD | gex-source | 3d on|off | set KEY JSON | state FILE | relay "
               "COMMAND (practice) | " +
               std::string(simCommandsHelp) + " | quit";
    if (name == "state") return state(std::string(rest));
    if (const auto answer = runSimCommand(program_.sim(), name, rest)) return *answer;
    const std::string argument = word(rest);
    if (!argument.empty() && rest.empty()) {
        if (name == "symbol") return symbol(argument);
        if (name == "timeframe") return timeframe(argument);
        if (name == "expiration") return expiration(argument);
        if (name == "3d" && (argument == "on" || argument == "off")) {
            program_.pane().setGex3DActive(argument == "on");
            return "ok 3d " + argument;
        }
    }
    if (name == "gex-source" && argument.empty()) {
        program_.pane().cycleGexSource();
        return "ok gex-source " + program_.pane().config->gexSource;
    }
    for (const char* known : {"symbol", "timeframe", "expiration", "3d", "gex-source", "sign-out", "quit"})
        if (name == known) return "error: wrong arguments for " + name + "; see help";
    return "error: unknown command " + name + "; see help";
}

ShellCommands::Answer ShellCommands::open(std::string_view rest) {
    const std::string candles = word(rest);
    const std::string levels = word(rest);
    if (candles.empty() || !rest.empty()) return "error: open needs CANDLE_CHANNEL [DERIVED_CHANNEL]";
    program_.pane().openChart(candles, levels);
    return "ok open " + program_.pane().channels->chartChannel;
}

ShellCommands::Answer ShellCommands::symbol(const std::string& sym) {
    AppModel& pane = program_.pane();
    if (!pane.catalog.isStock(sym) && !pane.catalog.effectiveContract(sym)) return "error: unknown symbol " + sym;
    pane.switchSymbol(sym);
    return "ok symbol " + sym;
}

ShellCommands::Answer ShellCommands::timeframe(const std::string& minutes) {
    const auto value = parseInt(minutes);
    if (!value) return "error: timeframe needs a whole number of minutes";
    program_.pane().setTimeframe(*value);
    return "ok timeframe " + std::to_string(program_.pane().bars.timeframe.get());
}

ShellCommands::Answer ShellCommands::expiration(const std::string& iso) {
    AppModel& pane = program_.pane();
    const auto& offered = pane.options.futureExps.get();
    if (std::find(offered.begin(), offered.end(), iso) == offered.end())
        return "error: no such expiration on offer: " + iso;
    pane.setExpiration(iso);
    return "ok expiration " + iso;
}

ShellCommands::Answer ShellCommands::set(std::string_view rest) {
    const std::string key = word(rest);
    if (key.empty() || rest.empty()) return "error: set needs KEY JSON";
    GexConfig changed = program_.pane().config;
    if (const auto problem = changed.set(key, rest)) return "error: " + *problem;
    program_.pane().setConfig(changed);
    return "ok set " + key;
}

ShellCommands::Answer ShellCommands::state(const std::string& file) {
    if (file.empty()) return "error: state needs a FILE";
    if (const auto problem = program_.writeState(file)) return "error: " + *problem;
    return "ok state " + file;
}

ShellCommands::Answer ShellCommands::relay(std::string_view rest) {
    relay::PracticeRelay* practice = program_.start().practice();
    if (!practice) return "error: there is no practice relay; start with --practice";
    return practice->command(std::string(rest));
}

void ShellCommands::signIn(std::string_view rest) {
    const std::string email = word(rest);
    const std::string password = word(rest);
    const std::string last = word(rest);
    AppModel& pane = program_.pane();
    if (password.empty() || (!last.empty() && last != "forget") || !rest.empty())
        return Program::print("[cmd] error: sign-in needs EMAIL PASSWORD [forget]");
    if (pane.session.signingIn) return Program::print("[cmd] error: a sign-in is running");
    pane.signIn(email, password, last.empty(), [&pane, email](bool ok) {
        Program::print(ok ? "[cmd] ok signed in as " + email
                          : "[cmd] error: " + pane.session.authError->value_or("sign-in failed"));
    });
}

struct LineReader::Shared {
    std::mutex mutex;
    MainLoop* loop;
    std::function<void(const std::string&)> take;
};

LineReader::LineReader(MainLoop& loop, std::function<void(const std::string&)> take)
    : shared_(std::make_shared<Shared>()) {
    shared_->loop = &loop;
    shared_->take = std::move(take);
    // the thread may wait for input for ever, so it is left behind when the reader ends
    std::thread([shared = shared_] {
        for (std::string line; std::getline(std::cin, line);) {
            std::lock_guard lock(shared->mutex);
            if (!shared->loop) return;
            shared->loop->post([shared, line] {
                if (shared->take) shared->take(line);
            });
        }
    }).detach();
}

LineReader::~LineReader() {
    std::lock_guard lock(shared_->mutex);
    shared_->loop = nullptr;
    shared_->take = nullptr;
}

}  // namespace vmr
