// Any lines as the arguments of the program and of the practice relay, and the rest as VMR_CLOCK.
#include <cmath>

#include "FuzzEntry.h"
#include "app/Options.h"
#include "relay/CommandLine.h"

void vmr::fuzz::take(std::string_view text) {
    std::vector<std::string> arguments;
    for (std::size_t end = text.find('\n'); end != text.npos; end = text.find('\n')) {
        arguments.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    const std::string clock(text);
    const auto lookup = [&](const char* name) -> std::optional<std::string> {
        const std::string_view wanted(name);
        if (wanted == "VMR_STRICT") return "1";
        return wanted == "VMR_CLOCK" ? std::optional(clock) : std::nullopt;
    };
    const auto parsed = parseOptions(arguments, lookup);
    if (const auto* options = std::get_if<Options>(&parsed)) {
        require(options->strictFeed && std::isfinite(options->seconds) && options->tokenLife > 0 && options->busy > 0);
        require(options->width >= 0 && options->width <= 16384 && options->height <= 16384);
        require(!options->clock || options->clock->speed > 0);
        require(options->tapeFile.empty() == options->tapeSymbol.empty());
    } else {
        require(!std::get<std::string>(parsed).empty());
    }
    // a tape or a recording that is named would be read, and it may be any file of the machine
    for (const std::string& one : arguments)
        if (one.starts_with("--tape") || one.starts_with("--replay")) return;
    const auto line = relay::readRelayCommandLine(arguments, lookup);
    if (line.help || !line.error.empty()) return;
    require(line.relay.relayPort >= 0 && line.relay.restPort <= 65535 && line.relay.tokenLife > 0);
    require(!line.clock || (std::isfinite(line.clock->start) && line.clock->speed > 0));
}
