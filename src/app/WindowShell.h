// The program's windows: Qt's application object, the QML engine and the windows on the screen.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "base/SerialQueue.h"

namespace vmr {

class Program;

struct WindowShellOptions {
    double seconds = 0;  ///< real seconds until the program ends by itself with status 0; 0 for never
    /// File for the window's picture at the end, an opaque PNG; empty for none. Of several windows each has a file of
    /// its own, with the window's number before the ending.
    std::string screenshot;
    int width = 0;  ///< size of entered windows in points; 0 for where they stood, or the screen's free area
    int height = 0;
    std::filesystem::path data;  ///< folder of this machine's own files, which need not exist yet
};

struct WindowShellHooks {
    /// Makes what the windows show, once the main loop exists. It must live until `ending`. Again after
    /// `switchPractice`.
    std::function<Program&(MainLoop&)> makeProgram;
    /// The next program is one on the practice market, or no longer. Between `ending` and `makeProgram`.
    std::function<void()> switchPractice;
    /// Called once the first window is on its way; `quit(status)` ends the program, from any thread, until `ending`.
    std::function<void(std::function<void(int)> quit)> started;
    /// Called when the last program's event loop has ended and the workspace is saved, while its windows still stand.
    std::function<void()> lastLook;
    /// Called at the end of each program, when no view refers to the model any more. The main loop still exists, but
    /// runs nothing until the next program.
    std::function<void()> ending;
    /// Called after the last program, before the main loop goes.
    std::function<void()> ended;
};

/// Runs the windows until the last one is closed, the program is quit or out of time. Gives the exit status: 1 when a
/// window cannot be made or a picture cannot be saved, which is told on standard error. Once per process.
int runWindow(int& argc, char** argv, const WindowShellOptions& options, WindowShellHooks hooks);

}  // namespace vmr
