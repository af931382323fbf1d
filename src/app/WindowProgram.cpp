#include "app/WindowProgram.h"

#include <cstdio>
#include <memory>
#include <string>
#include <utility>

#include "app/LineReader.h"
#include "app/Program.h"
#include "app/WindowShell.h"
#include "base/QuitSignals.h"

namespace vmr {

namespace {

/// What the windows run on, one program after another where the person goes to the practice market and back.
class WindowProgram {
 public:
    WindowProgram(std::unique_ptr<ProgramStart> start, const Options& asked)
        : start_(std::move(start)), asked_(asked) {}

    int run(int& argc, char** argv) {
        WindowShellOptions shell;
        shell.seconds = asked_.seconds;
        shell.screenshot = asked_.screenshotFile;
        shell.width = asked_.width;
        shell.height = asked_.height;
        shell.data = start_->paths().data;
        WindowShellHooks hooks;
        hooks.makeProgram = [this](MainLoop& main) -> Program& {
            program_ = std::make_unique<Program>(*start_, main);
            if (const std::string problem = std::exchange(problem_, {}); !problem.empty())
                program_->panes().active()->session.authError = problem;
            return *program_;
        };
        hooks.switchPractice = [this] { switchPractice(); };
        hooks.started = [this](const std::function<void(int)>& quit) { started(quit); };
        hooks.lastLook = [this] { writeState(); };
        hooks.ending = [this] {
            commands_.reset();
            program_.reset();
        };
        hooks.ended = [this] {
            onQuitRequest({});
            reader_.reset();
        };
        const int status = runWindow(argc, argv, shell, std::move(hooks));
        return status_ != 0 ? status_ : status;
    }

 private:
    void started(const std::function<void(int)>& quit) {
        MainLoop& main = program_->main();
        commands_ = std::make_unique<ShellCommands>(program_->shell([quit] { quit(0); }));
        if (!reader_) {  // the first program
            onQuitRequest([&main, quit] { main.post([quit] { quit(0); }); });
            reader_ = std::make_unique<LineReader>(main, [this](const std::string& line) {
                if (commands_) commands_->run(line);
            });
        }
        program_->signInToPractice();
    }
    void writeState() {
        const std::string& file = start_->options().stateFile;
        const auto problem = file.empty() ? std::nullopt : program_->writeState(file);
        if (!problem) return;
        std::fprintf(stderr, "velmora: %s\n", problem->c_str());
        status_ = 1;
    }
    // A practice market that cannot be started leaves the person where they were, and says why.
    void switchPractice() {
        Options next = asked_;
        next.practice = !start_->practice();
        if (!next.practice) {
            next.clock.reset();  // the practice market's, as are the tape and its speed
            next.tapeFile.clear();
            next.tapeSymbol.clear();
        }
        auto start = std::make_unique<ProgramStart>(next);
        if (start->failure()) {
            problem_ = *start->failure();
            start = std::make_unique<ProgramStart>(start_->options());
        }
        start_ = std::move(start);
    }

    std::unique_ptr<ProgramStart> start_;
    const Options asked_;
    std::unique_ptr<Program> program_;
    std::unique_ptr<ShellCommands> commands_;
    std::unique_ptr<LineReader> reader_;
    std::string problem_;  ///< why the practice market could not be started
    int status_ = 0;
};

}  // namespace

int runWindowProgram(std::unique_ptr<ProgramStart> start, const Options& asked, int& argc, char** argv) {
    return WindowProgram(std::move(start), asked).run(argc, argv);
}

}  // namespace vmr
