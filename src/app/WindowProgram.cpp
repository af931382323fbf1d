#include "app/WindowProgram.h"

#include <cstdio>
#include <memory>

#include "app/LineReader.h"
#include "app/Program.h"
#include "app/WindowShell.h"
#include "base/QuitSignals.h"

namespace vmr {

int runWindowProgram(ProgramStart& start, int& argc, char** argv) {
    const Options& options = start.options();
    WindowShellOptions shell;
    shell.seconds = options.seconds;
    shell.screenshot = options.screenshotFile;
    shell.width = options.width;
    shell.height = options.height;
    shell.data = start.paths().data;
    shell.setupProblem = start.setupProblem().value_or("");

    if (const relay::PracticeRelay* relay = start.practice())
        shell.signInHint = "Practice account: " + relay->email() + "\nPassword: " + relay->password();

    std::unique_ptr<Program> program;
    std::unique_ptr<ShellCommands> commands;
    std::unique_ptr<LineReader> reader;
    int status = 0;

    WindowShellHooks hooks;
    hooks.makeProgram = [&](MainLoop& main) -> Program& {
        program = std::make_unique<Program>(start, main);
        return *program;
    };
    hooks.started = [&](std::function<void(int)> quit) {
        onQuitRequest([&main = program->main(), quit] { main.post([quit] { quit(0); }); });
        commands = std::make_unique<ShellCommands>(program->shell([quit] { quit(0); }));
        reader = std::make_unique<LineReader>(program->main(), [&](const std::string& line) { commands->run(line); });
        program->signInToPractice();
    };
    hooks.ending = [&] {
        if (!options.stateFile.empty()) {
            if (const auto problem = program->writeState(options.stateFile)) {
                std::fprintf(stderr, "velmora: %s\n", problem->c_str());
                status = 1;
            }
        }
        onQuitRequest({});
        reader.reset();
        commands.reset();
        program.reset();
    };
    const int shellStatus = runWindow(argc, argv, shell, std::move(hooks));
    return status != 0 ? status : shellStatus;
}

}  // namespace vmr
