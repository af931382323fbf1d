// What a chart item draws with and is driven by. Private to the item's sources.
#pragma once

#include <QTimer>
#include <memory>

#include "base/Clock.h"
#include "chart/ChartView.h"
#include "chart/PerfDrive.h"
#include "market/SessionTime.h"
#include "ui/chart/ChartItem.h"
#include "ui/chart/CoveredBoxes.h"
#include "ui/chart/CrosshairState.h"
#include "ui/platform/QtLoop.h"

namespace vmr {

struct ChartItem::Drawing {
    /// What of the pane's surroundings the view was made with.
    struct Given {
        const Clock* clock = nullptr;
        SessionTime* session = nullptr;
        MainLoop* main = nullptr;
        ChartTrading* trading = nullptr;
        Perf* perf = nullptr;
        bool operator==(const Given&) const = default;
    };

    // for a chart whose pane names none
    SystemClock clock;
    SessionTime session;
    QtLoop loop;
    CrosshairState crosshair, peerCrosshair;
    HudState hud;
    CoveredBoxes covered;
    EntryPillState pill;
    QTimer pillTimer;                           // while a result is shown
    std::optional<ChartPoint> oscPointerComes;  // where it goes over the oscillator with the next frame
    std::unique_ptr<PointerReports> oscPointer;
    Given given;
    std::unique_ptr<ChartView> view;  // never null
    std::unique_ptr<PerfDrive> drive;
    Connection camera;
};

}  // namespace vmr
