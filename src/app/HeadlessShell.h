// The program without a window: log lines out, commands in.
#pragma once

#include "app/ProgramStart.h"

namespace vmr {

/// Runs until "quit", `--seconds` or a polite request to end; gives the exit status.
int runHeadless(ProgramStart& start);

}  // namespace vmr
