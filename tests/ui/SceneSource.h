// What a chart in a window shows in tests: bars, and a scene around them.
#pragma once

#include <utility>
#include <vector>

#include "chart/CameraPort.h"
#include "chart/ChartSource.h"
#include "tests/chart/FullScene.h"
#include "ui/pane/PaneViewModel.h"

namespace vmr::test {

/// Stands in for a pane's model.
class SceneSource final : public ChartSource {
 public:
    explicit SceneSource(std::vector<Candle> list) : bars(std::move(list)) { look.initialCandles = 20; }

    /// Feeds the chart of `view`, which must not outlive this while it has a chart.
    void feed(PaneViewModel& view) {
        view_ = &view;
        view.chart.setSource(this, [this](ChartPort* port) { port_ = port; });
        changed();
    }
    /// Anything of what is shown has changed.
    void changed() {
        ++revision_;
        view_->chart.setEmpty(bars.empty());
        if (port_) port_->contentChanged();
    }
    /// A trade: of the last bar alone.
    void trade(double close) {
        bars.back().close = close;
        ++trades_;
        port_->contentChanged();
    }
    /// Another instrument's.
    void openChart(std::vector<Candle> list) {
        ++chart_;
        bars = std::move(list);
        scene = nullptr;
        changed();
    }

    ChartContent chartContent() const override {
        ChartContent out = scene ? scene->content() : ChartContent{};
        out.chart = chart_;
        if (!scene) out.simRoot = simRoot;
        out.hud = hud;
        if (!strikes.empty()) {
            out.strikes = strikes;
            out.etfRatio = 10;
        }
        out.candles = bars;
        out.look = scene ? &scene->config : &look;
        const auto r = revision_;
        out.revisions = {r, r, r, r, r, r, r, r};
        out.revisions.candles += trades_;
        return out;
    }
    void interactionEnded() override { ++dragsEnded; }
    void marketClosedOrder() override {}
    void pointerOver(const std::optional<ChartSpot>& spot) override { pointer = spot; }
    CameraPort& camera() { return *port_->cameraPort(); }

    std::vector<Candle> bars;
    RenderConfig look;                 ///< without a scene
    const SceneData* scene = nullptr;  ///< everything beside the bars; must outlive what is shown
    std::string_view simRoot;          ///< without a scene
    bool hud = false;
    std::vector<StrikeRow> strikes;  ///< at a tenth of the price; with none a scene's
    int dragsEnded = 0;
    std::optional<ChartSpot> pointer;

 private:
    PaneViewModel* view_ = nullptr;
    ChartPort* port_ = nullptr;
    std::uint64_t chart_ = 1, revision_ = 0, trades_ = 0;
};

}  // namespace vmr::test
