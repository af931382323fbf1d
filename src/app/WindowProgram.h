// The program with a window.
#pragma once

#include <memory>

#include "app/ProgramStart.h"

namespace vmr {

/// Runs until the last window closes, "quit", `--seconds` or a polite request to end; gives the exit status. `asked` is
/// what the command line says; the person may go to the practice market and back meanwhile.
int runWindowProgram(std::unique_ptr<ProgramStart> start, const Options& asked, int& argc, char** argv);

}  // namespace vmr
