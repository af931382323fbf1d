#include "relay/OptionSources.h"

#include <array>
#include <cmath>

#include "relay/RandomStream.h"

namespace vmr::relay {

namespace {
constexpr std::array table{
    OptionSource{"QQQ", "NQ", 41.2, true, 0.08},    OptionSource{"NDX", "NQ", 1.004, true, 0.08},
    OptionSource{"SPY", "ES", 10.04, true, 0.08},   OptionSource{"SPX", "ES", 1.003, true, 0.08},
    OptionSource{"IWM", "RTY", 10.07, true, 0.10},  OptionSource{"RUT", "RTY", 1.003, true, 0.09},
    OptionSource{"DIA", "YM", 100.2, true, 0.08},   OptionSource{"GLD", "GC", 10.9, true, 0.09},
    OptionSource{"USO", "CL", 0.86, true, 0.14},    OptionSource{"AAPL", "AAPL", 1, false, 0.15},
    OptionSource{"NVDA", "NVDA", 1, false, 0.20},   OptionSource{"MSFT", "MSFT", 1, false, 0.13},
    OptionSource{"GOOGL", "GOOGL", 1, false, 0.16}, OptionSource{"AMZN", "AMZN", 1, false, 0.16},
    OptionSource{"META", "META", 1, false, 0.16},   OptionSource{"TSLA", "TSLA", 1, false, 0.24},
};
}  // namespace

std::span<const OptionSource> optionSources() { return table; }

const OptionSource* findOptionSource(std::string_view name) {
    for (const OptionSource& one : table) {
        if (one.name == name) return &one;
    }
    return nullptr;
}

double dayRatio(const OptionSource& source, std::uint64_t seed, std::int64_t sessionStart) {
    if (source.name == source.symbol) return 1;
    RandomStream random(streamKey(seed, std::string_view("ratio"), sessionStart) ^ streamKey(0, source.name, 0));
    return std::round(source.ratio * (1 + 0.0003 * random.quickNormal()) * 1e4) / 1e4;
}

double dailyVolatility(const Instrument& instrument) {
    return std::hypot(instrument.beta * equityVolatility, instrument.ownVolatility);
}

}  // namespace vmr::relay
