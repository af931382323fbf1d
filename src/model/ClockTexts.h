// What the clocks on a pane's chart say.
#pragma once

#include "chart/AxisScale.h"

namespace vmr {

class AppModel;

/// Empty is what is not shown: by the settings, without bars, or beside a market that is no practice.
struct ClockTexts {
    AxisScale::Label countdown, clock, practice;
    bool any() const { return countdown.size > 0 || clock.size > 0; }
};

/// As of the pane's market time.
ClockTexts clockTexts(const AppModel& pane);

}  // namespace vmr
