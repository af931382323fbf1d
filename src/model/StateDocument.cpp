#include "model/StateDocument.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace vmr {

using json = nlohmann::ordered_json;

namespace {
json number(double value) { return std::isfinite(value) ? json(value) : json(nullptr); }

json text(const std::optional<std::string>& value) { return value ? json(*value) : json(nullptr); }

json bars(const std::vector<Candle>& series) {
    json out = json::array();
    for (const Candle& bar : series)
        out.push_back({bar.time, number(bar.open), number(bar.high), number(bar.low), number(bar.close), number(bar.volume)});
    return out;
}

void addSession(json& out, const AppModel& pane) {
    out["status"] = pane.status.get();
    out["connected"] = pane.connected.get();
    out["isSignedIn"] = pane.isSignedIn.get();
    out["signingIn"] = pane.signingIn.get();
    out["userEmail"] = pane.userEmail.get();
    out["authError"] = text(pane.authError);
    out["connLimited"] = pane.connLimited.get();
    out["marketClosedNotice"] = pane.marketClosedNotice.get();
    out["toast"] = nullptr;
    if (const auto& toast = pane.toast.get()) out["toast"] = {{"title", toast->title}, {"detail", text(toast->detail)}};
}

void addChart(json& out, const AppModel& pane) {
    out["chartChannel"] = pane.chartChannel.get();
    out["levelsChannel"] = pane.levelsChannel.get();
    out["currentSymbol"] = pane.currentSymbol();
    out["sessionHHMM"] = pane.sessionHHMM();
    out["simRoot"] = pane.simRoot;
    out["timeframe"] = pane.timeframe.get();
    out["priceRising"] = pane.priceRising.get();
    out["chartVersion"] = pane.chartVersion;
    out["subscribedChans"] = pane.subscribedChans;
    out["vixBaseChannel"] = pane.vixBaseChannel();
    out["vixChannel"] = pane.vixChannel();
    out["srChannel"] = pane.srChannel;
    out["bubblesChannel"] = pane.bubblesChannel;
    out["trianglesChannel"] = pane.trianglesChannel;
    out["oscChannel"] = pane.oscChannel;
    out["hfHistoryChannel"] = pane.hfHistoryChannel;
    out["secondSymbol"] = pane.secondSymbol;
    out["secondaryContract"] = pane.secondaryContract;
    out["secondaryChannel"] = pane.secondaryChannel;
    out["secondaryGexChannel"] = pane.secondaryGexChannel;
    out["oscPrimaryLabel"] = pane.oscPrimaryLabel.get();
    out["oscSingle"] = pane.oscSingle.get();
    out["hfScale"] = number(pane.hfScale);
}

void addCatalog(json& out, const AppModel& pane) {
    out["catFutures"] = json::array();
    for (const CatalogFut& fut : pane.catFutures.get())
        out["catFutures"].push_back({{"sym", fut.sym},
                                     {"sources", fut.sources},
                                     {"defaultSource", fut.defaultSource},
                                     {"pair", text(fut.pair)},
                                     {"tick", number(fut.tick)},
                                     {"tickValue", number(fut.tickValue)},
                                     {"hfScale", number(fut.hfScale)}});
    out["catStocks"] = pane.catStocks.get();
    out["contractOverrides"] = pane.contractOverrides.get();
}

json paneDocument(const AppModel& pane) {
    json out;
    addSession(out, pane);
    addChart(out, pane);
    addCatalog(out, pane);
    out["candles"] = bars(pane.candles);
    out["displayCandles"] = bars(pane.displayCandles);
    out["secondaryCandles"] = bars(pane.secondaryCandles);
    out["vixCandles"] = bars(pane.vixCandles);
    out["derivedFields"] = json::array();
    for (const auto& [key, value] : pane.derivedFields) out["derivedFields"].push_back(key);
    out["secondaryGexFields"] = json::array();
    for (const auto& [key, value] : pane.secondaryGexFields) out["secondaryGexFields"].push_back(key);
    out["config"] = json::parse(pane.config->toJson());
    out["logLines"] = json::array();
    for (const LogLine& line : pane.logLines) out["logLines"].push_back(line.text);
    return out;
}
}  // namespace

std::string stateDocument(const Clock& clock, const std::vector<const AppModel*>& panes) {
    json out;
    out["clock"] = clock.now();
    out["panes"] = json::array();
    for (const AppModel* pane : panes) out["panes"].push_back(paneDocument(*pane));
    return out.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
}

}  // namespace vmr
