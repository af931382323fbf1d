#include "model/PlainOverlays.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace vmr::test {

namespace {
std::int64_t openOf(std::int64_t t, int hhmm) {
    const std::int64_t local = newYorkTime(t).time_since_epoch().count();
    const std::int64_t start = hhmm / 100 * 3600 + hhmm % 100 * 60;
    std::int64_t s = local - newYorkSecondsOfDay(t) + start;
    if (local < s) s -= 86400;
    return s - (local - t);
}

std::map<std::int64_t, double> positions(const Bars& bars) {
    std::map<std::int64_t, double> byTime;
    for (std::size_t i = 0; i < bars.size(); ++i) byTime[bars[i].time] = static_cast<double>(i);
    return byTime;
}

// Each session's open, with the offset from UTC that holds at a bar for that bar, and its first bar's open.
std::map<std::int64_t, double> plainOpens(const Bars& bars, int hhmm) {
    std::map<std::int64_t, double> byOpen;
    for (const Candle& bar : bars) byOpen.try_emplace(openOf(bar.time, hhmm), bar.open);
    return byOpen;
}

std::vector<OvPoint> plainVwap(const Bars& bars, int hhmm) {
    const std::int64_t open = openOf(bars.back().time, hhmm);
    std::vector<OvPoint> points;
    double priceVolume = 0, volume = 0;
    for (std::size_t i = 0; i < bars.size(); ++i) {
        if (bars[i].time < open) continue;
        if (bars[i].volume > 0) {
            priceVolume += bars[i].volume * (bars[i].high + bars[i].low + bars[i].close) / 3;
            volume += bars[i].volume;
        }
        if (volume > 0) points.push_back({static_cast<double>(i), priceVolume / volume});
    }
    return points;
}

// The VWAP since 09:30, shown while stocks trade.
std::vector<OvPoint> plainNyVwap(const Bars& bars, int hhmm) {
    if (hhmm == 930 || !stocksOpen(bars.back().time)) return {};
    return plainVwap(bars, 930);
}

std::vector<OvPoint> plainEma(const Bars& bars, int period) {
    const double a = 2.0 / (period + 1);
    double e = bars[0].close;
    std::vector<OvPoint> points{{0, e}};
    for (std::size_t i = 1; i < bars.size(); ++i) {
        e = a * bars[i].close + (1 - a) * e;
        points.push_back({static_cast<double>(i), e});
    }
    return points;
}

std::vector<OvCandle> plainSecond(const Bars& primary, const Bars& sec, int hhmm) {
    const std::int64_t open = openOf(primary.back().time, hhmm);
    const auto since = [open](const Candle& bar) { return bar.time >= open; };
    const auto place = positions(primary);
    const Candle& reference = *std::find_if(primary.begin(), primary.end(), since);
    auto own = std::find_if(sec.begin(), sec.end(), [&](const Candle& bar) { return bar.time == reference.time; });
    if (own == sec.end()) own = std::find_if(sec.begin(), sec.end(), since);
    if (own == sec.end()) own = sec.begin();
    const double ratio = reference.open / own->open;
    std::vector<OvCandle> points;
    for (const Candle& bar : sec)
        if (bar.time >= open && place.contains(bar.time))
            points.push_back({place.at(bar.time), bar.open * ratio, bar.high * ratio, bar.low * ratio,
                              bar.close * ratio, bar.close});
    return points;
}

std::vector<OvPoint> plainVix(const Bars& bars, const Bars& vix, int tf, int hhmm, double scale, int smooth) {
    std::map<std::int64_t, std::pair<double, double>> value;  // where it is laid, and the close
    const auto sessionOpen = plainOpens(bars, hhmm);
    for (auto session = sessionOpen.begin(); session != sessionOpen.end(); ++session) {
        const auto [s, openP] = *session;
        const auto next = std::next(session) == sessionOpen.end() ? std::numeric_limits<std::int64_t>::max()
                                                                  : std::next(session)->first;
        double anchor = 0;
        for (const Candle& bar : vix)
            if (bar.time >= s + 33300 && bar.time < next) {
                anchor = bar.open != 0 ? bar.open : bar.close;
                break;
            }
        if (anchor == 0 || !(openP > 0)) continue;
        struct Minute {
            std::int64_t time;
            double laid, close;
        };
        std::vector<Minute> pts;
        for (const Candle& bar : vix) {
            const auto ofDay = newYorkSecondsOfDay(bar.time);
            if (bar.time >= s && bar.time < next && ofDay >= 3 * 3600 + 15 * 60 && ofDay < 16 * 3600 + 16 * 60)
                pts.push_back({bar.time, openP * (scale * (bar.close - anchor) / anchor + 1), bar.close});
        }
        if (pts.size() < 2) continue;
        const int w = smooth < 1 ? 1 : std::min(smooth, static_cast<int>(pts.size()));
        for (int i = 0; i < static_cast<int>(pts.size()); ++i) {
            double sum = 0;
            const int first = std::max(i - w + 1, 0);
            for (int j = first; j <= i; ++j) sum += pts[static_cast<std::size_t>(j)].laid;
            const Minute& minute = pts[static_cast<std::size_t>(i)];
            value[minute.time / (tf * 60) * (tf * 60)] = {sum / (i - first + 1), minute.close};
        }
    }
    const auto place = positions(bars);
    std::vector<OvPoint> points;
    for (const auto& [bar, v] : value)
        if (place.contains(bar)) points.push_back({place.at(bar), v.first, v.second});
    return points;
}

std::array<double, 6> numbers(const OvPoint& p) { return {p.idx, p.v, p.real}; }
std::array<double, 6> numbers(const OvColorPoint& p) { return {p.idx, p.v, p.positive ? 1.0 : 0, p.base, p.hf}; }
std::array<double, 6> numbers(const OvCandle& p) { return {p.idx, p.o, p.h, p.l, p.c, p.realC}; }

// Sums made in another order differ by some 1e-13 of the value; a tick more or less in one bar of a session's VWAP, the
// least that an error makes, is above 1e-9.
template <class Point>
void expectNear(const std::vector<Point>& got, const std::vector<Point>& expected, const std::string& what) {
    ASSERT_EQ(got.size(), expected.size()) << what;
    for (std::size_t i = 0; i < got.size(); ++i)
        for (std::size_t k = 0; k < 6; ++k) {
            const double value = numbers(expected[i])[k];
            ASSERT_NEAR(numbers(got[i])[k], value, 1e-10 * std::abs(value)) << what << " at " << i << ", number " << k;
        }
}

}  // namespace

std::vector<OvColorPoint> plainHf(const Bars& bars, const HfByMin& flow, int tf, int hhmm, double fallback,
                                  const SRSessions& levels) {
    std::map<std::int64_t, double> value;
    for (const auto& [t, minute] : flow)
        if (newYorkSecondsOfDay(t) < 16 * 3600 + 16 * 60) value[t / (tf * 60) * (tf * 60)] = minute.c ? *minute.c : 0;
    const auto place = positions(bars);
    const auto sessionOpen = plainOpens(bars, hhmm);
    std::vector<OvColorPoint> points;
    for (const auto& [bar, hf] : value) {
        const std::int64_t open = openOf(bar, hhmm);
        if (!place.contains(bar) || !sessionOpen.contains(open)) continue;
        const double base = sessionOpen.at(open);
        double up = fallback, down = fallback;
        if (levels.contains(open)) {
            const SRSession& session = levels.at(open);
            const double from = session.openPrice == 0 ? base : session.openPrice;
            std::map<std::int64_t, double> ups, downs;
            for (const SRLevel& level : session.up) ups.try_emplace(level.i, level.price);
            for (const SRLevel& level : session.dn) downs.try_emplace(level.i, level.price);
            if (!ups.empty() && from < ups.begin()->second) up = (ups.begin()->second - from) / 1e8;
            if (!downs.empty() && downs.begin()->second < from) down = (from - downs.begin()->second) / 1e8;
        }
        const double v = base + hf * (hf < 0 ? down : up);
        if (std::isfinite(v)) points.push_back({place.at(bar), v, hf >= 0, base, hf});
    }
    return points;
}

void expectPlain(const OverlaySet& got, const OverlayInput& in, const std::string& what,
                 std::map<std::string, std::size_t>& compared) {
    const OverlaySettings& on = in.settings;
    const int tf = on.timeframe, hhmm = on.sessionHHMM, smooth = static_cast<int>(on.vixSmooth);
    const auto expect = [&](const std::string& series, const auto& points, bool shown, auto expected) {
        compared[series] += points.size();
        expectNear(points, shown ? expected : decltype(expected)(), what + " " + series);
    };
    expect("VWAP", got.vwapMain, on.vwapEnabled, plainVwap(in.bars, hhmm));
    expect("New York VWAP", got.vwapNY, on.vwapNyEnabled, plainNyVwap(in.bars, hhmm));
    expect("EMA 9", got.ema1, on.ema1Enabled, plainEma(in.bars, 9));
    expect("EMA 200", got.ema2, true, plainEma(in.bars, 200));
    expect("second", got.secondCandles, true, plainSecond(in.bars, plainAggregate(in.secondaryRaw, tf), hhmm));
    expect("HF", got.hfLine, on.hfEnabled, plainHf(in.bars, in.hfByMin, tf, hhmm, on.hfFallbackScale, in.srSessions));
    expect("VIX", got.vixLine, on.vixEnabled, plainVix(in.bars, in.vix, tf, hhmm, on.vixScale, smooth));
}

}  // namespace vmr::test
