// The lines of the sessions as their definition reads, one look at the calendar for every bar.
#pragma once

#include <algorithm>
#include <map>
#include <ostream>
#include <string>
#include <utility>

#include "market/SRLevelsParser.h"
#include "support/SyntheticMarket.h"

namespace vmr {

inline void PrintTo(const OverlayLine& line, std::ostream* out) {
    *out << "{" << line.price << " from " << line.startTime << " to " << line.endTime.value_or(-1) << " " << line.label
         << (line.dashed ? " dashed}" : "}");
}

namespace test {

inline std::vector<OverlayLine> plainLines(const std::vector<Candle>& bars, const SRSessions& sessions, int hhmm) {
    std::map<std::int64_t, std::vector<Candle>> days;
    for (const Candle& bar : bars) days[plainSessionOpen(bar.time, hhmm)].push_back(bar);
    std::vector<OverlayLine> lines;
    for (auto day = days.begin(); day != days.end(); ++day) {
        const auto& own = day->second;
        const bool isLast = std::next(day) == days.end();
        const auto end = isLast ? std::nullopt : std::optional(std::next(day)->second.front().time);
        lines.push_back({own.front().open, own.front().time, end, "Open", true});
        if (day != days.begin()) {
            const auto& before = std::prev(day)->second;
            const auto high = std::max_element(before.begin(), before.end(),
                                               [](const Candle& x, const Candle& y) { return x.high < y.high; });
            const auto low = std::min_element(before.begin(), before.end(),
                                              [](const Candle& x, const Candle& y) { return x.low < y.low; });
            lines.push_back({before.back().close, before.back().time, end, "Prev Close", true});
            lines.push_back({high->high, high->time, end, "Prev High", false});
            lines.push_back({low->low, low->time, end, "Prev Low", false});
        }
        if (!sessions.contains(day->first)) continue;
        const auto levelEnd = isLast ? std::nullopt : std::optional(own.back().time);
        for (const auto& [side, levels] :
             {std::pair("R", sessions.at(day->first).up), {"S", sessions.at(day->first).dn}})
            for (const SRLevel& level : levels)
                lines.push_back({level.price, std::max(level.triggerTime, own.front().time), levelEnd,
                                 level.label.empty() ? side + std::to_string(level.i) : level.label, true});
    }
    return lines;
}

}  // namespace test
}  // namespace vmr
