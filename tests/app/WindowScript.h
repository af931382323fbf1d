// Runs the whole client in a window within a test, on its practice market, step by step.
#pragma once

#include <stdlib.h>

#include <QQuickItem>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/Program.h"
#include "app/WindowShell.h"

namespace vmr::test {

/// The item of that name that is shown in another; null for none. Through items: those of a list have no other parent.
inline QQuickItem* shownItem(const QString& name, const QQuickItem* in) {
    for (QQuickItem* child : in->childItems()) {
        if (!child->isVisible()) continue;
        if (child->objectName() == name) return child;
        if (QQuickItem* deeper = shownItem(name, child)) return deeper;
    }
    return nullptr;
}

/// The client with a practice market of its own, whose clock starts at `clock`. One for each process.
class WindowRun {
 public:
    explicit WindowRun(const std::string& clock) {
        ::setenv("XDG_CONFIG_HOME", (home_ / "config").c_str(), 1);
        ::setenv("XDG_DATA_HOME", (home_ / "data").c_str(), 1);
        Options options;
        options.practice = true;
        options.clock = parseClockSetting(clock);
        start = std::make_unique<ProgramStart>(options);
    }
    ~WindowRun() {
        start.reset();
        std::filesystem::remove_all(home_);
    }
    WindowRun(const WindowRun&) = delete;

    AppModel& pane() { return *program->panes().active(); }
    bool streaming() { return pane().catalog.catFutures->size() == 6 && pane().bars.candles.size() > 100; }

    /// Adds a step: what to do once a condition holds, which is looked at every 5 ms.
    void step(std::function<bool()> done, std::function<void()> then) {
        steps_.emplace_back(std::move(done), std::move(then));
    }
    /// Signs in and carries out the steps; gives 0 after the last, the number of the one that is under way, from 1,
    /// after `limit` seconds. `shown` is called when the window is there.
    std::size_t run(double limit, const std::function<void()>& shown) {
        std::size_t at = 0;
        WindowShellOptions shell;
        shell.width = 800;
        shell.height = 500;
        WindowShellHooks hooks;
        hooks.makeProgram = [this](MainLoop& main) -> Program& {
            program = std::make_unique<Program>(*start, main);
            return *program;
        };
        hooks.started = [&](std::function<void(int)> quit) {
            shown();
            program->main().every(0, 0.005, [this, &at, quit] {
                if (at < steps_.size() && steps_[at].first()) steps_[at++].second();
                if (at == steps_.size()) quit(0);
            });
            program->main().after(limit, [quit] { quit(1); });
            program->signInToPractice();
        };
        hooks.ending = [this] { program.reset(); };
        int argc = 1;
        char name[] = "velmora";
        char* argv[] = {name, nullptr};
        return runWindow(argc, argv, shell, hooks) == 0 ? 0 : at + 1;
    }

    std::unique_ptr<ProgramStart> start;
    std::unique_ptr<Program> program;

 private:
    const std::filesystem::path home_ =
        std::filesystem::temp_directory_path() / ("velmora-window-" + UuidSource().next().text());
    std::vector<std::pair<std::function<bool()>, std::function<void()>>> steps_;
};

}  // namespace vmr::test
