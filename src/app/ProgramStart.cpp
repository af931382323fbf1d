#include "app/ProgramStart.h"

#include <algorithm>

#include "base/Environment.h"
#include "relay/Tape.h"
#include "sim/SimStore.h"

namespace vmr {

ProgramStart::ProgramStart(const Options& options)
    : options_(options), endpoints_(Endpoints::fromEnvironment(environment)) {
    choosePaths();
    if (options_.practice && !failure_) choosePracticeClock();
    if (options_.clock)
        clock_ = std::make_unique<SteerableClock>(options_.clock->start, options_.clock->speed);
    else
        clock_ = std::make_unique<SteerableClock>();
    if (options_.practice && !failure_) startPractice();
}

void ProgramStart::choosePaths() {
    if (const auto paths = options_.practice ? Paths::practice() : Paths::user())
        paths_ = *paths;
    else
        failure_ = "there is no home folder to keep settings and the paper account in; set HOME";
}

// The market that practice offers by default has no name, and so the plain file.
std::filesystem::path ProgramStart::accountFile() const {
    std::string market;
    if (options_.practice && !options_.tapeFile.empty())
        market = "tape-" + std::filesystem::path(options_.tapeFile).filename().string();
    if (options_.practice && options_.seed != Options().seed)
        market += (market.empty() ? "seed-" : "-seed-") + std::to_string(options_.seed);
    return paths_.data / SimStore::fileName(market);
}

void ProgramStart::choosePracticeClock() {
    if (!options_.tapeFile.empty()) {
        std::string problem;
        const auto span = relay::tapeSpan(options_.tapeFile, problem);
        if (!span) {
            failure_ = problem;
            return;
        }
        if (!options_.clock) options_.clock = ClockSetting{relay::tapeStart(*span), 1};
        if (options_.speed) options_.clock->speed = *options_.speed;
    } else if (!options_.clock) {
        const double now = SystemClock().now();
        const double start = practiceStart(now);
        if (start != now) options_.clock = ClockSetting{start, 1};
    }
}

void ProgramStart::startPractice() {
    relay::PracticeRelayOptions relay;
    relay.seed = options_.seed;
    relay.tokenLife = options_.tokenLife;
    relay.busy = options_.busy;
    if (!options_.tapeFile.empty()) relay.tape = relay::TapeOptions{options_.tapeFile, options_.tapeSymbol};
    if (!options_.templatesFile.empty()) relay.templates = options_.templatesFile;
    practice_ = std::make_unique<relay::PracticeRelay>(*clock_, relay);
    failure_ = practice_->start();
    if (failure_) return;
    endpoints_ = Endpoints::fromEnvironment([variables = practice_->variables()](const char* name) {
        const auto found = std::find_if(variables.begin(), variables.end(),
                                        [name](const auto& variable) { return variable.first == name; });
        return found == variables.end() ? std::nullopt : std::optional(found->second);
    });
}

std::string ProgramStart::signInHint() const {
    return practice_ ? "Practice account: " + practice_->email() + "\nPassword: " + practice_->password() : "";
}

std::optional<std::string> ProgramStart::setupProblem() const {
    if (auto problem = endpoints_.problem()) return problem;
    if (endpoints_.relayUrl.empty())
        return "No data relay is configured. Set VMR_RELAY_URL to its address, or start Velmora with --practice.";
    if (endpoints_.apiKey.empty())
        return "No API key for the sign-in service is configured. Set VMR_API_KEY, or start Velmora with --practice.";
    return std::nullopt;
}

}  // namespace vmr
