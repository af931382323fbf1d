// The one table of futures roots and stocks that the program knows before a server has said anything, and rules over
// their names.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vmr {

/// A row of the built-in futures table.
struct BuiltInFuture {
    std::string_view sym;
    std::string_view contract;
    std::string_view etf;    ///< ETF options source
    std::string_view index;  ///< index options source; empty for none
    std::string_view pair;   ///< the instrument that is drawn beside it; empty for none
    int ticksPerPoint;       ///< 4 is a tick of 0.25
    double tickValue;        ///< dollars a tick
    /// The smallest price step, in points.
    constexpr double tick() const { return 1.0 / ticksPerPoint; }
};

inline constexpr std::array<BuiltInFuture, 6> builtInInstruments{{{"NQ", "NQM6", "QQQ", "NDX", "ES", 4, 5},
                                                                  {"ES", "ESM6", "SPY", "SPX", "NQ", 4, 12.5},
                                                                  {"RTY", "RTYM6", "IWM", "RUT", "", 10, 5},
                                                                  {"YM", "YMM6", "DIA", "", "", 1, 5},
                                                                  {"GC", "GCQ6", "GLD", "", "", 10, 10},
                                                                  {"CL", "CLN6", "USO", "", "", 100, 10}}};

inline constexpr std::array<std::string_view, 7> builtInStocks{"AAPL", "NVDA", "MSFT", "GOOGL", "AMZN", "META", "TSLA"};

/// The built-in row of a futures symbol, or null.
const BuiltInFuture* builtInFuture(std::string_view sym);

/// Whether `sym` is one of the seven built-in stocks.
bool isBuiltInStock(std::string_view sym);

/// The root of a futures channel such as "futures:NQM6", one of the six known ones; empty for anything else. A month
/// code and one to four digits at the end are cut off. No catalog extends the six.
std::string futuresRoot(std::string_view channel);

/// The instrument that is drawn beside `sym` and its built-in contract: ES for NQ, NQ for ES, nothing otherwise.
struct PairedInstrument {
    std::string sym;
    std::string contract;
    bool operator==(const PairedInstrument&) const = default;
};
std::optional<PairedInstrument> pairedInstrument(std::string_view sym);

/// The index options source of a root by the built-in table (NQ, ES, RTY), or nothing.
std::optional<std::string> builtInIndexSource(std::string_view root);

/// Scale of HF flows to the price axis for a root and an options source; pure.
double hfScaleFor(std::string_view root, std::string_view source);

}  // namespace vmr
