#include "model/AppModel.h"

#include <algorithm>

#include "base/NumberText.h"
#include "model/SimDesk.h"
#include "perf/Perf.h"
#include "store/ConfigIO.h"
#include "store/SettingTable.h"

namespace vmr {

namespace {
constexpr double fastestSample = 1.0 / 120;  // real seconds

std::optional<int> usableTimeframe(std::int64_t minutes) {
    return minutes > 0 && minutes <= INT32_MAX ? std::optional(static_cast<int>(minutes)) : std::nullopt;
}

GexConfig firstConfig(const PaneSurroundings& at) { return at.config ? *at.config : ConfigIO::load(at.preferences); }
}  // namespace

AppModel::AppModel(PaneSurroundings surroundings, std::optional<PaneState> restore)
    : at_(std::move(surroundings)),
      work_(at_.main),
      config(&gate_, firstConfig(at_)),
      session(at_.auth, work_, at_.makeRelay(), &gate_),
      presence(
          at_.auth, at_.main, at_.ids.next().text(), [this] { return currentSymbol(); },
          [this] { return channels->source(); }),
      log(at_.clock, at_.ids, at_.print, &gate_),
      feedRepairs(at_.clock, log, at_.strictFeed),
      notices(work_, &gate_),
      catalog(&gate_),
      channels(&gate_),
      bars(work_, at_.session, &gate_),
      options(at_.ids, &gate_),
      markers(&gate_),
      oscillator(work_, &gate_),
      sessionLevels(&gate_),
      overlays(
          {at_.clock, work_, at_.session, [this] { return overlayInput(); }, &gate_, at_.perf, at_.rebuildInDrags}),
      hfp(&gate_),
      surface(at_.clock, &gate_),
      camera(at_.clock, work_),
      templates(at_.auth, work_, templatesPane(), &gate_),
      desk(at_.sim ? std::make_unique<SimDesk>(*at_.sim, at_.preferences, work_,
                                               [this]() -> const std::string& { return channels->simRoot; })
                   : nullptr),
      sim_(at_.sim),
      look_(&gate_, renderLook(config)),
      restorePane_(std::move(restore)) {
    if (const auto stored = at_.preferences.get(ConfigIO::timeframeKey))
        bars.timeframe = usableTimeframe(parseInt(*stored).value_or(0)).value_or(bars.timeframe);
    if (restorePane_) bars.timeframe = usableTimeframe(restorePane_->timeframe).value_or(bars.timeframe);
    bars.onDisplayRebuilt = [this] {
        if (!bars.candles.empty()) sim_.seedLast(bars.candles.back().close, bars.candles.back().time);
        overlays.schedule();
        showWaitingView();
    };
    watchContent();
    watchTemplates();
    sim_.setCommission(config->simCommission);
    if (desk) {
        contentLinks_.push_back(channels.changed.connect([this] { desk->look(); }));
        contentLinks_.push_back(panels.simPanelOpen.changed.connect([this] { desk->setOpen(panels.simPanelOpen); }));
    }
    sim_.watchProblem([this](const std::optional<std::string>& problem) { notices.accountProblem = problem; });
    contentLinks_.push_back(session.connected.changed.connect([this] { sim_.setConnected(session.connected); }));

    RelayClient::Callbacks callbacks;
    callbacks.onLog = work_.whileThere([this](const std::string& text) { log.append(text); });
    callbacks.onChannelMessage = [this](const ChannelMessage& message, const std::string& type) {
        onChannelMessage(message, type);
    };
    callbacks.onPrepare = [strict = at_.strictFeed](const std::string& channel, JsonView payload) {
        return prepare(channel, payload, strict);
    };
    session.start(std::move(callbacks), [this] { onConnected(); });
}

AppModel::~AppModel() {
    shutdown();
    session.end();
}

void AppModel::signOut() {
    session.signOut();
    log.clear();
    updateHfpTimer();
}

void AppModel::shutdown() {
    if (!ended_) camera.end();
    ended_ = true;
    work_.end();
    templates.end();
    presence.stop();
    session.shutdown();
    barRollTimer_.cancel();
    hfpTimer_.cancel();
    sim_.end();
}

void AppModel::onConnected() {
    work_.after(SimFeed::contractsWait, [this] { sim_.contractsKnown(); });
    if (channels->isOpen()) presence.start();  // a sign-out has stopped it
    if (channels->isOpen())
        log.append("→ reconnected — subscriptions re-flushed, snapshots merge in place");
    else
        openFirstChart();
    updateHfpTimer();
}

void AppModel::setConfig(const GexConfig& changed, Saving saving) {
    if (config.get() == changed) return;
    const NoticeGate::Hold hold(gate_);
    const unsigned effects = changedEffects(config, changed);
    const OverlaySettings series = overlaySettings();
    config = changed;
    look_ = renderLook(changed);
    if (saving == Saving::now) saveConfig();
    if (effects & SettingEffect::vixChannel) {
        bars.vixCandles.clear();
        overlays.raiseSides();
        reloadChart();
    } else {
        if (effects & SettingEffect::sessionLines) sessionLevels.rebuild(bars.candles, sessionHHMM());
        // a scale of another symbol changes nothing here
        if ((effects & SettingEffect::overlaySeries) && !(overlaySettings() == series)) overlays.schedule();
        bars.raiseChartVersion();
    }
    if (effects & SettingEffect::hfSampling) updateHfpTimer();
    sim_.setCommission(config->simCommission);
    templates.follow();  // another source is another pair
}

void AppModel::saveConfig() {
    if (at_.saveSettings) ConfigIO::save(at_.preferences, config);
}

void AppModel::updateHfpTimer() {
    const bool wanted = config->hfPressure && session.isSignedIn && !ended_;
    if (!wanted) return hfpTimer_.cancel();
    if (!hfpTimer_.active())
        hfpTimer_.every(
            1, [this] { takeHfpSample(); }, fastestSample);
}

void AppModel::takeHfpSample() {
    const double start = at_.clock.monotonic();
    if (!options.derivedFields.empty()) {  // else the rows are still the former chart's
        const auto spot = Hfp::spotPrice(FieldView(options.derivedFields), bars.candles, options.etfRatio);
        hfp.take(options.strikes, spot, at_.clock.now());
    }
    if (at_.perf) at_.perf->time("hfpSample", (at_.clock.monotonic() - start) * 1000);
}

void AppModel::setPressureWindow(int minutes) {
    hfp.windowMin = minutes;
    at_.print("[hfp] window → " + std::to_string(minutes) + "m");
}

void AppModel::setGex3DActive(bool on) {
    surface.setActive(on);
    if (on) rebuildSurface(true);
}

OverlaySettings AppModel::overlaySettings() const {
    const GexConfig& c = config.get();
    OverlaySettings out;
    out.timeframe = bars.timeframe;
    out.sessionHHMM = sessionHHMM();
    out.vwapEnabled = c.vwapEnabled;
    out.vwapNyEnabled = c.vwapNyEnabled;
    out.showSecondary = c.showSecondary;
    out.hfEnabled = c.hfEnabled;
    out.vixEnabled = c.vixEnabled;
    out.ema1Enabled = c.ema1Enabled;
    out.ema2Enabled = c.ema2Enabled;
    out.ema1Period = c.ema1Period;
    out.ema2Period = c.ema2Period;
    out.vixScale = c.vixScale;
    out.vixSmooth = c.vixSmooth;
    // the user's scale counts relative to the symbol's own; the pane's scale brings it to the price axis
    const std::string sym = currentSymbol();
    const double standard = GexConfig::hfScaleDefault(sym);
    out.hfFallbackScale = (standard > 0 ? c.hfScaleFor(sym) / standard : 1) * channels->hfScale;
    return out;
}

OverlayInput AppModel::overlayInput() const {
    return {bars.displayCandles,      bars.secondaryCandles,   bars.vixCandles,  overlays.hfByMin,
            sessionLevels.srSessions, overlays.sideRevision(), overlaySettings()};
}

}  // namespace vmr
