// Which channels a chart needs, and what else follows from the pair that it is opened with.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vmr {

class Catalog;
class HfScales;

/// All names of one chart. An empty name: the chart has no such channel.
struct ChartChannels {
    std::string chartChannel;                  ///< "futures:NQM6" or "stocks:AAPL"; empty before the first chart
    std::string levelsChannel;                 ///< "derived:QQQ"
    std::vector<std::string> subscribedChans;  ///< all of them, in the order of their subscription
    std::string simRoot;                       ///< futures root of the chart, the simulator's symbol; empty for stocks
    std::string srChannel, bubblesChannel, trianglesChannel, oscChannel, hfHistoryChannel;
    std::string secondaryChannel, secondaryContract, secondSymbol, secondaryGexChannel;
    std::string vixBaseChannel, vixChannel;
    std::string oscPrimaryLabel = "NQ";
    bool oscSingle = false;
    double hfScale = 0.0000002;  ///< scale of HF flows to the price axis for this pane's source
    // parts of the above that every message is compared with
    std::string tradesName, quoteName, minuteName, secondaryTradesName, secondaryMinuteName;

    bool isOpen() const { return !chartChannel.empty(); }
    bool isStock() const { return chartChannel.starts_with("stocks:"); }
    /// A stock's symbol, else the futures root; empty for neither.
    std::string currentSymbol() const;
    /// The same without a copy.
    std::string_view symbolView() const;
    /// The options source, such as "QQQ"; empty for none.
    std::string source() const;
    bool operator==(const ChartChannels&) const = default;
};

/// What the channels of a chart follow from.
struct ChartWanted {
    std::string candles;  ///< the channel of its bars; not empty
    std::string levels;   ///< of its options source; empty for none
    const Catalog& catalog;
    std::string_view gexSource;  ///< "ETF", "INDEX" or "BOTH"
    std::string_view vixMode;    ///< "30d" or "1d"
    const HfScales& hfScales;
    double formerHfScale;  ///< what a chart without a source keeps
};

/// Pure.
ChartChannels chartChannels(const ChartWanted& wanted);

/// The volatility index's channel for a mode.
std::string vixBaseChannel(std::string_view vixMode);
/// Its newest minutes.
std::string vixChannel(std::string_view vixMode);

}  // namespace vmr
