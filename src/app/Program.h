// The wiring: makes the process's instances once the main loop exists, and hands them to each other.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/ProgramStart.h"
#include "base/AsioLoop.h"
#include "base/Log.h"
#include "base/Preferences.h"
#include "base/SerialQueue.h"
#include "base/Uuid.h"
#include "market/SessionTime.h"
#include "services/cloud/Announcements.h"
#include "services/cloud/FirebaseRESTAuth.h"
#include "services/cloud/UpdateChecker.h"
#include "services/net/CurlHttpClient.h"
#include "sim/SimEngine.h"
#include "workspace/HotkeyRouter.h"
#include "workspace/PaneHost.h"
#include "workspace/ShellCommands.h"
#include "workspace/ShellWindows.h"
#include "workspace/WorkspaceStore.h"

namespace vmr {

/// The running program on a main loop, with its first pane open. Made and destroyed on the main thread.
class Program {
 public:
    /// All three outlive it.
    Program(ProgramStart& start, MainLoop& main, const Log& log = Log::standardOutput());
    ~Program();

    PaneHost& panes() { return *panes_; }
    SimEngine& sim() { return *sim_; }
    Announcements& announcements() { return announcements_; }
    UpdateChecker& updates() { return updates_; }
    WorkspaceStore& workspace() { return workspace_; }
    /// Made when it is asked for first: a program without a display has none.
    ShellWindows& windows();
    ProgramStart& start() { return start_; }
    MainLoop& main() { return main_; }

    /// With a practice relay: signs in with its account.
    void signInToPractice();

    /// Which key does what.
    HotkeyRouter& keys() { return keys_; }

    /// Writes the state document; the text of what failed.
    std::optional<std::string> writeState(const std::string& file) const;

    /// What the shell's commands work on here.
    ShellSurroundings shell(std::function<void()> quit);

 private:
    void openAccount();
    void openPanes();
    void tellOfAccount(const std::string& line);

    ProgramStart& start_;
    MainLoop& main_;
    const std::function<void(const std::string& line)> print_;
    AsioThread files_{"velmora.files"};  // writes the paper account and the settings
    FilePreferences preferences_;
    const std::shared_ptr<ProxyFinder> proxies_;
    CurlHttpClient http_;
    FirebaseRESTAuth auth_;
    Announcements announcements_;
    UpdateChecker updates_;
    WorkspaceStore workspace_;
    HotkeyRouter keys_{&preferences_};
    SessionTime session_;
    UuidSource ids_;
    HfScales hfScales_;  // of all panes
    std::unique_ptr<SimEngine> sim_;
    std::vector<std::string> accountNotices_;  // that came before there was a pane
    std::unique_ptr<PaneHost> panes_;
    std::unique_ptr<ShellWindows> windows_;
};

}  // namespace vmr
