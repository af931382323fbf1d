#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <mutex>
#include <thread>

#include "base/AsioLoop.h"
#include "base/Environment.h"
#include "base/Log.h"
#include "base/NumberText.h"
#include "base/StandardInput.h"
#include "market/SessionTime.h"
#include "relay/CommandLine.h"
#include "relay/PracticeRelay.h"

namespace {
void print(const std::string& text) { vmr::Log::standardOutput().line(text); }

/// The relay as the reading thread sees it. That thread blocks in getline and cannot be woken at the end, so it asks
/// here whether the relay still exists.
struct CommandTarget {
    std::mutex mutex;
    vmr::relay::PracticeRelay* relay = nullptr;  // nothing once the program ends
};

void readCommands(const std::shared_ptr<CommandTarget>& target) {
    std::string line;
    while (std::getline(std::cin, line)) {
        if (line.find_first_not_of(" \t\r") == line.npos) continue;
        std::lock_guard lock(target->mutex);
        if (!target->relay) return;
        print(target->relay->command(line));
    }
}

void announce(const vmr::relay::PracticeRelay& relay, const vmr::relay::RelayCommandLine& line,
              const vmr::Clock& clock) {
    for (const auto& [name, value] : relay.variables()) print(name + "=" + value);
    if (line.clock) print("VMR_CLOCK=" + vmr::relay::momentText(clock.now()) + "@" + vmr::doubleText(clock.speed()));
    print("# account: " + relay.email() + "   password: " + relay.password());
    const auto now = static_cast<std::int64_t>(clock.now());
    if (!line.relay.tape && !line.relay.replay && !vmr::SessionTime().marketOpen(now, false)) {
        print("# the market is closed at " + vmr::relay::momentText(clock.now()) +
              "; --clock starts it at another moment");
    }
    print("# type help for the faults that can be made");
}
}  // namespace

int main(int argc, char** argv) {
    const auto line = vmr::relay::readRelayCommandLine({argv + 1, argv + argc}, vmr::environment);
    if (line.help) {
        vmr::Log::standardOutput().lines(vmr::relay::relayHelp());
        return 0;
    }
    const auto complain = [](const std::string& text) {
        std::fprintf(stderr, "velmora-relay: %s\n", text.c_str());
        return 2;
    };
    if (!line.error.empty()) return complain(line.error + " (see --help)");

    const vmr::SystemClock clock =
        line.clock ? vmr::SystemClock(line.clock->start, line.clock->speed) : vmr::SystemClock();
    vmr::AsioLoop loop;
    boost::asio::signal_set signals(loop.context(), SIGINT, SIGTERM);
    signals.async_wait([&loop](const boost::system::error_code&, int) { loop.quit(); });

    vmr::relay::PracticeRelay relay(clock, line.relay);
    if (const auto wrong = relay.start()) return complain(*wrong);
    announce(relay, line, clock);

    std::ios::sync_with_stdio(false);  // else the blocked reader holds a lock that ending needs
    const auto target = std::make_shared<CommandTarget>();
    target->relay = &relay;
    vmr::readStandardInputUnlocked();
    std::thread([target] { readCommands(target); }).detach();
    loop.run();
    std::lock_guard lock(target->mutex);
    target->relay = nullptr;
    if (const auto wrong = relay.recordingProblem()) return complain(*wrong);
    return 0;
}
