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
#include "market/SessionTime.h"
#include "perf/Perf.h"
#include "ui/chart/ChartItem.h"
#include "ui/chart/CrosshairState.h"
#include "ui/platform/QtLoop.h"

namespace vmr {

inline void postToMain(std::function<void()> task) {
    QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(task), Qt::QueuedConnection);
}

struct ChartItem::Drawing {
    Drawing(Gpu& gpu, GlyphSource& glyphs)
        : barLabels(glyphs), tradingLines(glyphs), axis(glyphs, session), renderer(gpu, clock, postToMain) {}

    SystemClock clock;
    SessionTime session;
    BarLabelLayer barLabels;
    TradingLinesLayer tradingLines;
    AxisLayer axis;
    ChartRenderer renderer;
    CrosshairState crosshair;
    QtLoop loop;  // for a chart whose pane names none
    std::unique_ptr<ChartInput> input;
    std::unique_ptr<PerfDrive> drive;
};

}  // namespace vmr
