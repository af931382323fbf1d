#include "model/StateDocument.h"

#include "model/StateRecords.h"

namespace vmr {

namespace {
using namespace stateRecords;

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
    out["viewport"] = pane.viewport ? record(*pane.viewport) : json(nullptr);
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

void addDerived(json& out, const AppModel& pane) {
    out["symbolSource"] = pane.symbolSource();
    out["selectedExp"] = text(pane.selectedExp);
    out["futureExps"] = pane.futureExps.get();
    out["levels"] = list(pane.levels.get());
    out["strikes"] = list(pane.strikes.get());
    out["etfRatio"] = number(pane.etfRatio.get());
    out["secStrikes"] = list(pane.secStrikes.get());
    out["secEtfRatio"] = number(pane.secEtfRatio.get());
    out["gammaFlipStrike"] = number(pane.gammaFlipStrike.get());
    out["hud"] = record(pane.hud.get());
    out["derivedFields"] = keys(pane.derivedFields);
    out["secondaryGexFields"] = keys(pane.secondaryGexFields);
    out["bubblePts"] = list(pane.bubblePts.get());
    out["trianglePts"] = list(pane.trianglePts.get());
    out["hfByMin"] = pane.hfByMin.size();
    out["oscLines"] = record(pane.oscLines.get());
    out["srSessions"] = json::array();
    for (const auto& [open, session] : pane.srSessions) out["srSessions"].push_back(record(session));
    out["srLines"] = list(pane.srLines.get());
    out["hfp"] = json::array();
    for (const HfpSample& sample : pane.hfp.samples) out["hfp"].push_back(record(sample));
    out["gex3DActive"] = pane.gex3DActive();
    out["gex3D"] = pane.gex3D.get() ? record(*pane.gex3D.get()) : json(nullptr);
}

void addOverlays(json& out, const OverlaySet& series) {
    out["vwapMain"] = list(series.vwapMain);
    out["vwapNY"] = list(series.vwapNY);
    out["vixLine"] = list(series.vixLine);
    out["vixSpot"] = number(series.vixSpot);
    out["ema1"] = list(series.ema1);
    out["ema2"] = list(series.ema2);
    out["hfLine"] = list(series.hfLine);
    out["secondCandles"] = list(series.secondCandles);
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
    addDerived(out, pane);
    addOverlays(out, pane.overlays());
    out["config"] = json::parse(pane.config->toJson());
    out["logLines"] = json::array();
    for (const LogLine& line : pane.logLines) out["logLines"].push_back(line.text);
    return out;
}
}  // namespace

std::string stateDocument(const Clock& clock, const std::vector<const AppModel*>& panes, const SimEngine* sim) {
    json out;
    out["clock"] = clock.now();
    out["panes"] = json::array();
    for (const AppModel* pane : panes) out["panes"].push_back(paneDocument(*pane));
    if (sim) out["sim"] = record(*sim);
    return out.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
}

}  // namespace vmr
