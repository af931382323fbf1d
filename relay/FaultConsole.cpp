#include "relay/FaultConsole.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

#include "base/NumberText.h"
#include "relay/BadFrames.h"
#include "relay/ChannelName.h"
#include "relay/MarketTime.h"

namespace vmr::relay {

namespace {
using Words = std::vector<std::string>;

Words wordsOf(std::string_view line) {
    Words words;
    while (!line.empty()) {
        const std::size_t end = std::min(line.find_first_of(" \t\r\n"), line.size());
        if (end > 0) words.emplace_back(line.substr(0, end));
        line.remove_prefix(std::min(end + 1, line.size()));
    }
    return words;
}

std::optional<std::int64_t> numberIn(const std::string& text, std::int64_t least, std::int64_t most) {
    const auto value = parseInt(text);
    return value && *value >= least && *value <= most ? value : std::nullopt;
}

/// The codes that may travel in a close frame.
bool isCloseCode(std::int64_t code) {
    return (code >= 1000 && code <= 1014 && code != 1004 && code != 1005 && code != 1006) ||
           (code >= 3000 && code <= 4999);
}

std::string setSwitch(bool& flag, const std::string& word) {
    if (word != "on" && word != "off") return "error: say on or off";
    flag = word == "on";
    return "ok " + word;
}

std::string count(std::size_t number, const char* what) {
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}
}  // namespace

struct FaultConsole::Command {
    std::string_view name, arguments;
    std::size_t words;  // after the name
    std::string (*call)(FaultConsole&, const Words&);
    static const std::array<Command, 15> all;
};

const std::array<FaultConsole::Command, 15> FaultConsole::Command::all{{
    {"drop", "", 0, [](FaultConsole& c, const Words&) { return c.drop(); }},
    {"close", "CODE", 1, [](FaultConsole& c, const Words& w) { return c.close(w[1]); }},
    {"mute", "on|off", 1, [](FaultConsole& c, const Words& w) { return setSwitch(c.parts_.faults.mute, w[1]); }},
    {"stall", "on|off", 1, [](FaultConsole& c, const Words& w) { return setSwitch(c.parts_.faults.stall, w[1]); }},
    {"refuse", "on|off", 1, [](FaultConsole& c, const Words& w) { return setSwitch(c.parts_.faults.refuse, w[1]); }},
    {"expire", "", 0,
     [](FaultConsole& c, const Words&) {
         c.parts_.accounts.expireIdTokens();
         return std::string("ok identity tokens expired");
     }},
    {"expire-refresh", "", 0,
     [](FaultConsole& c, const Words&) {
         c.parts_.accounts.expireIdTokens();
         c.parts_.accounts.expireRefreshTokens();
         return std::string("ok all tokens expired");
     }},
    {"delay", "SECONDS", 1, [](FaultConsole& c, const Words& w) { return c.delay(w[1]); }},
    {"malformed", "N", 1, [](FaultConsole& c, const Words& w) { return c.malformed(w[1]); }},
    {"wrong", "N", 1, [](FaultConsole& c, const Words& w) { return c.wrong(w[1]); }},
    {"big-bars", "BYTES CHANNEL", 2, [](FaultConsole& c, const Words& w) { return c.big(w[1], w[2], false); }},
    {"big-derived", "BYTES CHANNEL", 2, [](FaultConsole& c, const Words& w) { return c.big(w[1], w[2], true); }},
    {"contract", "ROOT CONTRACT|auto", 2, [](FaultConsole& c, const Words& w) { return c.contract(w[1], w[2]); }},
    {"status", "", 0, [](FaultConsole& c, const Words&) { return c.status(); }},
    {"help", "", 0, [](FaultConsole& c, const Words&) { return c.help(); }},
}};

std::string FaultConsole::run(std::string_view line) {
    const Words words = wordsOf(line);
    if (words.empty()) return "error: say what to do, or help";
    for (const Command& command : Command::all) {
        if (command.name != words[0]) continue;
        if (words.size() == command.words + 1) return command.call(*this, words);
        return "error: it is " + std::string(command.name) + (command.words ? " " : "") +
               std::string(command.arguments);
    }
    return "error: unknown command " + words[0] + "; say help";
}

std::string FaultConsole::drop() {
    const auto sockets = parts_.sockets.sockets();
    for (const auto& one : sockets) one->drop();
    return "ok dropped " + count(sockets.size(), "socket");
}

std::string FaultConsole::close(const std::string& text) {
    const auto code = parseInt(text);
    if (!code || !isCloseCode(*code)) return "error: " + text + " is no close code";
    const auto sockets = parts_.sockets.sockets();
    for (const auto& one : sockets) one->close(static_cast<int>(*code));
    return "ok closing " + count(sockets.size(), "socket");
}

std::string FaultConsole::delay(const std::string& text) {
    const auto seconds = parseDouble(text);
    if (!seconds || !(*seconds >= 0) || *seconds > 3600) return "error: the delay is 0 to 3600 seconds";
    parts_.faults.delay = *seconds;
    return "ok " + doubleText(*seconds);
}

std::string FaultConsole::malformed(const std::string& text) {
    const auto number = numberIn(text, 1, 100000);
    if (!number) return "error: the count is 1 to 100000";
    std::size_t reached = 0;
    for (const auto& one : parts_.sockets.sockets()) {
        if (!one->greeted()) continue;
        ++reached;
        for (std::size_t i = 0; i < static_cast<std::size_t>(*number); ++i) one->send(malformedFrame(i));
    }
    return "ok to " + count(reached, "socket");
}

std::string FaultConsole::wrong(const std::string& text) {
    const auto number = numberIn(text, 1, 100000);
    if (!number) return "error: the count is 1 to 100000";
    std::size_t reached = 0;
    for (const auto& one : parts_.sockets.sockets()) {
        const auto channels = parts_.hub.channelsOf(*one);
        if (channels.empty()) continue;
        ++reached;
        for (std::size_t i = 0; i < static_cast<std::size_t>(*number); ++i) {
            one->send(wrongFrame(channels[i % channels.size()], i / channels.size() + i));
        }
    }
    return "ok to " + count(reached, "socket");
}

std::string FaultConsole::big(const std::string& bytes, const std::string& channel, bool derived) {
    const auto size = numberIn(bytes, 1000, largestSnapshot);
    if (!size) return "error: the size is 1000 to " + std::to_string(largestSnapshot) + " bytes";
    const auto market = marketChannel(channel);
    const bool bars =
        market && (market->kind == MarketChannel::Kind::history || market->kind == MarketChannel::Kind::minutes);
    if (derived ? !channel.starts_with("derived:") : !bars) return "error: " + channel + " does not carry that";
    std::size_t reached = 0;
    for (const auto& one : parts_.sockets.sockets()) {
        const auto channels = parts_.hub.channelsOf(*one);
        reached += std::find(channels.begin(), channels.end(), channel) != channels.end();
    }
    if (reached == 0) return "error: nobody has subscribed to " + channel;
    const auto length = static_cast<std::size_t>(*size);
    if (derived) {
        parts_.hub.publish(channel, Frame(bigDerived(length, channel)));
    } else {
        const std::int64_t nowMs = marketMs(parts_.clock);
        parts_.hub.tick(nowMs);
        const auto ledger = parts_.market.ledger(*market->instrument, nowMs);
        parts_.hub.publish(channel, Frame(bigBars(length, channel, *market->instrument, ledger, minuteOf(nowMs))));
    }
    return "ok " + bytes + " bytes to " + count(reached, "socket");
}

std::string FaultConsole::contract(const std::string& root, const std::string& contract) {
    if (!findInstrument(Family::futures, root)) return "error: " + root + " is no futures root";
    const bool automatic = contract == "auto";
    if (!automatic && contractRoot(contract) != root) return "error: " + contract + " is no contract of " + root;
    parts_.meta.setContract(root, automatic ? std::string() : contract);
    return "ok " + root + " is " + parts_.meta.contracts()[root];
}

std::string FaultConsole::status() const {
    const auto onOff = [](bool flag) { return flag ? "on" : "off"; };
    const Faults& faults = parts_.faults;
    std::string text = "ok " + count(parts_.sockets.sockets().size(), "socket");
    text += ", " + count(parts_.hub.channels().size(), "channel");
    text += std::string(", mute ") + onOff(faults.mute) + ", stall " + onOff(faults.stall) + ", refuse " +
            onOff(faults.refuse);
    return text + ", delay " + doubleText(faults.delay) + ", time " + doubleText(std::floor(parts_.clock.now()));
}

std::string FaultConsole::help() const {
    std::string text = "ok";
    for (const Command& one : Command::all) {
        text += (text.size() > 2 ? "; " : " ") + std::string(one.name) + (one.words ? " " : "") +
                std::string(one.arguments);
    }
    return text;
}

}  // namespace vmr::relay
