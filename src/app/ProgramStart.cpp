#include "app/ProgramStart.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "relay/Tape.h"

namespace vmr {

namespace {
std::optional<std::string> environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
}

// Letters, digits, "-" and "." stay, any other byte becomes "_" and its code, so that no two names become one. Of a
// name that is too long for a file the end is replaced by a number made of all of it.
std::string asFileName(const std::string& name) {
    constexpr std::size_t longest = 120;
    constexpr std::string_view digits = "0123456789abcdef";
    std::string out;
    for (const char c : name) {
        const auto code = static_cast<unsigned char>(c);
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.')
            out += c;
        else
            ((out += '_') += digits[code >> 4]) += digits[code & 15];
    }
    if (out.size() <= longest) return out;
    std::uint64_t hash = 14695981039346656037u;  // FNV-1a, the same on every platform
    for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211u;
    return out.substr(0, longest) + "_" + std::to_string(hash);
}
}  // namespace

// The market that practice offers by default has the plain name.
std::string ProgramStart::accountName(const Options& options) {
    std::string name = "sim-account";
    if (options.practice && !options.tapeFile.empty())
        name += "-tape-" + asFileName(std::filesystem::path(options.tapeFile).filename().string());
    if (options.practice && options.seed != Options().seed) name += "-seed-" + std::to_string(options.seed);
    return name + ".json";
}

ProgramStart::ProgramStart(const Options& options)
    : options_(options),
      endpoints_(Endpoints::fromEnvironment(environment)) {
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
    practice_ = std::make_unique<relay::PracticeRelay>(*clock_, relay);
    failure_ = practice_->start();
    if (failure_) return;
    endpoints_ = {};
    endpoints_.relayUrl = practice_->relayUrl();
    endpoints_.apiKey = practice_->apiKey();
    for (std::string* url : {&endpoints_.identityUrl, &endpoints_.secureTokenUrl, &endpoints_.functionsUrl,
                             &endpoints_.firestoreUrl, &endpoints_.downloadsUrl})
        *url = practice_->restUrl();
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
