// The command line and what the environment adds to it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/Environment.h"
#include "chart/HfPressure.h"
#include "market/ClockSetting.h"
#include "perf/BenchSettings.h"

namespace vmr {

struct Options {
    bool practice = false;
    bool headless = false;
    bool help = false;
    bool version = false;
    double seconds = 0;          ///< real seconds until the program ends by itself; 0 for never
    std::string stateFile;       ///< state document written at the end
    std::string screenshotFile;  ///< picture of the window, saved at the end
    int width = 0, height = 0;   ///< window size in points; 0 for the usual
    std::optional<ClockSetting> clock;
    std::string tapeFile, tapeSymbol;
    std::string templatesFile;    ///< where the practice service keeps chart templates; empty for memory
    std::optional<double> speed;  ///< of the tape
    std::uint64_t seed = 1;       ///< of the practice market
    double busy = 1;              ///< times as many practice trades as usual
    double tokenLife = 3600;      ///< of practice tokens, real seconds
    bool strictFeed = false;      ///< VMR_STRICT=1: a number of the feed that fits no integer ends the process
    BenchSettings bench;
    HfPressure::Switches pressure;  ///< VMR_HFP
};

/// Reads the arguments (without the program's name); VMR_CLOCK stands in for a missing --clock, and VMR_STRICT,
/// VMR_HFP and the benchmark's variables are read. Gives the text of what is wrong with them otherwise.
std::variant<Options, std::string> parseOptions(const std::vector<std::string>& arguments,
                                                const EnvironmentLookup& lookup);

/// What --help prints.
std::string usageText();

}  // namespace vmr
