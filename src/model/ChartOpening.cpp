// Which channels a chart needs, and what a change of chart clears.
#include <algorithm>
#include <limits>

#include "model/AppModel.h"
#include "store/ConfigIO.h"

namespace vmr {

namespace {
constexpr std::string_view stockPrefix = "stocks:";
constexpr std::string_view derivedPrefix = "derived:";

std::string trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n\v\f";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(blanks) - first + 1));
}

std::string sourceOf(std::string levels) {
    for (auto at = levels.find(derivedPrefix); at != std::string::npos; at = levels.find(derivedPrefix))
        levels.erase(at, derivedPrefix.size());
    return levels;
}
}  // namespace

bool AppModel::isStock() const { return chartChannel->starts_with(stockPrefix); }

std::string AppModel::currentSymbol() const {
    return isStock() ? chartChannel->substr(stockPrefix.size()) : futuresRoot(chartChannel.get());
}

int AppModel::sessionHHMM() const { return isStock() ? 930 : static_cast<int>(config->sessionStart); }

std::string AppModel::vixBaseChannel() const { return config->vixMode == "1d" ? "indices:I:VIX1D" : "indices:I:VIX"; }

std::string AppModel::vixChannel() const { return vixBaseChannel() + ":1m"; }

void AppModel::reloadChart() {
    if (!chartChannel->empty()) openChart(std::string(chartChannel.get()), std::string(levelsChannel.get()));
}

void AppModel::openChart(std::string_view candlesArgument, std::string_view levelsArgument) {
    const std::string bars = trimmed(candlesArgument);
    const std::string derived = trimmed(levelsArgument);
    if (bars.empty()) return;
    if (!subscribedChans.empty()) relay_->unsubscribe(subscribedChans);
    chartChannel = bars;
    levelsChannel = derived;
    startBarRollTimer();
    clearChartData();

    const std::string root = futuresRoot(bars);
    const bool single = isStock() || (!root.empty() && root != "NQ");
    oscPrimaryLabel = isStock() ? currentSymbol() : single ? root : "NQ";
    oscSingle = single;

    const std::vector<std::string> list = buildChannelList(bars, derived);
    rememberChannelNames();
    relay_->subscribe(list);
    subscribedChans = list;
    tellPresence();
    std::string line = "→ chart: " + bars;
    if (!derived.empty()) line += " + " + derived;
    if (!srChannel.empty()) line += " + " + srChannel;
    append(line);
    autoApplyPreferredTemplate();
}

void AppModel::clearChartData() {
    candles.clear();
    displayCandles.edit([](auto& bars) { bars.clear(); });
    secondaryCandles.clear();
    levels.edit([](auto& list) { list.clear(); });
    derivedFields.clear();
    secondaryGexFields.clear();
    secStrikes.edit([](auto& list) { list.clear(); });
    strikesSource_ = Json();
    readRows_.reset();
    srSessions.clear();
    srLines.edit([](auto& list) { list.clear(); });
    srLinesBars_ = {SIZE_MAX, 0};
    bubbleByMin.clear();
    triByMin.clear();
    bubblePts.edit([](auto& list) { list.clear(); });
    trianglePts.edit([](auto& list) { list.clear(); });
    oscByMin.clear();
    oscLines = OscLines();
    hfByMin.clear();
    ++sideRevision_;
    overlays_.clear();
    overlaysChanged();
    pushOverlayGeometryToGPU();
    hfp.samples.clear();
    hfp.changed();
    gex3D = std::nullopt;
    lastGex3DBuild_ = -std::numeric_limits<double>::infinity();
    lastSeenClose_ = std::numeric_limits<double>::quiet_NaN();
    for (std::string* name : {&srChannel, &bubblesChannel, &trianglesChannel, &oscChannel, &hfHistoryChannel,
                              &secondaryChannel, &secondaryContract, &secondSymbol, &secondaryGexChannel})
        name->clear();
}

std::vector<std::string> AppModel::buildChannelList(const std::string& bars, const std::string& derived) {
    std::vector<std::string> list{bars, bars + ":1m", bars + ":trades", "meta:contracts", "meta:instruments"};
    const std::string root = futuresRoot(bars);
    simRoot = root;
    if (!simRoot.empty()) list.push_back(bars + ":quote");
    list.push_back(vixBaseChannel());
    list.push_back(vixChannel());
    if (!derived.empty()) {
        list.push_back(derived);
        const std::string source = sourceOf(derived);
        bubblesChannel = "derived:gexBubbles:" + source;
        trianglesChannel = "derived:hfTriangles:" + source;
        oscChannel = "derived:osc:" + source;
        hfHistoryChannel = "derived:hfHistory:" + source;
        const auto& overrides = hfScaleOverrides();
        const auto found = overrides.find(root.empty() ? source : root);
        hfScale = found != overrides.end() ? found->second : hfScaleFor(root, source);
        list.insert(list.end(), {bubblesChannel, trianglesChannel, oscChannel, hfHistoryChannel});
    }
    if (const auto pair = pairFor(root)) {
        if (const auto contract = effectiveContract(*pair)) {
            secondaryContract = *contract;
            secondSymbol = *pair;
            secondaryChannel = "futures:" + *contract;
            list.insert(list.end(), {secondaryChannel, secondaryChannel + ":1m", secondaryChannel + ":trades"});
        }
    }
    if (const auto index = builtInIndexSource(root); index && config->gexSource == "BOTH" && !derived.empty()) {
        secondaryGexChannel = "derived:" + *index;
        list.push_back(secondaryGexChannel);
    }
    if (!root.empty()) {
        srChannel = "derived:srlevels:" + root;
        list.push_back(srChannel);
    }
    return list;
}

void AppModel::rememberChannelNames() {
    tradesName_ = chartChannel.get() + ":trades";
    quoteName_ = chartChannel.get() + ":quote";
    minuteName_ = chartChannel.get() + ":1m";
    secondaryTradesName_ = secondaryChannel.empty() ? "" : secondaryChannel + ":trades";
    secondaryMinuteName_ = secondaryChannel.empty() ? "" : secondaryChannel + ":1m";
}

void AppModel::switchSymbol(const std::string& sym) {
    at_.preferences.set(ConfigIO::lastSymbolKey, sym);
    const auto stocks = stockList();
    if (std::find(stocks.begin(), stocks.end(), sym) != stocks.end())
        return openChart("stocks:" + sym, "derived:" + sym);
    const auto contract = effectiveContract(sym);
    if (!contract) return;
    std::optional<std::string> source;
    if (config->gexSource == "INDEX") source = indexSourceFor(sym);
    if (!source) source = defaultSourceFor(sym);
    openChart("futures:" + *contract, "derived:" + source.value_or(sym));
}

}  // namespace vmr
