// Runs the whole client in a window within a test, on its practice market, step by step.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/Program.h"
#include "app/WindowShell.h"

namespace vmr::test {

/// Steps that wait for a condition, looked at every 5 ms.
class Script {
 public:
    void step(std::function<bool()> done, std::function<void()> then) {
        steps_.push_back({std::move(done), std::move(then)});
    }
    /// Quits with 0 after the last step, with 1 after `limit` seconds.
    void start(MainLoop& loop, std::function<void(int)> quit, double limit) {
        loop.every(0, 0.005, [this, quit] {
            if (at_ == steps_.size() || !steps_[at_].done()) return;
            auto then = steps_[at_++].then;
            then();
            if (at_ == steps_.size()) quit(0);
        });
        loop.after(limit, [quit] { quit(1); });
    }
    std::size_t finished() const { return at_; }

 private:
    struct Step {
        std::function<bool()> done;
        std::function<void()> then;
    };
    std::vector<Step> steps_;
    std::size_t at_ = 0;
};

/// The client with a practice market of its own, whose clock starts at `clock`. One for each process.
class WindowRun {
 public:
    explicit WindowRun(const std::string& clock)
        : home_(std::filesystem::temp_directory_path() / ("velmora-window-" + UuidSource().next().text())) {
        ::setenv("XDG_CONFIG_HOME", (home_ / "config").c_str(), 1);
        ::setenv("XDG_DATA_HOME", (home_ / "data").c_str(), 1);
        Options options;
        options.practice = true;
        options.clock = parseClockSetting(clock);
        start = std::make_unique<ProgramStart>(options);
    }
    ~WindowRun() {
        start.reset();
        std::error_code ignored;
        std::filesystem::remove_all(home_, ignored);
    }
    WindowRun(const WindowRun&) = delete;
    WindowRun& operator=(const WindowRun&) = delete;

    AppModel& pane() { return program->pane(); }
    bool streaming() { return pane().catFutures->size() == 6 && pane().candles.size() > 100; }

    /// Signs in and runs the script; gives the exit status. `shown` is called when the window is there.
    int run(Script& script, double limit, const std::function<void()>& shown) {
        WindowShellOptions shell;
        shell.width = 800;
        shell.height = 500;
        WindowShellHooks hooks;
        hooks.makePane = [this](MainLoop& main) {
            program = std::make_unique<Program>(*start, main);
            return WindowPane{program->pane(), program->sim(), start->clock(), {}};
        };
        hooks.started = [&](std::function<void(int)> quit) {
            shown();
            script.start(program->main(), quit, limit);
            program->signInToPractice();
        };
        hooks.ending = [this] { program.reset(); };
        int argc = 1;
        char name[] = "velmora";
        char* argv[] = {name, nullptr};
        return runWindow(argc, argv, shell, hooks);
    }

    std::unique_ptr<ProgramStart> start;
    std::unique_ptr<Program> program;

 private:
    std::filesystem::path home_;
};

}  // namespace vmr::test
