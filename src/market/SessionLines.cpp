#include "market/SessionLines.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <tuple>

#include "market/SessionTime.h"

namespace vmr::SessionLines {

namespace {
constexpr std::int64_t calendarEnd =
    900'000'000'000;  // seconds; the year 30,000 or so, within the date library's range

// Session opens of moments that mostly lie in one New York day after another. Within a day the calendar's answer is one
// of two, before the open and from the open on, so the calendar is asked once a day.
class SessionOpens {
 public:
    explicit SessionOpens(int hhmm) : hhmm_(hhmm) {}

    std::int64_t at(std::int64_t t) {
        if (t <= -calendarEnd || t >= calendarEnd) return t;
        if (t < dayStart_ || t >= dayEnd_) enterDay(t);
        return t < late_ ? early_ : late_;
    }

 private:
    void enterDay(std::int64_t t) {
        constexpr std::int64_t intoNextDay = 26 * 3600;  // a day has 23 to 25 hours
        dayStart_ = SessionTime::calendarSessionOpenSec(t, 0);
        dayEnd_ = SessionTime::calendarSessionOpenSec(dayStart_ + intoNextDay, 0);
        early_ = SessionTime::calendarSessionOpenSec(dayStart_, hhmm_);
        late_ = SessionTime::calendarSessionOpenSec(dayEnd_ - 1, hhmm_);
    }

    int hhmm_;
    std::int64_t dayStart_ = 0, dayEnd_ = 0;
    std::int64_t early_ = 0, late_ = 0;  // the answers before the day's open and from it on; alike when it has none
};

struct DaySess {
    double open = 0;
    std::int64_t openTime = 0;
    double high = 0;
    std::int64_t highTime = 0;
    double low = 0;
    std::int64_t lowTime = 0;
    double close = 0;
    std::int64_t closeTime = 0;
};
using Days = std::map<std::int64_t, DaySess>;  // by session open

void take(DaySess& day, const Candle& bar) {
    if (bar.high > day.high) {
        day.high = bar.high;
        day.highTime = bar.time;
    }
    if (bar.low < day.low) {
        day.low = bar.low;
        day.lowTime = bar.time;
    }
    day.close = bar.close;
    day.closeTime = bar.time;
}

Days grouped(const std::vector<Candle>& candles, int hhmm) {
    Days days;
    SessionOpens opens(hhmm);
    auto current = days.end();
    for (const Candle& bar : candles) {
        const std::int64_t key = opens.at(bar.time);
        if (current == days.end() || current->first != key) {
            bool isNew = false;
            std::tie(current, isNew) = days.try_emplace(
                key, DaySess{bar.open, bar.time, bar.high, bar.time, bar.low, bar.time, bar.close, bar.time});
            if (isNew) continue;
        }
        take(current->second, bar);
    }
    return days;
}

void appendLevels(const std::vector<SRLevel>& levels, char side, const DaySess& day, std::optional<std::int64_t> end,
                  std::vector<OverlayLine>& out) {
    for (const SRLevel& level : levels)
        out.push_back({level.price, std::max(level.triggerTime, day.openTime), end,
                       level.label.empty() ? side + std::to_string(level.i) : level.label, true});
}
}  // namespace

std::int64_t sessionOpenSec(std::int64_t t, int hhmm) {
    if (t <= -calendarEnd || t >= calendarEnd) return t;
    return SessionTime::calendarSessionOpenSec(t, hhmm);
}

std::vector<OverlayLine> build(const std::vector<Candle>& candles, const SRSessions& srSessions, int sessionHHMM) {
    std::vector<OverlayLine> out;
    if (candles.size() < 2) return out;
    const Days days = grouped(candles, sessionHHMM);
    const DaySess* before = nullptr;
    for (auto it = days.begin(); it != days.end(); ++it) {
        const DaySess& day = it->second;
        const auto next = std::next(it);
        std::optional<std::int64_t> lineEnd, levelEnd;
        if (next != days.end()) {  // the lines of the last session have no end yet
            lineEnd = next->second.openTime;
            levelEnd = day.closeTime;
        }
        out.push_back({day.open, day.openTime, lineEnd, "Open", true});
        if (before) {
            out.push_back({before->close, before->closeTime, lineEnd, "Prev Close", true});
            out.push_back({before->high, before->highTime, lineEnd, "Prev High", false});
            out.push_back({before->low, before->lowTime, lineEnd, "Prev Low", false});
        }
        if (const auto levels = srSessions.find(it->first); levels != srSessions.end()) {
            appendLevels(levels->second.up, 'R', day, levelEnd, out);
            appendLevels(levels->second.dn, 'S', day, levelEnd, out);
        }
        before = &day;
    }
    return out;
}

}  // namespace vmr::SessionLines
