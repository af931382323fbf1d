// What is decided before there is a main loop.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "app/Options.h"
#include "base/Paths.h"
#include "base/SteerableClock.h"
#include "relay/PracticeRelay.h"
#include "services/net/Endpoints.h"

namespace vmr {

/// Clock, servers, profile, and the practice relay when there is to be one.
class ProgramStart {
 public:
    /// Starts the practice relay with `--practice`. `failure()` tells what went wrong.
    explicit ProgramStart(const Options& options);

    const std::optional<std::string>& failure() const { return failure_; }

    /// What the person has to set up before anything can connect, or nothing.
    std::optional<std::string> setupProblem() const;

    /// Who can sign in here, when that is no secret; empty else.
    std::string signInHint() const;

    const Options& options() const { return options_; }
    const Clock& clock() const { return *clock_; }
    /// The same clock, for the main thread to steer; the practice relay follows it.
    SteerableClock& steering() { return *clock_; }
    /// The machine's own time.
    const Clock& machine() const { return machine_; }
    /// What the relay is told to be the time: of another relay's affairs, this machine's; the practice relay's own.
    const Clock& relayClock() const { return practice_ ? clock() : machine_; }
    const Endpoints& endpoints() const { return endpoints_; }
    const Paths& paths() const { return paths_; }
    /// The paper account's. Each practice market has one of its own, so that no market's prices fill another's orders.
    std::filesystem::path accountFile() const;
    relay::PracticeRelay* practice() const { return practice_.get(); }

 private:
    void choosePaths();
    void choosePracticeClock();
    void startPractice();

    Options options_;
    SystemClock machine_;
    std::unique_ptr<SteerableClock> clock_;
    Endpoints endpoints_;
    Paths paths_;
    std::unique_ptr<relay::PracticeRelay> practice_;
    std::optional<std::string> failure_;
};

}  // namespace vmr
