// What a chart item draws with and is driven by. Private to the item's sources.
#pragma once

#include <memory>

#include "base/Clock.h"
#include "chart/ChartView.h"
#include "chart/PerfDrive.h"
#include "market/SessionTime.h"
#include "ui/chart/ChartItem.h"
#include "ui/chart/CrosshairState.h"
#include "ui/platform/QtLoop.h"

namespace vmr {

struct ChartItem::Drawing {
    SystemClock clock;
    SessionTime session;
    QtLoop loop;  // for a chart whose pane names none
    CrosshairState crosshair;
    std::unique_ptr<ChartView> view;  // of the pane; never null
    std::unique_ptr<PerfDrive> drive;
    Connection camera;
};

}  // namespace vmr
