// The program with a window.
#pragma once

#include "app/ProgramStart.h"

namespace vmr {

/// Runs until the window closes, "quit", `--seconds` or a polite request to end; gives the exit status.
int runWindowProgram(ProgramStart& start, int& argc, char** argv);

}  // namespace vmr
