// The commands that a person or a script types, one a line.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/CommandTable.h"
#include "base/SteerableClock.h"
#include "base/WeakTask.h"
#include "sim/SimEngine.h"
#include "workspace/HotkeyRouter.h"
#include "workspace/PaneHost.h"
#include "workspace/ShellWindows.h"

namespace vmr {

class SettingsTransfer;

/// What the commands work on; everything outlives them.
struct ShellSurroundings {
    PaneHost& panes;
    SimEngine& sim;
    std::function<void(const std::string& line)> print;  ///< answers, "[cmd] ok …" or "[cmd] error: …"
    std::function<void()> quit;
    std::function<std::optional<std::string>(const std::string& file)> writeState;  ///< the text of what failed
    std::function<std::string(const std::string& line)> practiceRelay;  ///< its console; empty where there is none
    std::function<bool(double seconds)> bench;  ///< measures the frames of that long and reports; false: one is running
    SteerableClock* clock = nullptr;            ///< null where the market's time is not ours to set
    ShellWindows* windows = nullptr;            ///< null without a display
    SettingsTransfer* settings = nullptr;       ///< null where nothing is stored
    HotkeyRouter* keys = nullptr;               ///< null for none
};

/// Runs command lines on the main thread; each is answered by one line, at once or, for what asks a server, when it is
/// over. Blank lines are not answered. A command works on the active pane, after "@2" on pane 2.
class ShellCommands {
 public:
    explicit ShellCommands(ShellSurroundings surroundings);
    ShellCommands(const ShellCommands&) = delete;
    ShellCommands& operator=(const ShellCommands&) = delete;

    void run(const std::string& line);

 private:
    std::string answer(CommandWords& words);
    void addForPane(Command command);
    void addSessionCommands();
    void addChartCommands();
    void addProcessCommands();
    CommandAnswer signIn(CommandWords& words);
    CommandAnswer open(CommandWords& words);
    CommandAnswer symbol(const std::string& sym);
    CommandAnswer timeframe(const std::string& minutes);
    CommandAnswer expiration(const std::string& iso);
    CommandAnswer set(CommandWords& words);
    CommandAnswer state(CommandWords& words);
    CommandAnswer pane(CommandWords& words);
    CommandAnswer clock(CommandWords& words);
    CommandAnswer bench(CommandWords& words);

    void tell(const std::string& text) { at_.print("[cmd] " + text); }

    ShellSurroundings at_;
    CommandTable commands_;
    AppModel* pane_ = nullptr;  // that the running command is for
    int number_ = 0;            // that pane's
    WeakTask whileThere_;       // panes that end after this answer nobody
};

}  // namespace vmr
