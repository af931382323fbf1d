// Any JSON as the payload of a candle channel, merged into a series.
#include <algorithm>
#include <cmath>

#include "FuzzEntry.h"
#include "market/CandleParser.h"
#include "model/AppModel.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vmr;
    const auto json = Json::parse(fuzz::textOf(data, size));
    if (!json) return 0;
    fuzz::survives([&] {
        const auto bars = CandleParser::parse(*json);
        const auto merged = CandleParser::merge({{60, 1, 1, 1, 1, 1}, {120, 2, 2, 2, 2, 2}}, bars, 100);
        fuzz::require(merged.size() <= 100 && !merged.empty());
        for (std::size_t i = 1; i < merged.size(); ++i) fuzz::require(merged[i - 1].time < merged[i].time);
        for (const Candle& bar : bars) fuzz::require(bar.time != 0);
        std::vector<Candle> display;
        for (const int tf : {1, 5, 1440}) {
            aggregate(merged, tf, display);
            fuzz::require(!display.empty() && display.size() <= merged.size());
        }
    });
    return 0;
}
