// The wiring: makes the process's instances once the main loop exists, and hands them to each other.
#pragma once

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/Options.h"
#include "base/AsioLoop.h"
#include "base/Clock.h"
#include "base/Paths.h"
#include "base/Preferences.h"
#include "base/SerialQueue.h"
#include "base/Uuid.h"
#include "market/SessionTime.h"
#include "model/AppModel.h"
#include "relay/PracticeRelay.h"
#include "services/cloud/FirebaseRESTAuth.h"
#include "services/net/CurlHttpClient.h"
#include "services/net/Endpoints.h"
#include "sim/SimEngine.h"

namespace vmr {

/// What is decided before there is a loop: clock, servers, profile, and the practice relay when there is to be one.
class ProgramStart {
 public:
    /// Starts the practice relay with `--practice`. `failure()` tells what went wrong.
    explicit ProgramStart(const Options& options);

    const std::optional<std::string>& failure() const { return failure_; }

    /// What the person has to set up before anything can connect, or nothing.
    std::optional<std::string> setupProblem() const;

    const Options& options() const { return options_; }
    const Clock& clock() const { return *clock_; }
    const Endpoints& endpoints() const { return endpoints_; }
    const Paths& paths() const { return paths_; }
    relay::PracticeRelay* practice() const { return practice_.get(); }

 private:
    void choosePracticeClock();
    void startPractice();

    Options options_;
    std::unique_ptr<Clock> clock_;
    Endpoints endpoints_;
    Paths paths_;
    std::unique_ptr<relay::PracticeRelay> practice_;
    std::optional<std::string> failure_;
};

/// The running program on a main loop. Made and destroyed on the main thread.
class Program {
 public:
    Program(ProgramStart& start, MainLoop& main);
    ~Program();

    AppModel& pane() { return *pane_; }
    SimEngine& sim() { return *sim_; }
    ProgramStart& start() { return start_; }
    MainLoop& main() { return main_; }

    /// With a practice relay: signs in with its account.
    void signInToPractice();

    /// Writes the state document; the text of what failed.
    std::optional<std::string> writeState(const std::string& file) const;

    /// One whole line to standard output.
    static void print(const std::string& line);

 private:
    std::unique_ptr<RelayClient> makeRelay();
    void openAccount();
    void tellOfAccount(const std::string& line);

    ProgramStart& start_;
    MainLoop& main_;
    FilePreferences preferences_;
    CurlHttpClient http_;
    FirebaseRESTAuth auth_;
    SessionTime session_;
    UuidSource ids_;
    HfScales hfScales_;                   // of all panes
    std::list<AsioThread> relayThreads_;  // one for each pane's connection
    AsioThread files_{"velmora.files"};   // writes the paper account
    std::unique_ptr<SimEngine> sim_;
    std::vector<std::string> accountNotices_;
    std::unique_ptr<AppModel> pane_;
};

}  // namespace vmr
