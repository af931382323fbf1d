// The overlay series one by one, each with what it keeps from one update to the next.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "market/HfHistoryParser.h"
#include "market/Records.h"
#include "market/SRLevelsParser.h"
#include "model/SessionWalk.h"

/// Updates take `from`, the first bar that may differ from the last call's; with 0 they start anew. `out` must be what
/// the last call left there. The result never depends on `from`. Bars are strictly ascending by time, `tf` is minutes a
/// display bar. Input that cannot be used gives an empty series or no point. Main thread, like the session clock.
namespace vmr::OverlayLines {

using Bars = std::vector<Candle>;

/// Position of the first bar at or after `t`.
std::size_t firstBarFrom(const Bars& bars, std::int64_t t);

/// Whether the second VWAP, that of the stock session, is shown beside one that opens at `sessionHHMM`: while the stock
/// market is open at `t`, the time of the last bar, unless the main session is the stock session itself.
bool showsNyVWAP(std::int64_t t, int sessionHHMM, SessionTime& session);

/// Volume-weighted average price since the session open of the last bar. No points until volume appears; a bar without
/// volume repeats the running value.
class VwapLine {
 public:
    /// `sessionOpen` is that of the last bar.
    void update(const Bars& bars, std::size_t from, std::int64_t sessionOpen, std::vector<OvPoint>& out);

 private:
    std::int64_t sessionOpen_ = 0;
    std::size_t next_ = 0;  // the first bar that the kept sums lack
    double priceVolume_ = 0, volume_ = 0;
};

/// Exponential average of the closes, without warm-up. Empty under 2 bars or a period under 1.
void updateEMA(const Bars& bars, std::size_t from, std::int64_t period, std::vector<OvPoint>& out);

/// This session's candles of the paired instrument (`secondaryRaw` at one minute a bar), scaled so that both open the
/// session at one price.
class SecondLine {
 public:
    void update(const Bars& primary, const Bars& secondaryRaw, int tf, SessionWalk& walk, std::vector<OvCandle>& out);

 private:
    Bars aggregated_;
};

/// The open of a session and the price of its first bar.
struct SessionOpen {
    std::int64_t time = 0;
    double price = 0;
    std::size_t firstBar = 0;
    bool operator==(const SessionOpen&) const = default;
};

/// Every session of the bars, ascending by time.
class SessionOpens {
 public:
    void update(const Bars& bars, std::size_t from, SessionWalk& walk);
    const std::vector<SessionOpen>& all() const { return all_; }
    /// Null for none.
    const SessionOpen* at(std::int64_t time) const;

 private:
    std::vector<SessionOpen> all_;
};

/// A value for the display bar that starts at `time`.
struct BarValue {
    std::int64_t time = 0;
    double value = 0;
    double real = 0;  ///< before it was laid on other prices; 0 for a series that is not
};

/// The HF flow laid on each session's opening price: `fallbackScale` points per unit of flow, or, where the session has
/// a first level beyond its open on that side, so that a flow of 1e8 reaches it. Minutes from 16:16 on do not count;
/// the last minute of a bar speaks for it.
class HfLine {
 public:
    /// Takes the flow in; afterwards the line must be updated from 0.
    void read(const HfByMin& hfByMin, int tf, SessionWalk& walk);
    void update(const Bars& bars, std::size_t from, const SessionOpens& opens, const SRSessions& srSessions,
                double fallbackScale, SessionWalk& walk, std::vector<OvColorPoint>& out) const;

 private:
    std::vector<BarValue> values_;
};

/// The VIX's move since 9 h 15 min into each session laid on the session's opening price, `scale` as gain, averaged
/// over the last `smooth` minutes. Minutes from 03:15 to 16:16 count; a session with fewer than 2 of them has no line.
class VixLine {
 public:
    /// Takes the VIX in unless it, the sessions and the settings are those of the last call. Tells whether it did; then
    /// the line must be updated from 0.
    bool read(const Bars& vix, bool changed, const SessionOpens& opens, int tf, double scale, std::int64_t smooth,
              SessionWalk& walk);
    void update(const Bars& bars, std::size_t from, std::vector<OvPoint>& out) const;

 private:
    void readSession(const Bars& vix, const SessionOpen& open, std::int64_t next, double scale, SessionWalk& walk);
    void smoothInto(std::int64_t width, std::int64_t smooth);

    std::vector<SessionOpen> opens_;
    std::vector<BarValue> values_;
    std::vector<BarValue> minutes_;           // of the session being read
    std::vector<double> forward_, backward_;  // its running sums
};

}  // namespace vmr::OverlayLines
