// The program's window: Qt's application object, the QML engine and the window's stages.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "base/Clock.h"
#include "base/SerialQueue.h"
#include "perf/BenchSettings.h"

namespace vmr {

class AppModel;
class Announcements;
class SimEngine;
class UpdateChecker;
class WorkspaceStore;

/// What a window shows and works on.
struct WindowPane {
    AppModel& model;
    SimEngine& sim;
    Announcements& announcements;
    UpdateChecker& updates;
    WorkspaceStore& workspace;
    const Clock& clock;
    BenchSettings bench;
    bool hasFirstSymbol = false;  ///< the pane has been told what to show first
};

struct WindowShellOptions {
    double seconds = 0;      ///< real seconds until the program ends by itself with status 0; 0 for never
    std::string screenshot;  ///< file for the window's picture at the end, an opaque PNG; empty for none
    int width = 0;           ///< size of the entered window in points; 0 for the screen's free area
    int height = 0;
    std::filesystem::path data;  ///< folder of this machine's own files, which need not exist yet
    std::string setupProblem;    ///< what the person must set up before a sign-in can work; shown in the form
    std::string signInHint;      ///< who can sign in here, when that is no secret; shown in the form
};

struct WindowShellHooks {
    /// Makes what the window shows, once the main loop exists. It must live until `ending`.
    std::function<WindowPane(MainLoop&)> makePane;
    /// Called once the window is on its way; `quit(status)` ends the program, from any thread, until `ending`.
    std::function<void(std::function<void(int)> quit)> started;
    /// Called when the event loop has ended, the picture is saved and no view refers to the model any more. The main
    /// loop still exists, but runs nothing any more.
    std::function<void()> ending;
};

/// Runs the window until it is closed, quit or out of time. Gives the exit status: 1 when the window cannot be made or
/// the picture cannot be saved, which is told on standard error. Once per process.
int runWindow(int& argc, char** argv, const WindowShellOptions& options, WindowShellHooks hooks);

}  // namespace vmr
