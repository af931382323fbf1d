// What a chart item draws with and is driven by. Private to the item's sources.
#pragma once

#include <QCoreApplication>
#include <functional>
#include <memory>

#include "base/Clock.h"
#include "chart/AxisLayer.h"
#include "chart/BarLabelLayer.h"
#include "chart/ChartRenderer.h"
#include "chart/PerfDrive.h"
#include "chart/TradingLinesLayer.h"
#include "gpu/FrameRecorder.h"
#include "market/SessionTime.h"
#include "perf/Perf.h"
#include "ui/chart/ChartItem.h"
#include "ui/chart/CrosshairState.h"
#include "ui/gpu/FrameFollower.h"
#include "ui/gpu/GlyphAtlas.h"
#include "ui/platform/QtLoop.h"

namespace vmr {

inline void postToMain(std::function<void()> task) {
    QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(task), Qt::QueuedConnection);
}

struct ChartItem::Drawing {
    /// A recorded frame is handed over: times how long it waited for the one before it.
    void timeGate() const {
        constexpr double least = 1.0;  // milliseconds
        const double waited = (clock.monotonic() - recordedAt) * 1000.0;
        if (renderer.perf && waited > least) renderer.perf->time("gpuGate", waited);
    }

    SystemClock clock;
    FrameRecorder gpu;
    GlyphAtlas atlas{QStringLiteral("Saira")};
    SessionTime session;
    BarLabelLayer barLabels{atlas};
    TradingLinesLayer tradingLines{atlas};
    AxisLayer axis{atlas, session};
    ChartRenderer renderer{gpu, clock, postToMain};
    CrosshairState crosshair;
    QtLoop loop;  // for a chart whose pane names none
    std::unique_ptr<ChartInput> input;
    std::unique_ptr<PerfDrive> drive;
    double recordedAt = 0;                                                        // seconds, monotonic
    std::shared_ptr<FrameFollower> follower = std::make_shared<FrameFollower>();  // shared with the render thread
};

}  // namespace vmr
