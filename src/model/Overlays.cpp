// When the overlay series are rebuilt: behind a throttle that adapts to what a rebuild costs, and never in a drag.
#include <algorithm>

#include "chart/OverlayGeometry.h"
#include "model/AppModel.h"
#include "perf/Perf.h"
#include "store/HexColor.h"

namespace vmr {

namespace {
Rgba color(double r, double g, double b, double a = 1) {
    return {static_cast<float>(r), static_cast<float>(g), static_cast<float>(b), static_cast<float>(a)};
}

Rgba color(const std::string& hex) {
    const Rgb rgb = HexColor::rgb(hex);
    return color(rgb.r, rgb.g, rgb.b);
}

bool isShown(const OverlayLine& line, const GexConfig& c) {
    if (line.label == "Open") return c.sessionEnabled && c.showOpen;
    if (line.label.starts_with("Prev")) return c.sessionEnabled && c.showPrev;
    return c.levelsEnabled;
}

constexpr double fastest = 1.0 / 120;  // seconds between rebuilds
constexpr double costShare = 4;        // a rebuild takes at most a quarter of the time
}  // namespace

void AppModel::scheduleOverlays() {
    if (!at_.bench.baseline && renderer_.interacting && renderer_.interacting()) {
        overlaysPendingAfterDrag_ = true;
        return;
    }
    const double interval = std::max(overlayCostEMA_ * costShare, fastest);
    const double now = at_.clock.monotonic();
    const double dt = now - lastOverlayBuild_;
    if (interval <= dt) {
        lastOverlayBuild_ = now;
        rebuildOverlays();
    } else if (!overlayTrailingScheduled_) {
        overlayTrailingScheduled_ = true;
        at_.main.after(interval - dt, [this, weak = std::weak_ptr(alive_)] {
            if (weak.expired()) return;
            overlayTrailingScheduled_ = false;
            lastOverlayBuild_ = at_.clock.monotonic();
            rebuildOverlays();
        });
    }
}

void AppModel::interactionEnded() {
    if (!overlaysPendingAfterDrag_) return;
    overlaysPendingAfterDrag_ = false;
    scheduleOverlays();
}

void AppModel::rebuildOverlays() {
    const double start = at_.clock.monotonic();
    const GexConfig& c = config.get();
    OverlaySettings settings;
    settings.timeframe = timeframe;
    settings.sessionHHMM = sessionHHMM();
    settings.vwapEnabled = c.vwapEnabled;
    settings.vwapNyEnabled = c.vwapNyEnabled;
    settings.showSecondary = c.showSecondary;
    settings.hfEnabled = c.hfEnabled;
    settings.vixEnabled = c.vixEnabled;
    settings.ema1Enabled = c.ema1Enabled;
    settings.ema2Enabled = c.ema2Enabled;
    settings.ema1Period = c.ema1Period;
    settings.ema2Period = c.ema2Period;
    settings.vixScale = c.vixScale;
    settings.vixSmooth = c.vixSmooth;
    // the user's scale counts relative to the symbol's own; the pane's scale brings it to the price axis
    const std::string sym = currentSymbol();
    const double standard = GexConfig::hfScaleDefault(sym);
    settings.hfFallbackScale = (standard > 0 ? c.hfScaleFor(sym) / standard : 1) * hfScale;
    overlays_.update({displayCandles, secondaryCandles, vixCandles, hfByMin, srSessions, sideRevision_, settings});
    overlaysChanged();
    pushOverlayGeometryToGPU();
    const double cost = at_.clock.monotonic() - start;
    if (at_.perf) at_.perf->time("OverlayRebuild", cost * 1000);
    overlayCostEMA_ = overlayCostEMA_ == 0 ? cost : cost * 0.2 + overlayCostEMA_ * 0.8;
}

void AppModel::setRendererBridge(RendererBridge bridge) {
    renderer_ = std::move(bridge);
    pushOverlayGeometryToGPU();
}

void AppModel::pushOverlayGeometryToGPU() {
    if (!renderer_.setOverlayGeometry) return;
    using namespace OverlayGeometry;
    const OverlaySet& series = overlays_.series();
    const GexConfig& c = config.get();
    OverlayLists& out = overlayLists_;
    out.lines.clear();
    out.second.clear();
    out.secondBorders.clear();
    const auto& bars = displayCandles.get();
    if (bars.size() >= 2) {
        updateSessionLineGeometry();
        const DataOrigin& origin = out.origin;
        polyline(out.lines, series.vwapMain, 2.0, color(1.0, 0.843, 0.0), std::nullopt, origin);
        polyline(out.lines, series.vwapNY, 1.0, color(1.0, 0.902, 0.502), Dash{0.5, 0.4}, origin);
        polyline(out.lines, series.vixLine, 2.0, color(0.353, 0.82, 0.749), std::nullopt, origin);
        polyline(out.lines, series.ema1, 1.5, color(c.ema1Color), std::nullopt, origin);
        polyline(out.lines, series.ema2, 1.5, color(c.ema2Color), std::nullopt, origin);
        const double flow = c.hfLineOpacity / 100;
        hfPolyline(out.lines, series.hfLine, 2.0, color(0, 0.588, 1, flow), color(1, 0.314, 0.314, flow), origin);
        OverlayGeometry::secondCandles(out.second, out.secondBorders, series.secondCandles, origin);
    } else if (!out.sessionLines.empty()) {
        out.sessionLines.clear();
        ++out.sessionRevision;
        sessionLineInputs_ = {};
    }
    renderer_.setOverlayGeometry(out);
}

// The session lines are most of the vertices, and a tick leaves them alone: they are made anew only when something
// that they depend on has changed. The origin moves with them.
void AppModel::updateSessionLineGeometry() {
    const GexConfig& c = config.get();
    const auto& bars = displayCandles.get();
    const SessionLineInputs inputs{srLinesRevision_, bars.size(), bars.front().time, bars.back().time, timeframe,
                                   c.sessionEnabled, c.showOpen,  c.showPrev,        c.levelsEnabled,  c.lineOpacity};
    if (inputs == sessionLineInputs_) return;
    sessionLineInputs_ = inputs;
    OverlayLists& out = overlayLists_;
    out.origin = {static_cast<double>(bars.size() - 1), bars.back().close};
    std::vector<OverlayLine> shown;
    for (const OverlayLine& line : srLines.get())
        if (isShown(line, c)) shown.push_back(line);
    out.sessionLines.clear();
    OverlayGeometry::srLines(out.sessionLines, shown, bars, c.lineOpacity / 100, out.origin);
    ++out.sessionRevision;
}

}  // namespace vmr
