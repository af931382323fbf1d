#include "app/Program.h"

#include <cstdio>
#include <utility>

#include "app/BenchConfig.h"
#include "base/Version.h"
#include "model/StateDocument.h"
#include "perf/Perf.h"
#include "services/net/BeastWebSocket.h"
#include "sim/SimStore.h"
#include "store/ConfigIO.h"

namespace vmr {

namespace {
// A practice relay knows nothing of the sessions of an earlier one.
Preferences& withUsableSession(Preferences& preferences, const ProgramStart& start) {
    if (start.practice()) FirebaseRESTAuth::forgetStored(preferences);
    return preferences;
}
// Practice is there to trade on. Only its first start says so: whoever turns the simulator off keeps it off.
void beginPractice(Preferences& preferences) {
    constexpr const char* begunKey = "vmr.practice.begun";
    if (preferences.get(begunKey)) return;
    preferences.set(begunKey, "1");
    if (preferences.get(ConfigIO::configKey)) return;
    GexConfig config;
    config.simEnabled = true;
    ConfigIO::save(preferences, config);
}
}  // namespace

Program::Program(ProgramStart& start, MainLoop& main, const Log& log)
    : start_(start),
      main_(main),
      print_([&log](const std::string& line) { log.line(line); }),
      preferences_(start.paths().config / "preferences.json", files_.loop()),
      proxies_(std::make_shared<ProxyFinder>(start.clock(), systemProxies())),
      http_(main, proxies_),
      auth_(start.endpoints(), http_, withUsableSession(preferences_, start), start.clock()),
      announcements_(auth_, preferences_, main),
      updates_(http_, start.endpoints().downloadsUrl, buildNumber, main),
      workspace_(preferences_, main) {
    settings_.setHotkeys([](const HotkeyTexts& keys) { return HotkeyRouter::problemOf(hotkeysText(keys)); },
                         [this] { keys_.load(); });
    auth_.setupProblem = start.setupProblem();
    if (start.practice()) beginPractice(preferences_);
    openAccount();
    openPanes();
    for (const std::string& line : std::exchange(accountNotices_, {})) tellOfAccount(line);
    if (start.setupProblem()) return;
    announcements_.start();
    updates_.start();
}

// One account for the process. What was traded is on the disk before the process ends.
void Program::openAccount() {
    sim_ = std::make_unique<SimEngine>(SimSetup{start_.clock(),
                                                session_,
                                                UuidSource(),
                                                std::make_shared<SimStore>(start_.accountFile(), start_.clock()),
                                                &main_,
                                                &files_.loop(),
                                                {},
                                                [this](const std::string& line) { tellOfAccount(line); }});
}

void Program::openPanes() {
    PaneSurroundings surroundings{.clock = start_.clock(),
                                  .main = main_,
                                  .preferences = preferences_,
                                  .auth = auth_,
                                  .session = session_,
                                  .ids = ids_,
                                  .hfScales = hfScales_,
                                  .makeRelay = {},
                                  .print = print_,
                                  .sim = sim_.get(),
                                  .machine = start_.practice() ? &start_.machine() : nullptr,
                                  .perf = &Perf::shared(),
                                  .strictFeed = start_.options().strictFeed,
                                  .rebuildInDrags = start_.options().bench.baseline};
    if (start_.options().headless) surroundings.printMessage = print_;
    if (start_.options().bench.bench) {
        surroundings.config = everythingOn(ConfigIO::load(preferences_));
        surroundings.saveSettings = false;
        print_("[bench] config forced — all overlays + oscillator ON");
    }
    panes_ = std::make_unique<PaneHost>(std::move(surroundings), [this](AsioLoop& queue) {
        return std::make_unique<RelayClient>(start_.endpoints().relayUrl, makeBeastWebSockets(queue, proxies_), queue,
                                             main_, start_.relayClock(), print_);
    });
    panes_->open();
    if (!start_.options().tapeSymbol.empty()) panes_->active()->setFirstSymbol(start_.options().tapeSymbol);
}

// In the log, and over a chart in passing; what lasts stands there as a notice of its own. Before there is a pane it
// waits.
void Program::tellOfAccount(const std::string& line) {
    if (!panes_) return accountNotices_.push_back(line);
    print_("[sim] " + line);
    AppModel* pane = panes_->active();
    if (!pane) return;
    pane->log.append(line);
    if (!sim_->problem()) pane->notices.flashToast("Simulator", line);
}

Program::~Program() {
    sim_->flushPendingSave();
    windows_.reset();
    panes_.reset();
    sim_.reset();
}

ShellWindows& Program::windows() {
    if (!windows_) windows_ = std::make_unique<ShellWindows>(*panes_, workspace_, preferences_, main_);
    return *windows_;
}

void Program::signInToPractice() {
    if (relay::PracticeRelay* relay = start_.practice())
        panes_->active()->signIn(relay->email(), relay->password(), true);
}

std::optional<std::string> Program::writeState(const std::string& file) const {
    // a report for the person, not a stored record: it gets the permissions that the person's files get
    StateSources sources{start_.clock(), panes_->models(), sim_.get(), &announcements_, &updates_};
    if (windows_) sources.windows = windows_->facts();
    sources.hotkeys.emplace();
    for (const Action& action : actionTable()) sources.hotkeys->emplace(action.id, keys_.keyOf(action.id));
    const std::string text = stateDocument(sources);
    std::FILE* out = std::fopen(file.c_str(), "wb");
    if (!out) return "cannot write " + file;
    const bool written = std::fwrite(text.data(), 1, text.size(), out) == text.size();
    if (std::fclose(out) != 0 || !written) return "cannot write " + file;
    return std::nullopt;
}

ShellSurroundings Program::shell(std::function<void()> quit) {
    ShellSurroundings at{
        *panes_, *sim_, print_, std::move(quit), [this](const std::string& file) { return writeState(file); }, {}, {}};
    at.bench = [&main = main_](double seconds) {
        if (!Perf::shared().benchBegin()) return false;
        main.after(seconds, [] { Perf::shared().benchEnd(); });
        return true;
    };
    if (relay::PracticeRelay* relay = start_.practice()) {
        at.practiceRelay = [relay](const std::string& line) { return relay->command(line); };
        at.clock = &start_.steering();
    }
    at.windows = windows_.get();
    at.settings = &settings_;
    at.keys = &keys_;
    return at;
}

}  // namespace vmr
