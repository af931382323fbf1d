// Any JSON as the payload of a candle channel, merged into a series.
#include "FuzzEntry.h"
#include "market/Bars.h"
#include "market/CandleParser.h"

void vmr::fuzz::take(std::string_view text) {
    const auto json = Json::parse(text);
    if (!json) return;
    survives([&] {
        RepairTally tally(strict());
        const auto bars = CandleParser::parse(*json, tally);
        for (const Candle& bar : bars) require(bar.time != 0);
        const auto merged = CandleParser::merge({{60, 1, 1, 1, 1, 1}, {120, 2, 2, 2, 2, 2}}, bars, 100);
        require(merged.size() <= 100 && !merged.empty());
        for (std::size_t i = 1; i < merged.size(); ++i) require(merged[i - 1].time < merged[i].time);
        std::vector<Candle> display;
        for (const int tf : {1, 5, 1440}) {
            aggregate(merged, tf, display);
            require(!display.empty() && display.size() <= merged.size());
        }
    });
}
