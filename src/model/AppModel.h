// The state of one chart pane: its connection, its channels and every series that it shows.
#pragma once

#include <any>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/MarketTimer.h"
#include "base/Signal.h"
#include "chart/ChartSource.h"
#include "model/Catalog.h"
#include "model/ChartChannels.h"
#include "model/ChartTemplates.h"
#include "model/FeedRepairs.h"
#include "model/HfpSampling.h"
#include "model/LiveBars.h"
#include "model/MinuteMarkers.h"
#include "model/Notices.h"
#include "model/OptionsData.h"
#include "model/Oscillator.h"
#include "model/Overlays.h"
#include "model/PaneCamera.h"
#include "model/PaneLog.h"
#include "model/PaneSession.h"
#include "model/PaneSurroundings.h"
#include "model/PaneWork.h"
#include "model/PanelsOpen.h"
#include "model/Prepared.h"
#include "model/RenderLook.h"
#include "model/SessionLevels.h"
#include "model/SimFeed.h"
#include "model/Surface3D.h"
#include "services/cloud/PresenceReporter.h"
#include "store/PaneState.h"

namespace vmr {

class SimDesk;

/// One per pane: owns the parts, routes what comes to them, and tells them of each other's changes. Main thread.
/// Observable fields give notice of their changes; everything else is read when `chartVersion` or one of them says so.
/// No notice comes while a chart is being opened: all that it changed is told at its end, each once. Delayed work ends
/// silently when the model is gone, and the work of a chart when another one is open.
class AppModel final : public ChartSource {
    // first, since the parts use them
    PaneSurroundings at_;
    NoticeGate gate_;
    PaneWork work_;

 public:
    /// Loads the settings and, with a stored session, starts to connect. `restore` is the pane to open on first
    /// connect.
    explicit AppModel(PaneSurroundings surroundings, std::optional<PaneState> restore = std::nullopt);
    ~AppModel() override;
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;

    // Parts -----------------------------------------------------------------------------------------------------------
    Observable<GexConfig> config;  ///< changed by `setConfig` alone
    PaneSession session;
    PresenceReporter presence;  ///< runs from the first chart on, while the session stands
    PaneLog log;
    FeedRepairs feedRepairs;  ///< of all charts of the pane
    Notices notices;
    PanelsOpen panels;
    Catalog catalog;
    Observable<ChartChannels> channels;  ///< changed by `openChart` alone
    LiveBars bars;
    OptionsData options;
    MinuteMarkers markers;
    Oscillator oscillator;
    SessionLevels sessionLevels;
    Overlays overlays;
    HfpSampling hfp;
    Surface3D surface;
    PaneCamera camera;
    ChartTemplates templates;
    const std::unique_ptr<SimDesk> desk;  ///< the pane's place at the paper account; null without an account

    // Session ---------------------------------------------------------------------------------------------------------
    /// Signs in and connects; `done` (may be empty) gets whether it worked, after the fields have changed.
    void signIn(const std::string& email, const std::string& password, bool remember,
                std::function<void(bool)> done = {}) {
        session.signIn(email, password, remember, std::move(done));
    }
    /// Enters the session that the process has, and connects with it; the constructor does so where there is one.
    void startStoredSession() { session.startStoredSession(); }
    /// Disconnects and forgets the session; the chart and its data stay, the log goes.
    void signOut();
    /// Ends the pane: timers, connection and delayed work. It hears nothing and starts nothing afterwards. Safe to call
    /// twice.
    void shutdown();

    // Chart -----------------------------------------------------------------------------------------------------------
    /// The only place that changes channels. Blank `candles` does nothing.
    void openChart(std::string_view candles, std::string_view levels);
    void reloadChart();
    /// Stores the symbol as the last one and opens its chart; an unknown one changes nothing else.
    void switchSymbol(const std::string& sym);
    /// The symbol to open on first connect instead of the stored one. Before that.
    void setFirstSymbol(const std::string& sym) { restorePane_ = PaneState{sym, 0, ""}; }
    /// Shows what `pane` tells, now or on first connect.
    void applyRestore(const PaneState& pane);
    /// Counts the opened charts, the same one opened anew included; 0 before the first.
    std::uint64_t chartNumber() const { return work_.chart(); }
    std::string currentSymbol() const { return channels->currentSymbol(); }
    /// Session start as hhmm: 930 for stocks, else the setting.
    int sessionHHMM() const { return channels->isStock() ? 930 : static_cast<int>(config->sessionStart); }
    /// Key under which things are stored by symbol and source, such as "NQ_QQQ"; a stock's symbol; empty without chart.
    std::string symbolSource() const;

    /// A trade of the chart; `tsMs` in milliseconds since 1970 (`fatal` where no integer holds its minute).
    TradeEffect applyTrade(double price, double tsMs);
    /// The same of the paired instrument.
    void applySecondaryTrade(double price, double tsMs);
    /// Appends a flat bar when a new open minute has begun and the pane is connected.
    void rollForwardBarIfNeeded() { rollForwardBar(at_.clock.now()); }
    /// Limited to 1 and more; stored.
    void setTimeframe(std::int64_t minutes);
    /// The user's pick of an expiration, yyyy-MM-dd; empty for all of them together.
    void setExpiration(const std::string& iso);
    /// The next of "ETF", "INDEX", "BOTH"; reopens a future's chart.
    void cycleGexSource();
    /// Opens a future's chart anew, with the source that the settings tell.
    void showGexSource();
    /// True while the 3D view is open; turning it on builds at once.
    void setGex3DActive(bool on);
    /// Shows so many minutes of HF flow, one of `HfPressure::windows`, and says so on standard output.
    void setPressureWindow(int minutes);
    /// The one way to change settings: applies what differs, and saves, or leaves that to `saveConfig`.
    enum class Saving { now, later };
    void setConfig(const GexConfig& changed, Saving saving = Saving::now);
    /// Stores the settings of this pane as the user's.
    void saveConfig();

    // Templates -------------------------------------------------------------------------------------------------------
    /// The settings, and how the chart's view stands where a chart shows the pane.
    JsonMembers captureTemplateConfig();
    /// Takes over the settings of a template, but for the source, and its view. `byHand`: a person asked for it.
    void applyTemplate(const JsonMembers& saved, bool byHand = true);
    /// Applies the preferred template of the pair that is shown, once; nothing unless somebody is signed in.
    void autoApplyPreferredTemplate() { templates.autoApplyPreferred(); }

    // What shows the chart --------------------------------------------------------------------------------------------
    /// The chart that shows the pane, which must outlive its being set here; null for none. It is told at once.
    void setChartPort(ChartPort* port);
    /// The chart's camera as of the last frame; nothing without a chart.
    std::optional<Viewport> viewport() const { return camera.port() ? camera.port()->viewport() : std::nullopt; }
    ChartContent chartContent() const override;
    void interactionEnded() override { overlays.interactionEnded(); }
    void marketClosedOrder() override { notices.flashMarketClosedNotice(); }
    void pointerOver(const std::optional<ChartSpot>& spot) override { camera.pointer = spot; }

    // A linked pane's camera: `DualLink` brings it into this pane's bars ----------------------------------------------
    void applySyncTime(double first, double count) { camera.applySyncTime(first, count); }
    void applySyncTimeRel(double gapRight, double count) { camera.applySyncTimeRel(gapRight, count); }
    void applySyncPrice(double minP, double maxP) { camera.applySyncPrice(minP, maxP); }
    void applySyncFrac(double frac) { camera.applySyncFrac(frac); }
    void setPriceFracMode(bool on) { camera.setPriceFracMode(on); }

    // Messages --------------------------------------------------------------------------------------------------------
    /// Routes one channel message; called by the relay's callback and by tests. The elements of one "batch", which
    /// share a document, are taken to come at one time.
    void onChannelMessage(const ChannelMessage& message, const std::string& type);
    /// What the relay's queue makes of a payload before the main thread sees it: the bars of a candle channel, cut to
    /// the newest that a series keeps, and the brief form of a large payload. `strict` as
    /// in `PaneSurroundings::strictFeed`. Pure; any thread.
    static std::any prepare(const std::string& channel, JsonView payload, bool strict = false);

    const Clock& clock() const { return at_.clock; }
    /// The machine's own clock on a practice market; null elsewhere.
    const Clock* practiceMachine() const { return at_.machine; }
    /// For what its views remember.
    Preferences& preferences() const { return at_.preferences; }
    /// The session clock that it goes by, for the chart that shows it.
    SessionTime& sessionTime() const { return at_.session; }

 private:
    // Lifecycle (AppModel.cpp)
    void onConnected();
    void updateHfpTimer();
    void takeHfpSample();
    void watchContent();
    void contentChanged();
    OverlayInput overlayInput() const;
    OverlaySettings overlaySettings() const;
    // Opening (ChartOpening.cpp)
    void openFirstChart();
    void openWantedSymbol();
    void rollForwardBar(double now);
    // Templates (PaneTemplates.cpp)
    ChartTemplates::Pane templatesPane();
    void watchTemplates();
    void showWaitingView();
    std::optional<ViewSetup> viewToSave();
    double newestClose() const;
    // Routing (Routing.cpp)
    bool route(const ChannelMessage& message);
    bool routeHot(const ChannelMessage& message, RepairTally& tally);
    bool routeSeries(const ChannelMessage& message, RepairTally& tally);
    bool routeDerived(const ChannelMessage& message, RepairTally& tally);
    void mergeChartBars(const ChannelMessage& message, RepairTally& tally);
    void applyContracts(JsonView map);
    void rebuildSurface(bool force) { surface.rebuild(bars.candles, options.etfRatio, options.derivedFields, force); }

    SimFeed sim_;
    Observable<RenderLook> look_;
    std::vector<Connection> contentLinks_;
    std::optional<PaneState> restorePane_;
    bool ended_ = false;  // by `shutdown`
    Arrival arrival_;     // of the message that is being routed
    MarketTimer barRollTimer_{at_.clock, at_.main}, hfpTimer_{at_.clock, at_.main};
};

}  // namespace vmr
