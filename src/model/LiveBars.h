// The bars of a pane: the one-minute series as the feed and trades make them, and the same at the chosen timeframe.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include "base/Signal.h"
#include "market/Bars.h"
#include "market/Records.h"
#include "market/SessionTime.h"
#include "model/PaneWork.h"

namespace vmr {

/// The bars that belong to one chart.
struct BarsOfChart {
    explicit BarsOfChart(NoticeGate* gate = nullptr) : displayCandles(gate) {}

    std::vector<Candle> candles;                     ///< one-minute bars, strictly ascending, at most 5000
    std::vector<Candle> secondaryCandles;            ///< the same of the paired instrument
    Observable<std::vector<Candle>> displayCandles;  ///< `candles` at the timeframe
    double lastSeenClose = std::numeric_limits<double>::quiet_NaN();  ///< at the last display rebuild
    bool displayRebuildScheduled = false;
};

/// Main thread.
class LiveBars : public BarsOfChart {
 public:
    /// All must outlive it; `gate` may be null.
    LiveBars(PaneWork& work, SessionTime& session, NoticeGate* gate = nullptr);

    /// Begins another chart, without bars.
    void open() { BarsOfChart::operator=(BarsOfChart()); }

    std::vector<Candle> vixCandles;  ///< of the volatility index; survives a change of chart
    Observable<int> timeframe;       ///< minutes a display bar
    Observable<bool> priceRising;    ///< the last close against the one before it
    std::uint64_t chartVersion = 0;  ///< raised after each display rebuild
    Signal<> chartVersionChanged;
    std::function<void()> onDisplayRebuilt;  ///< called in each display rebuild, before `chartVersion` is raised

    /// Bars of the feed: on equal time the later wins, and the newest 5000 remain. The display is not rebuilt.
    static void merge(std::vector<Candle>& series, const std::vector<Candle>& bars);
    /// A trade of the chart; `tsMs` in milliseconds since 1970 (`fatal` outside 64 bits). Unless the series is empty,
    /// the display is rebuilt soon, at most once each 1/120 s.
    TradeEffect applyTrade(double price, double tsMs);
    /// The start of the minute that holds market time `now`, both in seconds.
    static std::int64_t minuteOf(double now);
    /// Whether there is a bar of this minute or of a later one.
    bool reach(std::int64_t minute) const { return !candles.empty() && candles.back().time >= minute; }
    /// Appends a flat bar when a new open minute has begun at market time `now`, and tells whether. The display is not
    /// rebuilt.
    bool rollForward(double now, bool isStock);

    void rebuildDisplay();
    /// Limited to 1 and more. Rebuilds the display.
    void setTimeframe(std::int64_t minutes);
    /// Raises `chartVersion` and gives notice.
    void raiseChartVersion();

 private:
    PaneWork& work_;
    SessionTime& session_;
};

}  // namespace vmr
