#include "model/StateDocument.h"

#include "chart/HudText.h"
#include "model/ClockTexts.h"
#include "model/SimDesk.h"
#include "model/StateRecords.h"

namespace vmr {

namespace {
using namespace stateRecords;

void addSession(json& out, const AppModel& pane) {
    out["status"] = pane.session.status.get();
    out["connected"] = pane.session.connected.get();
    out["isSignedIn"] = pane.session.isSignedIn.get();
    out["signingIn"] = pane.session.signingIn.get();
    out["userEmail"] = pane.session.userEmail.get();
    out["authError"] = text(pane.session.authError);
    out["connLimited"] = pane.session.connLimited.get();
    out["marketClosedNotice"] = pane.notices.marketClosedNotice.get();
    out["toast"] = nullptr;
    if (const auto& toast = pane.notices.toast.get())
        out["toast"] = {{"title", toast->title}, {"detail", text(toast->detail)}};
}

void addChart(json& out, const AppModel& pane) {
    const ChartChannels& names = pane.channels.get();
    const auto viewport = pane.viewport();
    out["chartChannel"] = names.chartChannel;
    out["levelsChannel"] = names.levelsChannel;
    out["currentSymbol"] = pane.currentSymbol();
    out["sessionHHMM"] = pane.sessionHHMM();
    out["simRoot"] = names.simRoot;
    out["timeframe"] = pane.bars.timeframe.get();
    out["priceRising"] = pane.bars.priceRising.get();
    out["chartVersion"] = pane.bars.chartVersion;
    out["viewport"] = viewport ? record(*viewport) : json(nullptr);
    out["subscribedChans"] = names.subscribedChans;
    out["vixBaseChannel"] = vixBaseChannel(pane.config->vixMode);
    out["vixChannel"] = vixChannel(pane.config->vixMode);
    out["srChannel"] = names.srChannel;
    out["bubblesChannel"] = names.bubblesChannel;
    out["trianglesChannel"] = names.trianglesChannel;
    out["oscChannel"] = names.oscChannel;
    out["hfHistoryChannel"] = names.hfHistoryChannel;
    out["secondSymbol"] = names.secondSymbol;
    out["secondaryContract"] = names.secondaryContract;
    out["secondaryChannel"] = names.secondaryChannel;
    out["secondaryGexChannel"] = names.secondaryGexChannel;
    out["oscPrimaryLabel"] = names.oscPrimaryLabel;
    out["oscSingle"] = names.oscSingle;
    out["hfScale"] = number(names.hfScale);
}

void addDerived(json& out, const AppModel& pane) {
    out["symbolSource"] = pane.symbolSource();
    out["selectedExp"] = text(pane.options.selectedExp);
    out["futureExps"] = pane.options.futureExps.get();
    out["levels"] = list(pane.options.levels.get());
    out["strikes"] = list(pane.options.strikes.get());
    out["etfRatio"] = number(pane.options.etfRatio.get());
    out["secStrikes"] = list(pane.options.secStrikes.get());
    out["secEtfRatio"] = number(pane.options.secEtfRatio.get());
    out["gammaFlipStrike"] = number(pane.options.gammaFlipStrike.get());
    out["hud"] = record(pane.options.hud.get());
    out["derivedFields"] = keys(pane.options.derivedFields);
    out["secondaryGexFields"] = keys(pane.options.secondaryGexFields);
    out["bubblePts"] = list(pane.markers.bubblePts.get());
    out["trianglePts"] = list(pane.markers.trianglePts.get());
    out["hfByMin"] = pane.overlays.hfByMin.size();
    out["oscLines"] = record(pane.oscillator.oscLines.get());
    out["srSessions"] = json::array();
    for (const auto& [open, session] : pane.sessionLevels.srSessions) out["srSessions"].push_back(record(session));
    out["srLines"] = list(pane.sessionLevels.srLines.get());
    out["hfp"] = json::array();
    for (const HfpSample& sample : pane.hfp.samples) out["hfp"].push_back(record(sample));
    out["gex3DActive"] = pane.surface.gex3DActive();
    out["gex3D"] = pane.surface.gex3D.get() ? record(*pane.surface.gex3D.get()) : json(nullptr);
    out["gex3DView"] = pane.surface.view ? record(pane.surface) : json(nullptr);
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

json texts(const std::vector<OverlayFacts::Text>& list, bool colored) {
    json out = json::array();
    for (const auto& [text, box, color] : list) {
        json one = {{"text", text}, {"box", {box.x, box.y, box.width, box.height}}};
        if (colored) one["color"] = color;
        out.push_back(std::move(one));
    }
    return out;
}

json ticks(const std::vector<OverlayFacts::Tick>& list) {
    json out = json::array();
    for (const auto& [text, at] : list) out.push_back({{"text", text}, {"at", at}});
    return out;
}

// What is written on the pane's chart.
void addOverlayTexts(json& out, const AppModel& pane) {
    const ChartPort* chart = pane.camera.port();
    const auto facts = chart ? chart->overlayFacts() : std::nullopt;
    out["overlay"] = nullptr;
    if (!facts) return;
    out["overlay"] = {{"pills", texts(facts->pills, true)},
                      {"labels", texts(facts->labels, false)},
                      {"strikes", texts(facts->strikes, false)},
                      {"ticks", {{"prices", ticks(facts->prices)}, {"times", ticks(facts->times)}}},
                      {"watermark", facts->watermark},
                      {"marked", nullptr}};
    if (facts->marked) out["overlay"]["marked"] = {{"text", facts->marked->text}, {"at", facts->marked->at}};
}

json boxOf(const PointRect& box) { return box.width > 0 ? json({box.x, box.y, box.width, box.height}) : json(nullptr); }

// The account's lines on the pane's chart.
void addTrading(json& out, const AppModel& pane) {
    const ChartPort* chart = pane.camera.port();
    const auto facts = chart ? chart->tradingFacts() : std::nullopt;
    out["trading"] = nullptr;
    if (!facts) return;
    json lines = json::array();
    json dragged = nullptr;
    for (const TradingFacts::Line& line : facts->lines) {
        if (line.dragged) dragged = line.text;
        lines.push_back({{"id", line.id},
                         {"kind", line.kind},
                         {"text", line.text},
                         {"price", number(line.price)},
                         {"y", number(line.y)},
                         {"shown", line.shown},
                         {"color", line.color},
                         {"badge", boxOf(line.badge)},
                         {"close", boxOf(line.closeMark)},
                         {"tag", boxOf(line.tag)},
                         {"tagText", line.tagText}});
    }
    out["trading"] = {{"root", facts->root}, {"lines", lines}, {"drag", dragged}, {"pill", nullptr}};
    if (facts->pill)
        out["trading"]["pill"] = {{"text", facts->pill->result.text.text()},
                                  {"gain", facts->pill->result.gain},
                                  {"box", boxOf(facts->pill->box)}};
}

// What the oscillator below the chart shows; null where it is not shown.
void addOscillator(json& out, const AppModel& pane) {
    const ChartPort* chart = pane.camera.port();
    const auto facts = chart ? chart->oscFacts() : std::nullopt;
    json& shown = out["oscillator"] = nullptr;
    if (!facts) return;
    shown = {{"height", facts->height}, {"legend", facts->legend}, {"notice", facts->notice}};
    for (const auto& [name, lines] : facts->lines) shown["polylines"][name] = lines;
    shown["labels"] = json::array();
    for (const auto& [text, wanted, y] : facts->labels)
        shown["labels"].push_back({{"text", text}, {"wanted", wanted}, {"y", y}});
}

void addCatalog(json& out, const AppModel& pane) {
    out["catFutures"] = json::array();
    for (const CatalogFut& fut : pane.catalog.catFutures.get())
        out["catFutures"].push_back({{"sym", fut.sym},
                                     {"sources", fut.sources},
                                     {"defaultSource", fut.defaultSource},
                                     {"pair", text(fut.pair)},
                                     {"tick", number(fut.tick)},
                                     {"tickValue", number(fut.tickValue)},
                                     {"hfScale", number(fut.hfScale)}});
    out["catStocks"] = pane.catalog.catStocks.get();
    out["contractOverrides"] = pane.catalog.contractOverrides.get();
}

void addNotices(json& out, const Announcements& notices) {
    out["announcement"] = nullptr;
    if (const auto& alert = notices.announcement.get())
        out["announcement"] = {{"id", alert->id}, {"title", alert->title}, {"message", alert->message}};
    out["maintenance"] = text(notices.maintenance);
}

void addUpdate(json& out, const UpdateChecker& updates) {
    out["update"] = nullptr;
    if (const auto& info = updates.available.get())
        out["update"] = {
            {"version", info->version}, {"build", info->build}, {"url", info->url}, {"notes", info->notes}};
}

// Which panels are open, and where those lie that are shown.
void addPanels(json& out, const AppModel& pane) {
    const PanelsOpen& panels = pane.panels;
    out["panels"] = {{"open",
                      {{"account", panels.accountPanelOpen.get()},
                       {"config", panels.configPanelOpen.get()},
                       {"sim", panels.simPanelOpen.get()},
                       {"templates", panels.templatesPanelOpen.get()}}},
                     {"frames", panels.frames}};
    out["toolbar"] = {{"shown", panels.toolbar.shown}, {"folded", panels.toolbar.folded}};
}

void addTemplates(json& out, const AppModel& pane) {
    const ChartTemplates& templates = pane.templates;
    json list = nullptr;
    if (const auto& known = templates.list.get()) {
        list = {{"preferred", text(known->preferred)}, {"slots", json::object()}};
        for (const auto& [key, slot] : known->savedSlots) list["slots"][key] = text(slot.savedAt);
    }
    out["templates"] = {{"list", std::move(list)},
                        {"loading", templates.loading.get()},
                        {"busy", templates.busy.get()},
                        {"status", text(templates.status)},
                        {"failed", templates.failed.get()},
                        {"preferredApplied", templates.preferredApplied()},
                        {"viewChanges", pane.camera.viewChanges()}};
}

// Only while the panel is open.
void addSettingsPanel(json& out, const SettingsShown& shown) {
    json columns = json::array();
    for (const auto& sections : shown.columns) {
        json column = json::array();
        for (const auto& section : sections) column.push_back({{"title", section.title}, {"rows", section.rows}});
        columns.push_back(std::move(column));
    }
    out["settingsPanel"] = {{"search", shown.search}, {"columns", columns}, {"invalid", shown.invalid}};
}

// What is said over the chart; null is not shown.
void addClockTexts(json& out, const AppModel& pane) {
    const ClockTexts clocks = clockTexts(pane);
    const auto told = [](const AxisScale::Label& label) { return label.size > 0 ? json(label.text()) : json(nullptr); };
    out["hud"] = hudText(pane.chartContent(), pane.camera.pointer).text();
    out["countdown"] = told(clocks.countdown);
    out["clock"] = told(clocks.clock);
    out["practice"] = told(clocks.practice);
}

json paneDocument(const AppModel& pane) {
    json out;
    addSession(out, pane);
    addPanels(out, pane);
    addTemplates(out, pane);
    if (pane.panels.settings) addSettingsPanel(out, *pane.panels.settings);
    if (pane.desk) out["simPanel"] = record(*pane.desk);
    addChart(out, pane);
    addCatalog(out, pane);
    out["candles"] = bars(pane.bars.candles);
    out["displayCandles"] = bars(pane.bars.displayCandles);
    out["secondaryCandles"] = bars(pane.bars.secondaryCandles);
    out["vixCandles"] = bars(pane.bars.vixCandles);
    addDerived(out, pane);
    addOverlays(out, pane.overlays.series());
    addOverlayTexts(out, pane);
    addTrading(out, pane);
    addClockTexts(out["overlay"], pane);
    addOscillator(out, pane);
    out["hfPressure"] = pressure(pane);
    out["feedRepairs"] = json::object();
    for (const auto& [channel, count] : pane.feedRepairs.byChannel()) out["feedRepairs"][channel] = count.elements;
    out["config"] = json::parse(pane.config->toJson());
    out["logLines"] = json::array();
    for (const LogLine& line : pane.log.logLines) out["logLines"].push_back(line.text);
    return out;
}
json windowDocument(const WindowFacts& window) {
    return {{"number", window.number},
            {"frame", window.frame ? json(*window.frame) : json(nullptr)},
            {"split", window.split},
            {"panes", window.panes},
            {"dual", window.dual},
            {"sync", window.sync},
            {"panels", window.panels},
            {"sheet", window.sheet},
            {"sheetNames", window.sheetNames}};
}

}  // namespace

std::string stateDocument(const StateSources& sources) {
    json out;
    out["clock"] = sources.clock.now();
    out["panes"] = json::array();
    for (const AppModel* pane : sources.panes) out["panes"].push_back(paneDocument(*pane));
    if (sources.sim) out["sim"] = record(*sources.sim);
    if (sources.notices) addNotices(out, *sources.notices);
    if (sources.updates) addUpdate(out, *sources.updates);
    if (sources.windows) {
        out["windows"] = json::array();
        for (const WindowFacts& window : *sources.windows) out["windows"].push_back(windowDocument(window));
    }
    if (sources.hotkeys) out["hotkeys"] = *sources.hotkeys;
    return out.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
}

}  // namespace vmr
