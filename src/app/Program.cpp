#include "app/Program.h"

#include <cstdio>
#include <cstdlib>

#include "app/BenchConfig.h"
#include "model/StateDocument.h"
#include "perf/Perf.h"
#include "relay/Tape.h"
#include "services/net/BeastWebSocket.h"
#include "sim/SimStore.h"
#include "store/ConfigIO.h"

namespace vmr {

namespace {
std::optional<std::string> environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
}

// A practice relay knows nothing of the sessions of an earlier one.
FilePreferences openPreferences(const ProgramStart& start) {
    FilePreferences preferences(start.paths().config / "preferences.json");
    if (start.practice())
        for (const char* key :
             {FirebaseRESTAuth::refreshTokenKey, FirebaseRESTAuth::uidKey, FirebaseRESTAuth::emailKey})
            preferences.remove(key);
    return preferences;
}
}  // namespace

ProgramStart::ProgramStart(const Options& options)
    : options_(options),
      endpoints_(Endpoints::fromEnvironment(environment)),
      paths_(options.practice ? Paths::practice() : Paths::user()) {
    if (options_.practice) choosePracticeClock();
    if (options_.clock)
        clock_ = std::make_unique<SystemClock>(options_.clock->start, options_.clock->speed);
    else
        clock_ = std::make_unique<SystemClock>();
    if (options_.practice && !failure_) startPractice();
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

Program::Program(ProgramStart& start, MainLoop& main)
    : start_(start),
      main_(main),
      preferences_(openPreferences(start)),
      http_(main),
      auth_(start.endpoints(), http_, preferences_, start.clock()) {
    openAccount();
    PaneSurroundings surroundings{.clock = start_.clock(),
                                  .main = main_,
                                  .preferences = preferences_,
                                  .auth = auth_,
                                  .session = session_,
                                  .ids = ids_,
                                  .hfScales = hfScales_,
                                  .makeRelay = [this] { return makeRelay(); },
                                  .print = &Program::print,
                                  .sim = sim_.get(),
                                  .perf = &Perf::shared(),
                                  .rebuildInDrags = start_.options().bench.baseline};
    if (start_.options().headless) surroundings.printMessage = &Program::print;
    if (start_.options().bench.bench) {
        surroundings.config = everythingOn(ConfigIO::load(preferences_));
        surroundings.saveSettings = false;
        print("[bench] config forced — all overlays + oscillator ON");
    }
    pane_ = std::make_unique<AppModel>(std::move(surroundings));
    for (const std::string& line : std::exchange(accountNotices_, {})) tellOfAccount(line);
    if (!start_.options().tapeSymbol.empty()) pane_->setFirstSymbol(start_.options().tapeSymbol);
}

// One account for the process. What was traded is on the disk before the process ends.
void Program::openAccount() {
    sim_ = std::make_unique<SimEngine>(SimSetup{start_.clock(),
                                                session_,
                                                UuidSource(),
                                                std::make_shared<SimStore>(start_.paths().data, start_.clock()),
                                                &main_,
                                                &files_.loop(),
                                                {},
                                                [this](const std::string& line) { tellOfAccount(line); }});
    SimEngine::setShared(sim_.get());
}

// A person must see it, in the log and over the chart; before there is a pane it waits.
void Program::tellOfAccount(const std::string& line) {
    if (!pane_) return accountNotices_.push_back(line);
    print("[sim] " + line);
    pane_->log.append(line);
    pane_->notices.flashToast("Simulator", line);
}

Program::~Program() {
    sim_->flushPendingSave();
    pane_.reset();
    SimEngine::setShared(nullptr);
    sim_.reset();
    relayThreads_.clear();
}

std::unique_ptr<RelayClient> Program::makeRelay() {
    AsioLoop& loop = relayThreads_.emplace_back("velmora.relay").loop();
    return std::make_unique<RelayClient>(start_.endpoints().relayUrl, makeBeastWebSockets(loop), loop, main_,
                                         start_.clock());
}

void Program::signInToPractice() {
    if (relay::PracticeRelay* relay = start_.practice()) pane_->signIn(relay->email(), relay->password(), true);
}

std::optional<std::string> Program::writeState(const std::string& file) const {
    // a report for the person, not a stored record: it gets the permissions that the person's files get
    const std::string text = stateDocument(start_.clock(), {pane_.get()}, sim_.get());
    std::FILE* out = std::fopen(file.c_str(), "wb");
    if (!out) return "cannot write " + file;
    const bool written = std::fwrite(text.data(), 1, text.size(), out) == text.size();
    if (std::fclose(out) != 0 || !written) return "cannot write " + file;
    return std::nullopt;
}

void Program::print(const std::string& line) {
    const std::string whole = line + "\n";
    std::fwrite(whole.data(), 1, whole.size(), stdout);
}

}  // namespace vmr
