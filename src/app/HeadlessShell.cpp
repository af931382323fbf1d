#include "app/HeadlessShell.h"

#include <cstdio>

#include "app/LineReader.h"
#include "app/Program.h"
#include "base/AsioLoop.h"
#include "base/QuitSignals.h"

namespace vmr {

int runHeadless(ProgramStart& start) {
    const Options& options = start.options();
    if (const auto problem = start.setupProblem()) {
        std::fprintf(stderr, "velmora: %s\n", problem->c_str());
        return 2;
    }
    AsioLoop loop;
    onQuitRequest([&loop] { loop.quit(); });
    int status = 0;
    {
        Program program(start, loop);
        ShellCommands commands(program.shell([&loop] { loop.quit(); }));
        LineReader reader(loop, [&commands](const std::string& line) { commands.run(line); });
        if (options.seconds > 0) loop.after(options.seconds, [&loop] { loop.quit(); });
        program.signInToPractice();
        loop.run();
        if (!options.stateFile.empty()) {
            if (const auto problem = program.writeState(options.stateFile)) {
                std::fprintf(stderr, "velmora: %s\n", problem->c_str());
                status = 1;
            }
        }
        onQuitRequest({});
    }
    return status;
}

}  // namespace vmr
