// The state of one chart pane: its connection, its channels and every series that it shows.
#pragma once

#include <any>
#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Clock.h"
#include "base/Preferences.h"
#include "base/SerialQueue.h"
#include "base/Signal.h"
#include "base/Uuid.h"
#include "chart/OverlayLists.h"
#include "market/FieldView.h"
#include "market/HfHistoryParser.h"
#include "market/OscParser.h"
#include "market/Records.h"
#include "market/SRLevelsParser.h"
#include "market/SessionTime.h"
#include "model/Gex3D.h"
#include "model/HfpSample.h"
#include "model/Instruments.h"
#include "model/OverlayBuilder.h"
#include "perf/BenchSettings.h"
#include "services/cloud/FirebaseRESTAuth.h"
#include "services/feed/RelayClient.h"
#include "store/GexConfig.h"
#include "store/PaneState.h"

namespace vmr {

class Perf;
class SimEngine;

/// One line of the pane's log; `time` is market time in seconds.
struct LogLine {
    Uuid id;
    double time = 0;
    std::string text;
};

/// A short notice over the chart.
struct ToastMsg {
    std::string title;
    std::optional<std::string> detail;
    bool operator==(const ToastMsg&) const = default;
};

/// The history of HF flow, redrawn apart from the rest of the pane.
struct HfpState {
    std::deque<HfpSample> samples;  ///< oldest first
    Signal<> changed;
    Observable<int> windowMin{5};  ///< minutes that the panel shows
};

/// What the model asks of the pane's renderer; both empty while there is none.
struct RendererBridge {
    std::function<bool()> interacting;  ///< a drag is under way
    /// The overlays were rebuilt; the lists stay as they are until the next call.
    std::function<void(const OverlayLists&)> setOverlayGeometry;
};

/// What a pane is given; everything outlives it.
struct PaneSurroundings {
    const Clock& clock;
    MainLoop& main;
    Preferences& preferences;
    FirebaseRESTAuth& auth;  ///< the process's one session
    SessionTime& session;    ///< the main thread's
    UuidSource& ids;
    std::function<std::unique_ptr<RelayClient>()> makeRelay;
    std::function<void(const std::string& line)> print;         ///< one whole line to standard output
    std::function<void(const std::string& line)> printMessage;  ///< also for each logged message; may be empty
    SimEngine* sim = nullptr;                                   ///< the process's one account; null for none
    Perf* perf = nullptr;                                       ///< where work is timed; may be null
    BenchSettings bench{};  ///< a benchmark forces settings, which are then not saved
};

/// One per pane. Main thread only. Observable fields tell when they change; everything else is read when `chartVersion`
/// or one of them says so. Delayed work ends silently when the model is gone.
class AppModel {
 public:
    static constexpr std::size_t maxLogLines = 500;
    static constexpr int maxLive = 4;

    /// Loads the settings and, with a stored session, starts to connect. `restore` is the pane to open on first
    /// connect.
    explicit AppModel(PaneSurroundings surroundings, std::optional<PaneState> restore = std::nullopt);
    ~AppModel();
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;

    // Session and connection ------------------------------------------------------------------------------------------
    Observable<bool> isSignedIn{false};
    Observable<bool> signingIn{false};
    Observable<std::optional<std::string>> authError;  ///< text for the sign-in form
    Observable<std::string> userEmail;
    Observable<bool> connected{false};  ///< the relay said "hello" and the socket stands
    Observable<std::string> status{std::string("Not connected")};
    Observable<bool> connLimited{false};  ///< the relay refused this socket: too many connections

    /// Signs in and connects; `done` (may be empty) gets whether it worked, after the fields have changed.
    void signIn(const std::string& email, const std::string& password, bool remember,
                std::function<void(bool)> done = {});
    /// Enters the session that the process has, and connects with it; the constructor does so where there is one.
    void startStoredSession();
    /// Disconnects and forgets the session; the chart and its data stay.
    void signOut();
    /// Ends the pane: timers, connection and its place in `liveCount`. Safe to call twice.
    void shutdown();
    /// Pane models that are live in the process; at most `maxLive` are to be made.
    static int liveCount();

    // Chart -----------------------------------------------------------------------------------------------------------
    Observable<std::string> chartChannel;   ///< "futures:NQM6" or "stocks:AAPL"; empty before the first chart
    Observable<std::string> levelsChannel;  ///< "derived:QQQ"; empty for none
    std::vector<std::string> subscribedChans;
    std::string simRoot;  ///< futures root of the chart, the simulator's symbol; empty for stocks
    std::string srChannel, bubblesChannel, trianglesChannel, oscChannel, hfHistoryChannel;
    std::string secondaryChannel, secondaryContract, secondSymbol, secondaryGexChannel;
    Observable<std::string> oscPrimaryLabel{std::string("NQ")};
    Observable<bool> oscSingle{false};
    double hfScale = 0.0000002;  ///< scale of HF flows to the price axis for this pane's source

    /// The only place that changes channels. Blank `candles` does nothing.
    void openChart(std::string_view candles, std::string_view levels);
    void reloadChart();
    /// The symbol to open on first connect instead of the stored one. Before that.
    void setFirstSymbol(const std::string& sym) { restorePane_ = PaneState{sym, 0, ""}; }
    /// Stores the symbol as the last one and opens its chart; an unknown one changes nothing else.
    void switchSymbol(const std::string& sym);
    /// The symbol of the chart: a stock's, else the futures root; empty for neither.
    std::string currentSymbol() const;
    /// Session start as hhmm: 930 for stocks, else the setting.
    int sessionHHMM() const;
    bool isStock() const;
    std::string vixBaseChannel() const;
    std::string vixChannel() const;

    // Bars ------------------------------------------------------------------------------------------------------------
    std::vector<Candle> candles;           ///< one-minute bars, strictly ascending, at most 5000
    std::vector<Candle> secondaryCandles;  ///< the same of the paired instrument
    std::vector<Candle> vixCandles;
    Observable<std::vector<Candle>> displayCandles;  ///< `candles` at `timeframe`
    Observable<int> timeframe{1};                    ///< minutes a display bar
    Observable<bool> priceRising{true};
    std::uint64_t chartVersion = 0;  ///< raised after each display rebuild
    Signal<> chartVersionChanged;
    std::optional<Viewport> viewport;  ///< the camera of the last frame that moved it; nothing without a chart view

    /// A trade of the chart; `tsMs` in milliseconds since 1970 (`fatal` outside 64 bits).
    void applyTrade(double price, double tsMs);
    void applySecondaryTrade(double price, double tsMs);
    /// Appends a flat bar when a new open minute has begun.
    void rollForwardBarIfNeeded();
    void rebuildDisplay();
    void setTimeframe(std::int64_t minutes);

    // Catalog ---------------------------------------------------------------------------------------------------------
    Observable<std::vector<CatalogFut>> catFutures;
    Observable<std::vector<std::string>> catStocks;
    Observable<std::map<std::string, std::string>> contractOverrides;  ///< root to front contract, as the server says
    /// HF scales by symbol from the catalog, shared by all panes.
    static std::map<std::string, double>& hfScaleOverrides();

    /// Symbols and their default options source, for the symbol menu.
    std::vector<std::pair<std::string, std::string>> futuresList() const;
    std::vector<std::string> stockList() const;
    std::optional<std::string> pairFor(const std::string& root) const;
    std::optional<std::string> effectiveContract(const std::string& sym) const;
    std::optional<std::string> indexSourceFor(const std::string& sym) const;
    std::optional<std::string> defaultSourceFor(const std::string& sym) const;

    // Derived data ----------------------------------------------------------------------------------------------------
    DerivedFields derivedFields;                 ///< aggregate fields as patched by the feed
    DerivedFields secondaryGexFields;            ///< the same of the second source
    Observable<std::vector<PriceLevel>> levels;  ///< call and put wall
    Observable<std::vector<StrikeRow>> strikes;  ///< rows of the effective fields, ascending
    Observable<double> etfRatio{1.0};            ///< factor from strike to chart price
    Observable<std::vector<StrikeRow>> secStrikes;
    Observable<double> secEtfRatio{1.0};
    Observable<std::optional<double>> gammaFlipStrike;
    Observable<HudMetrics> hud;
    Observable<std::optional<std::string>> selectedExp;  ///< chosen expiration, yyyy-MM-dd
    Observable<std::vector<std::string>> futureExps;     ///< expirations on offer

    /// The aggregate overlaid with the selected expiration; valid until `derivedFields` changes.
    FieldView effectiveDerivedFields() const;
    /// The user's pick of an expiration.
    void setExpiration(const std::string& iso);
    /// The next of "ETF", "INDEX", "BOTH"; reopens a future's chart.
    void cycleGexSource();
    /// Key under which things are stored by symbol and source, such as "NQ_QQQ"; a stock's symbol; empty without chart.
    std::string symbolSource() const;
    /// Shows what `pane` tells, now or on first connect.
    void applyRestore(const PaneState& pane);

    // Markers, oscillator, session lines ------------------------------------------------------------------------------
    std::map<std::int64_t, std::vector<BubblePt>> bubbleByMin;  ///< minute in seconds, newest 600
    std::map<std::int64_t, std::vector<TrianglePt>> triByMin;
    Observable<std::vector<BubblePt>> bubblePts;  ///< of all minutes, ascending
    Observable<std::vector<TrianglePt>> trianglePts;
    OscByMin oscByMin;
    Observable<OscLines> oscLines;
    SRSessions srSessions;
    Observable<std::vector<OverlayLine>> srLines;

    // Overlay series --------------------------------------------------------------------------------------------------
    HfByMin hfByMin;  ///< newest 5000 minutes
    /// The series as of the last rebuild.
    const OverlaySet& overlays() const { return overlays_.series(); }
    Signal<> overlaysChanged;
    /// Ties the pane to its renderer, which gets the geometry at once.
    void setRendererBridge(RendererBridge bridge);
    /// To be called once when a drag ends: runs the rebuild that it held back.
    void interactionEnded();

    // HF pressure and the 3D surface ----------------------------------------------------------------------------------
    HfpState hfp;
    Observable<std::optional<Gex3DData>> gex3D;
    bool gex3DActive() const { return gex3DActive_; }
    /// True while the 3D view is open; turning it on builds at once.
    void setGex3DActive(bool on);

    // Settings, log and notices ---------------------------------------------------------------------------------------
    Observable<GexConfig> config;
    /// The one way to change settings: saves and applies what differs.
    void setConfig(const GexConfig& changed);

    std::deque<LogLine> logLines;  ///< oldest first, at most `maxLogLines`
    Signal<> logChanged;
    void append(const std::string& text);

    Observable<std::optional<ToastMsg>> toast;
    Observable<bool> marketClosedNotice{false};
    void flashToast(const std::string& title, std::optional<std::string> detail = std::nullopt);
    void flashMarketClosedNotice();

    Observable<bool> configPanelOpen{false}, accountPanelOpen{false}, templatesPanelOpen{false}, simPanelOpen{false};

    const Clock& clock() const { return at_.clock; }

    /// Routes one channel message; called by the relay's callback and by tests. The elements of one "batch", which
    /// share a document, are taken to come at one time.
    void onChannelMessage(const ChannelMessage& message, const std::string& type);

    /// What the relay's queue makes of a payload before the main thread sees it: the bars of a candle channel, cut to
    /// the newest that a series keeps, and the brief form of a large payload. Pure; any thread.
    static std::any prepare(const std::string& channel, JsonView payload);

 private:
    // Lifecycle (AppModel.cpp)
    void connectRelay();
    TokenProvider tokenProvider();
    void onConnected();
    void openFirstChart();
    // Chart opening (ChartOpening.cpp)
    void clearChartData();
    std::vector<std::string> buildChannelList(const std::string& bars, const std::string& derived);
    void rememberChannelNames();
    // Routing (Routing.cpp)
    bool routeHot(const ChannelMessage& message);
    bool routeSeries(const ChannelMessage& message);
    bool routeDerived(const ChannelMessage& message);
    void mergeChartBars(const ChannelMessage& message);
    // Bars (LiveBars.cpp)
    enum class TradeEffect { none, tooOld, edited, appended };
    TradeEffect applyToSeries(std::vector<Candle>& series, double price, double tsMs);
    void scheduleDisplayRebuild();
    void rollForwardBar(double exactNow);
    void startBarRollTimer();
    // Catalog (Catalog.cpp)
    void applyCatalog(JsonView catalog);
    void applyContracts(JsonView map);
    // Derived fields (DerivedData.cpp)
    void takeDerived(const ChannelMessage& message);
    void takeSecondaryGex(const ChannelMessage& message);
    void updateExpirations();
    void reparseDerived();
    // Per-minute channels, oscillator, session lines (SideChannels.cpp)
    void takeHfHistory(JsonView payload);
    void takeBubbles(JsonView payload);
    void takeTriangles(JsonView payload);
    void takeOscillator(JsonView payload);
    void takeSupportResistance(JsonView payload);
    void scheduleOscRebuild();
    void rebuildSRLines();
    void rebuildSRLinesIfBarChanged();
    // Overlay series (Overlays.cpp)
    void scheduleOverlays();
    void rebuildOverlays();
    void pushOverlayGeometryToGPU();
    void updateSessionLineGeometry();
    // Sampling (Sampling.cpp)
    void updateHfpTimer();
    void takeHfpSample();
    void rebuild3D(bool force);
    // Places whose work is not written yet (Unwritten.cpp)
    void autoApplyPreferredTemplate();
    void tellPresence();
    void stopPresence();
    // The simulator (Simulator.cpp)
    void simOnTrade(double price);
    void simOnQuote(double bid, double ask);
    void simSeedLast(double price);
    void simUpdateSpecs();
    void simTakeCommission();

    PaneSurroundings at_;
    std::unique_ptr<RelayClient> relay_;
    std::shared_ptr<int> alive_;  // expires with the model; delayed work holds it weakly
    std::optional<PaneState> restorePane_;
    bool counted_ = false;  // until `shutdown`
    int session_ = 0;       // raised by each sign-out
    double lastSeenClose_ = std::numeric_limits<double>::quiet_NaN();
    bool displayRebuildScheduled_ = false;
    SerialQueue::TimerId barRollTimer_ = SerialQueue::noTimer;
    Json batch_;           // the batch under way
    double batchNow_ = 0;  // the clock when it came
    bool userPickedExp_ = false;
    Json strikesSource_;                                // the rows that `strikes` were made of
    std::shared_ptr<std::vector<StrikeRow>> readRows_;  // the aggregate's long rows, read but not shown yet
    bool oscRebuildScheduled_ = false;
    std::pair<std::size_t, std::int64_t> srLinesBars_{SIZE_MAX, 0};  // count and last time at the last rebuild
    OverlayBuilder overlays_;
    RendererBridge renderer_;
    OverlayLists overlayLists_;  // its memory is used again
    // what the geometry of the session lines was made of
    struct SessionLineInputs {
        std::uint64_t lines = 0;
        std::size_t bars = 0;
        std::int64_t firstTime = 0, lastTime = 0;
        int timeframe = 0;
        bool sessionEnabled = false, showOpen = false, showPrev = false, levelsEnabled = false;
        double lineOpacity = 0;
        bool operator==(const SessionLineInputs&) const = default;
    };
    SessionLineInputs sessionLineInputs_;
    std::uint64_t srLinesRevision_ = 0;
    std::uint64_t sideRevision_ = 0;  // raised with the VIX, the HF history and the support/resistance sessions
    double overlayCostEMA_ = 0;       // seconds
    double lastOverlayBuild_ = -std::numeric_limits<double>::infinity();  // monotonic
    bool overlayTrailingScheduled_ = false;
    bool overlaysPendingAfterDrag_ = false;
    SerialQueue::TimerId hfpTimer_ = SerialQueue::noTimer;
    bool gex3DActive_ = false;
    double lastGex3DBuild_ = -std::numeric_limits<double>::infinity();  // monotonic
    int toastGen_ = 0;
    int marketClosedGen_ = 0;
    // channel names that every message is compared with, made once per chart
    std::string tradesName_, quoteName_, minuteName_, secondaryTradesName_, secondaryMinuteName_;
};

/// `candles` at `tf` minutes a bar: buckets are multiples of `tf` minutes since 1970, missing minutes make no bar, and
/// the last bar is the forming one. A `tf` below 2 gives `candles` as they are. Writes into `out`, reusing its memory.
void aggregate(const std::vector<Candle>& candles, int tf, std::vector<Candle>& out);

}  // namespace vmr
