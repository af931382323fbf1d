#include "relay/FaultConsole.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "base/NumberText.h"
#include "relay/BadFrames.h"
#include "relay/ChannelName.h"
#include "relay/MarketTime.h"

namespace vmr::relay {

namespace {
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

FaultConsole::FaultConsole(Parts parts)
    : parts_(parts),
      commands_(
          {"; ", [](const std::string& name) { return "unknown command " + name + "; say help"; },
           [](const Command& it) { return "it is " + it.name + (it.arguments.empty() ? "" : " ") + it.arguments; }}) {
    const auto none = [this](const char* name, auto call) {
        commands_.add({name, "", 0, 0, [call](CommandWords&) { return call(); }});
    };
    const auto one = [this](const char* name, const char* argument, auto call) {
        commands_.add({name, argument, 1, 1, [call](CommandWords& words) { return call(words.next()); }});
    };
    const auto two = [this](const char* name, const char* arguments, auto call) {
        commands_.add({name, arguments, 2, 2, [call](CommandWords& words) {
                           const std::string first = words.next();
                           return call(first, words.next());
                       }});
    };
    Faults& faults = parts_.faults;
    none("drop", [this] { return drop(); });
    one("close", "CODE", [this](const std::string& code) { return close(code); });
    one("mute", "on|off", [&faults](const std::string& word) { return setSwitch(faults.mute, word); });
    one("stall", "on|off", [&faults](const std::string& word) { return setSwitch(faults.stall, word); });
    one("refuse", "on|off", [&faults](const std::string& word) { return setSwitch(faults.refuse, word); });
    none("expire", [this] {
        parts_.accounts.expireIdTokens();
        return std::string("ok identity tokens expired");
    });
    none("expire-refresh", [this] {
        parts_.accounts.expireIdTokens();
        parts_.accounts.expireRefreshTokens();
        return std::string("ok all tokens expired");
    });
    one("delay", "SECONDS", [this](const std::string& seconds) { return delay(seconds); });
    one("malformed", "N", [this](const std::string& number) { return malformed(number); });
    one("wrong", "N", [this](const std::string& number) { return wrong(number); });
    two("big-bars", "BYTES CHANNEL",
        [this](const std::string& bytes, const std::string& channel) { return big(bytes, channel, false); });
    two("big-derived", "BYTES CHANNEL",
        [this](const std::string& bytes, const std::string& channel) { return big(bytes, channel, true); });
    two("contract", "ROOT CONTRACT|auto",
        [this](const std::string& root, const std::string& name) { return contract(root, name); });
    addCloud();
    none("status", [this] { return status(); });
    none("help", [this] { return "ok " + commands_.help(); });
}

// What the service tells its users, and what they report to it.
void FaultConsole::addCloud() {
    CloudDesk& cloud = parts_.cloud;
    commands_.add({"presence", "", 0, 0, [&cloud](CommandWords&) { return cloud.presence(); }});
    commands_.add({"notice", "ID TITLE | MESSAGE, or off", 1, Command::restOfLine,
                   [&cloud](CommandWords& words) { return cloud.notice(words.rest()); }});
    commands_.add({"maintenance", "[TEXT|off]", 0, Command::restOfLine,
                   [&cloud](CommandWords& words) { return cloud.maintenance(words.rest()); }});
    commands_.add({"release", "BUILD VERSION URL", 3, 3, [&cloud](CommandWords& words) {
                       const std::string build = words.next(), version = words.next();
                       return cloud.release(build, version, words.next());
                   }});
    commands_.add({"templates", "error TEXT|status CODE|delay SECONDS|text RAW|ok", 1, Command::restOfLine,
                   [this](CommandWords& words) { return parts_.templates.command(words.rest()); }});
}

std::string FaultConsole::run(std::string_view line) {
    if (CommandWords(line).empty()) return "error: say what to do, or help";
    return commands_.run(line);
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

}  // namespace vmr::relay
