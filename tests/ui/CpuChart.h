// A chart of its own without a window, to say what a window must show.
#pragma once

#include <QSizeF>

#include "base/Clock.h"
#include "chart/AxisLayer.h"
#include "chart/BarLabelLayer.h"
#include "chart/ChartRenderer.h"
#include "gpu/FrameRecorder.h"
#include "market/SessionTime.h"
#include "ui/gpu/GlyphAtlas.h"

namespace vmr::test {

struct CpuChart {
    CpuChart() {
        renderer.addScreenLayer(labels);
        renderer.addScreenLayer(axis);
    }

    /// The frame in which everything has come to rest.
    RecordedFrame frame(QSizeF size, double ratio) {
        while (renderer.drawFrame(size.width(), size.height(), ratio, now)) now += 0.1;
        RecordedFrame out;
        gpu.swapFrame(out);
        return out;
    }

    SystemClock clock;
    FrameRecorder gpu;
    GlyphAtlas atlas{QStringLiteral("Saira")};
    SessionTime session;
    BarLabelLayer labels{atlas};
    AxisLayer axis{atlas, session};
    ChartRenderer renderer{gpu, clock, [](const std::function<void()>&) {}};
    double now = 1;
};

}  // namespace vmr::test
