#include "model/ChartChannels.h"

#include "market/Roots.h"
#include "model/Catalog.h"
#include "model/HfScales.h"

namespace vmr {

namespace {
constexpr std::string_view stockPrefix = "stocks:";
constexpr std::string_view derivedPrefix = "derived:";

void addSource(ChartChannels& out, const std::string& root, const HfScales& scales) {
    const std::string source = out.source();
    out.bubblesChannel = "derived:gexBubbles:" + source;
    out.trianglesChannel = "derived:hfTriangles:" + source;
    out.oscChannel = "derived:osc:" + source;
    out.hfHistoryChannel = "derived:hfHistory:" + source;
    out.hfScale = scales.find(root.empty() ? source : root).value_or(hfScaleFor(root, source));
    out.subscribedChans.insert(out.subscribedChans.end(), {out.levelsChannel, out.bubblesChannel, out.trianglesChannel,
                                                           out.oscChannel, out.hfHistoryChannel});
}

void addPair(ChartChannels& out, const std::string& symbol, const std::string& contract) {
    out.secondaryContract = contract;
    out.secondSymbol = symbol;
    out.secondaryChannel = "futures:" + contract;
    out.secondaryMinuteName = out.secondaryChannel + ":1m";
    out.secondaryTradesName = out.secondaryChannel + ":trades";
    out.subscribedChans.insert(out.subscribedChans.end(),
                               {out.secondaryChannel, out.secondaryMinuteName, out.secondaryTradesName});
}
}  // namespace

std::string ChartChannels::currentSymbol() const {
    return isStock() ? chartChannel.substr(stockPrefix.size()) : futuresRoot(chartChannel);
}

std::string_view ChartChannels::symbolView() const {
    return isStock() ? std::string_view(chartChannel).substr(stockPrefix.size()) : simRoot;
}

std::string ChartChannels::source() const {
    std::string out = levelsChannel;
    for (auto at = out.find(derivedPrefix); at != std::string::npos; at = out.find(derivedPrefix))
        out.erase(at, derivedPrefix.size());
    return out;
}

std::string vixBaseChannel(std::string_view vixMode) { return vixMode == "1d" ? "indices:I:VIX1D" : "indices:I:VIX"; }

std::string vixChannel(std::string_view vixMode) { return vixBaseChannel(vixMode) + ":1m"; }

ChartChannels chartChannels(const ChartWanted& wanted) {
    ChartChannels out;
    out.chartChannel = wanted.candles;
    out.levelsChannel = wanted.levels;
    out.hfScale = wanted.formerHfScale;
    out.minuteName = out.chartChannel + ":1m";
    out.tradesName = out.chartChannel + ":trades";
    out.quoteName = out.chartChannel + ":quote";
    out.vixBaseChannel = vixBaseChannel(wanted.vixMode);
    out.vixChannel = vixChannel(wanted.vixMode);
    const std::string root = futuresRoot(out.chartChannel);
    out.simRoot = root;
    out.oscSingle = out.isStock() || (!root.empty() && root != "NQ");
    out.oscPrimaryLabel = out.isStock() ? out.currentSymbol() : out.oscSingle ? root : "NQ";

    auto& list = out.subscribedChans;
    list = {out.chartChannel, out.minuteName, out.tradesName, "meta:contracts", "meta:instruments"};
    if (!root.empty()) list.push_back(out.quoteName);
    list.insert(list.end(), {out.vixBaseChannel, out.vixChannel});
    if (!out.levelsChannel.empty()) addSource(out, root, wanted.hfScales);
    if (const auto pair = wanted.catalog.pairFor(root))
        if (const auto contract = wanted.catalog.effectiveContract(*pair)) addPair(out, *pair, *contract);
    if (const auto index = builtInIndexSource(root);
        index && wanted.gexSource == "BOTH" && !out.levelsChannel.empty()) {
        out.secondaryGexChannel = "derived:" + *index;
        list.push_back(out.secondaryGexChannel);
    }
    if (!root.empty()) {
        out.srChannel = "derived:srlevels:" + root;
        list.push_back(out.srChannel);
    }
    return out;
}

}  // namespace vmr
