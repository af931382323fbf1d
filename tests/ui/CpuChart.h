// A chart of its own without a window, to say what a window must show.
#pragma once

#include <QSizeF>

#include "chart/ChartView.h"
#include "gpu/FrameRecorder.h"
#include "support/time/TestTime.h"
#include "ui/gpu/GlyphAtlas.h"

namespace vmr::test {

struct CpuChart {
    explicit CpuChart(ChartTrading* trading = nullptr) : account(trading) {}

    /// The frame in which everything has come to rest.
    RecordedFrame frame(QSizeF size, double ratio) {
        for (bool again = true; again; now += 0.1) {
            const unsigned glyphs = atlas.generation();
            again = view.record(size.width(), size.height(), ratio, now) || atlas.generation() != glyphs;
        }
        RecordedFrame out;
        gpu.swapFrame(out);
        return out;
    }

    ChartTrading* account;
    TestTime time;
    TestQueue queue{time};
    FrameRecorder gpu;
    GlyphAtlas atlas{QStringLiteral("Saira")};
    SessionTime session;
    ChartView view{{gpu, atlas, session, time, queue, nullptr, account}};
    double now = 1;
};

}  // namespace vmr::test
