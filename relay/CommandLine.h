// The options of velmora-relay.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "market/ClockSetting.h"
#include "relay/PracticeRelay.h"

namespace vmr::relay {

struct RelayCommandLine {
    PracticeRelayOptions relay;
    std::optional<ClockSetting> clock;  ///< nothing for the machine's own time
    bool help = false;
    std::string error;  ///< what is wrong, for the person; empty when all is well
};

/// Reads the arguments after the program's name and, through `lookup`, VMR_CLOCK. The clock is that of --clock, else of
/// the tape or recording with --speed, else of VMR_CLOCK, else `tapeStart` of the tape or the recording's first frame;
/// a tape whose span is needed is read.
RelayCommandLine readRelayCommandLine(const std::vector<std::string>& arguments,
                                      const std::function<std::optional<std::string>(const char*)>& lookup);

/// What --help prints.
std::string relayHelp();

/// `moment` in ISO 8601, UTC, to the second.
std::string momentText(double moment);

}  // namespace vmr::relay
