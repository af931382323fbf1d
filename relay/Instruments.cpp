#include "relay/Instruments.h"

#include <array>

#include "market/Roots.h"

namespace vmr::relay {

namespace {
constexpr auto futures = Family::futures;
constexpr auto stocks = Family::stocks;
constexpr auto indices = Family::indices;

// The price step is the client's own: one table of the roots.
constexpr int ticksOf(std::string_view root) {
    for (const BuiltInFuture& row : builtInInstruments)
        if (row.sym == root) return row.ticksPerPoint;
    return 0;
}

constexpr std::array table{
    Instrument{"NQ", futures, ticksOf("NQ"), 24800, 1.25, 0.0045, 260, 1500, 1},
    Instrument{"ES", futures, ticksOf("ES"), 6800, 1.0, 0.0015, 300, 3500, 1},
    Instrument{"RTY", futures, ticksOf("RTY"), 2480, 1.15, 0.006, 90, 400, 1},
    Instrument{"YM", futures, ticksOf("YM"), 47500, 0.85, 0.003, 90, 300, 2},
    Instrument{"GC", futures, ticksOf("GC"), 4100, 0.0, 0.01, 160, 500, 1},
    Instrument{"CL", futures, ticksOf("CL"), 62, 0.2, 0.019, 160, 700, 1},
    Instrument{"AAPL", stocks, 100, 265, 1.1, 0.011, 120, 110000, 1},
    Instrument{"NVDA", stocks, 100, 185, 1.7, 0.016, 180, 400000, 1},
    Instrument{"MSFT", stocks, 100, 505, 1.0, 0.009, 90, 50000, 3},
    Instrument{"GOOGL", stocks, 100, 280, 1.1, 0.012, 80, 60000, 2},
    Instrument{"AMZN", stocks, 100, 235, 1.2, 0.012, 90, 90000, 1},
    Instrument{"META", stocks, 100, 640, 1.2, 0.014, 80, 30000, 5},
    Instrument{"TSLA", stocks, 100, 420, 1.6, 0.024, 160, 200000, 3},
    Instrument{"I:VIX", indices, 100, 17, -5.5, 0.02, 4, 0, 1},
    Instrument{"I:VIX1D", indices, 100, 13, -7.0, 0.05, 4, 0, 1},
};
}  // namespace

std::span<const Instrument> instruments() { return table; }

const Instrument* findInstrument(Family family, std::string_view symbol) {
    for (const Instrument& one : table) {
        if (one.family == family && one.symbol == symbol) return &one;
    }
    return nullptr;
}

const Instrument* findTradable(std::string_view symbol) {
    const Instrument* found = findInstrument(futures, symbol);
    return found ? found : findInstrument(stocks, symbol);
}

}  // namespace vmr::relay
