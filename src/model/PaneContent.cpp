// What the chart is shown of a pane, and when it is told.
#include "model/AppModel.h"

namespace vmr {

void AppModel::setChartPort(ChartPort* port) {
    overlays.setChartPort(port);
    camera.setPort(port);
    contentChanged();
}

void AppModel::contentChanged() {
    if (camera.port()) camera.port()->contentChanged();
}

void AppModel::watchContent() {
    for (Signal<>* changed : {&look_.changed, &channels.changed, &bars.displayCandles.changed,
                              &bars.chartVersionChanged, &options.levels.changed, &options.strikes.changed,
                              &options.etfRatio.changed, &options.gammaFlipStrike.changed, &options.hud.changed,
                              &options.secStrikes.changed, &options.secEtfRatio.changed, &markers.bubblePts.changed,
                              &markers.trianglePts.changed, &sessionLevels.srLines.changed, &overlays.overlaysChanged,
                              &oscillator.oscLines.changed, &surface.markedStrike.changed})
        contentLinks_.push_back(changed->connect([this] { contentChanged(); }));
}

ChartContent AppModel::chartContent() const {
    ChartContent out;
    out.chart = chartNumber();
    out.timeframe = bars.timeframe;
    out.sessionHHMM = sessionHHMM();
    if (config->simEnabled) out.simRoot = channels->simRoot;
    out.symbol = channels->symbolView();
    out.hud = true;
    out.look = &look_->config;
    out.candles = bars.displayCandles.get();
    out.levels = options.levels.get();
    out.strikes = options.strikes.get();
    out.etfRatio = options.etfRatio;
    out.flipStrike = options.gammaFlipStrike;
    out.markedStrike = surface.markedStrike;
    out.totals = options.hud;
    out.secStrikes = options.secStrikes.get();
    out.secRatio = options.secEtfRatio;
    out.bubbles = markers.bubblePts.get();
    out.triangles = markers.trianglePts.get();
    out.secondSymbol = channels->secondSymbol;
    out.overlays = &overlays.series();
    out.overlayStyle = look_->overlays;
    out.srLines = sessionLevels.srLines.get();
    out.osc = {.lines = channels->oscChannel.empty() ? nullptr : &oscillator.oscLines.get(),
               .shown = look_->osc,
               .primaryTitle = channels->oscPrimaryLabel,
               .single = channels->oscSingle};
    out.revisions = {
        // series that a setting changed are shown at once, as a look is, not at the pace of new data
        .look = look_.revision() + overlays.settingsRevision(),
        .candles = bars.displayCandles.revision(),
        .levels = options.levels.revision(),
        .strikes = options.strikes.revision() + options.etfRatio.revision() + options.gammaFlipStrike.revision(),
        .secStrikes = options.secStrikes.revision() + options.secEtfRatio.revision(),
        .markers = markers.bubblePts.revision() + markers.trianglePts.revision(),
        .overlays = overlays.revision(),
        .srLines = sessionLevels.srLines.revision(),
        .osc = oscillator.oscLines.revision() + look_.revision()};
    return out;
}

}  // namespace vmr
