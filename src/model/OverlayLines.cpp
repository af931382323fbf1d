#include "model/OverlayLines.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "market/Bars.h"

namespace vmr::OverlayLines {

namespace {
constexpr std::int64_t lateAfternoon = 58560;   // 16:16:00, when flow and VIX stop to count
constexpr std::int64_t earlyMorning = 11700;    // 03:15:00
constexpr std::int64_t vixAnchorDelay = 33300;  // 9 h 15 min after the session's open

std::int64_t secondsOf(int tf) { return static_cast<std::int64_t>(std::max(tf, 1)) * 60; }

// Sets the value of the bar that holds `t`, which is never before the bar set last.
void setBarValue(std::vector<BarValue>& values, std::int64_t t, std::int64_t width, double value, double real = 0) {
    const std::int64_t bar = t / width * width;
    if (values.empty() || values.back().time != bar) values.emplace_back();
    values.back() = {bar, value, real};
}

template <class Point>
void dropFrom(std::vector<Point>& points, std::size_t bar) {
    while (!points.empty() && points.back().idx >= static_cast<double>(bar)) points.pop_back();
}

// Calls `take(bar, value, real)` for each bar from `from` on that has a value.
template <class Take>
void forEachValue(const Bars& bars, std::size_t from, const std::vector<BarValue>& values, Take&& take) {
    if (from >= bars.size()) return;
    auto value = std::lower_bound(values.begin(), values.end(), bars[from].time,
                                  [](const BarValue& v, std::int64_t t) { return v.time < t; });
    for (std::size_t i = from; i < bars.size() && value != values.end(); ++i) {
        while (value != values.end() && value->time < bars[i].time) ++value;
        if (value != values.end() && value->time == bars[i].time) take(i, value->value, value->real);
    }
}
}  // namespace

std::size_t firstBarFrom(const Bars& bars, std::int64_t t) {
    const auto found =
        std::lower_bound(bars.begin(), bars.end(), t, [](const Candle& bar, std::int64_t at) { return bar.time < at; });
    return static_cast<std::size_t>(found - bars.begin());
}

bool showsNyVWAP(std::int64_t t, int sessionHHMM, SessionTime& session) {
    return sessionHHMM != 930 && session.marketOpen(t, true);
}

void VwapLine::update(const Bars& bars, std::size_t from, std::int64_t sessionOpen, std::vector<OvPoint>& out) {
    if (from == 0 || from < next_ || sessionOpen != sessionOpen_) {
        sessionOpen_ = sessionOpen;
        next_ = firstBarFrom(bars, sessionOpen);
        priceVolume_ = volume_ = 0;
        out.clear();
    }
    dropFrom(out, next_);
    double pv = priceVolume_, vol = volume_;
    for (std::size_t i = next_; i < bars.size(); ++i) {
        if (i + 1 == bars.size()) {  // the last bar may still change, so the sums are kept without it
            priceVolume_ = pv;
            volume_ = vol;
            next_ = i;
        }
        const Candle& bar = bars[i];
        if (bar.volume > 0) {
            pv += bar.volume * (bar.high + bar.low + bar.close) / 3;
            vol += bar.volume;
        }
        if (vol > 0) out.push_back({static_cast<double>(i), pv / vol});
    }
}

void updateEMA(const Bars& bars, std::size_t from, std::int64_t period, std::vector<OvPoint>& out) {
    if (bars.size() < 2 || period < 1) {
        out.clear();
        return;
    }
    const double share = 2 / (static_cast<double>(period) + 1);
    out.resize(bars.size());
    double average = from == 0 ? bars[0].close : out[from - 1].v;
    for (std::size_t i = from; i < bars.size(); ++i) {
        if (i > 0) average += share * (bars[i].close - average);
        out[i] = {static_cast<double>(i), average};
    }
}

void SecondLine::update(const Bars& primary, const Bars& secondaryRaw, int tf, SessionWalk& walk,
                        std::vector<OvCandle>& out) {
    out.clear();
    if (primary.empty() || secondaryRaw.empty()) return;
    if (tf >= 2) aggregate(secondaryRaw, tf, aggregated_);
    const Bars& sec = tf >= 2 ? aggregated_ : secondaryRaw;

    const std::int64_t open = walk.open(primary.back().time);
    std::size_t at = firstBarFrom(primary, open);
    const Candle& reference = primary[at < primary.size() ? at : 0];
    const std::size_t secFirst = firstBarFrom(sec, open);
    std::size_t secReference = firstBarFrom(sec, reference.time);
    if (secReference == sec.size() || sec[secReference].time != reference.time)
        secReference = secFirst < sec.size() ? secFirst : 0;
    const double secOpen = sec[secReference].open;
    const double ratio = reference.open / secOpen;
    if (!(secOpen > 0) || !(ratio > 0) || !std::isfinite(ratio)) return;

    for (std::size_t i = secFirst; i < sec.size(); ++i) {
        const Candle& bar = sec[i];
        while (at < primary.size() && primary[at].time < bar.time) ++at;
        if (at == primary.size()) break;
        if (primary[at].time != bar.time) continue;
        const OvCandle scaled{static_cast<double>(at), bar.open * ratio,  bar.high * ratio,
                              bar.low * ratio,         bar.close * ratio, bar.close};
        if (std::isfinite(scaled.o) && std::isfinite(scaled.h) && std::isfinite(scaled.l) && std::isfinite(scaled.c))
            out.push_back(scaled);
    }
}

void SessionOpens::update(const Bars& bars, std::size_t from, SessionWalk& walk) {
    std::erase_if(all_, [from](const SessionOpen& open) { return open.firstBar >= from; });
    std::int64_t current = 0;
    for (std::size_t i = from; i < bars.size(); ++i) {
        const std::int64_t time = walk.open(bars[i].time);
        if (i > from && time == current) continue;
        current = time;
        const auto place = std::lower_bound(all_.begin(), all_.end(), time,
                                            [](const SessionOpen& open, std::int64_t t) { return open.time < t; });
        if (place == all_.end() || place->time != time) all_.insert(place, {time, bars[i].open, i});
    }
}

const SessionOpen* SessionOpens::at(std::int64_t time) const {
    const auto found = std::lower_bound(all_.begin(), all_.end(), time,
                                        [](const SessionOpen& open, std::int64_t t) { return open.time < t; });
    return found != all_.end() && found->time == time ? &*found : nullptr;
}

void HfLine::read(const HfByMin& hfByMin, int tf, SessionWalk& walk) {
    values_.clear();
    const std::int64_t width = secondsOf(tf);
    for (const auto& [t, flow] : hfByMin)
        if (walk.secondsOfDay(t) < lateAfternoon) setBarValue(values_, t, width, flow.c.value_or(0));
}

namespace {
// Points per unit of flow, above and below the open.
struct HfScale {
    double up, down;
};

const SRLevel* firstLevel(const std::vector<SRLevel>& levels) {
    const auto found =
        std::min_element(levels.begin(), levels.end(), [](const SRLevel& a, const SRLevel& b) { return a.i < b.i; });
    return found == levels.end() ? nullptr : &*found;
}

HfScale hfScaleOf(const SRSessions& srSessions, const SessionOpen& open, double fallback) {
    constexpr double fullFlow = 1e8;
    HfScale scale{fallback, fallback};
    const auto found = srSessions.find(open.time);
    if (found == srSessions.end()) return scale;
    const SRSession& session = found->second;
    const double base = session.openPrice != 0 ? session.openPrice : open.price;
    const SRLevel* up = firstLevel(session.up);
    const SRLevel* down = firstLevel(session.dn);
    if (up && base < up->price) scale.up = (up->price - base) / fullFlow;
    if (down && down->price < base) scale.down = (base - down->price) / fullFlow;
    return scale;
}
}  // namespace

void HfLine::update(const Bars& bars, std::size_t from, const SessionOpens& opens, const SRSessions& srSessions,
                    double fallbackScale, SessionWalk& walk, std::vector<OvColorPoint>& out) const {
    dropFrom(out, from);
    const SessionOpen* open = nullptr;
    HfScale scale{fallbackScale, fallbackScale};
    forEachValue(bars, from, values_, [&](std::size_t i, double hf, double) {
        const std::int64_t time = walk.open(bars[i].time);
        if (!open || open->time != time) {
            open = opens.at(time);
            if (!open) return;
            scale = hfScaleOf(srSessions, *open, fallbackScale);
        }
        const double v = open->price + hf * (hf < 0 ? scale.down : scale.up);
        if (std::isfinite(v)) out.push_back({static_cast<double>(i), v, hf >= 0, open->price, hf});
    });
}

bool VixLine::read(const Bars& vix, bool changed, const SessionOpens& opens, int tf, double scale, std::int64_t smooth,
                   SessionWalk& walk) {
    if (!changed && opens_ == opens.all()) return false;
    opens_ = opens.all();
    values_.clear();
    for (std::size_t k = 0; k < opens_.size(); ++k) {
        const bool isLast = k + 1 == opens_.size();
        readSession(vix, opens_[k], isLast ? std::numeric_limits<std::int64_t>::max() : opens_[k + 1].time, scale,
                    walk);
        if (minutes_.size() >= 2) smoothInto(secondsOf(tf), smooth);
    }
    return true;
}

// The minutes of one session, valued by their distance from the session's anchor.
void VixLine::readSession(const Bars& vix, const SessionOpen& open, std::int64_t next, double scale,
                          SessionWalk& walk) {
    minutes_.clear();
    if (!(open.price > 0)) return;
    const std::size_t anchorAt = firstBarFrom(vix, open.time + vixAnchorDelay);
    if (anchorAt == vix.size() || vix[anchorAt].time >= next) return;
    const double anchor = vix[anchorAt].open != 0 ? vix[anchorAt].open : vix[anchorAt].close;
    if (anchor == 0) return;
    for (std::size_t i = firstBarFrom(vix, open.time); i < vix.size() && vix[i].time < next; ++i) {
        const std::int64_t ofDay = walk.secondsOfDay(vix[i].time);
        if (ofDay < earlyMorning || ofDay >= lateAfternoon) continue;
        minutes_.push_back({vix[i].time, open.price * (scale * (vix[i].close - anchor) / anchor + 1), vix[i].close});
    }
}

// Means over the last `smooth` minutes, at one addition each whatever their number: a window ends in one block of its
// own length and begins in the block before, so its sum is a running sum from each block.
void VixLine::smoothInto(std::int64_t width, std::int64_t smooth) {
    const std::size_t count = minutes_.size();
    const std::size_t w =
        smooth < 1 ? 1 : static_cast<std::size_t>(std::min<std::int64_t>(smooth, std::ssize(minutes_)));
    forward_.resize(count);
    backward_.resize(count);
    for (std::size_t i = 0; i < count; ++i)
        forward_[i] = i % w == 0 ? minutes_[i].value : forward_[i - 1] + minutes_[i].value;
    for (std::size_t i = count; i-- > 0;)
        backward_[i] = i + 1 == count || (i + 1) % w == 0 ? minutes_[i].value : backward_[i + 1] + minutes_[i].value;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t first = i < w ? 0 : i - w + 1;
        const double sum = first % w == 0 ? forward_[i] : backward_[first] + forward_[i];
        setBarValue(values_, minutes_[i].time, width, sum / static_cast<double>(i - first + 1), minutes_[i].real);
    }
}

void VixLine::update(const Bars& bars, std::size_t from, std::vector<OvPoint>& out) const {
    dropFrom(out, from);
    forEachValue(bars, from, values_, [&out](std::size_t i, double v, double close) {
        out.push_back({static_cast<double>(i), v, close});
    });
}

}  // namespace vmr::OverlayLines
