// Which chart a pane shows: opening one, and what leads to it.
#include <algorithm>
#include <utility>

#include "market/Roots.h"
#include "model/AppModel.h"
#include "store/ConfigIO.h"
#include "store/RecentSymbols.h"

namespace vmr {

namespace {
constexpr const char* firstChart = "futures:NQU6";
constexpr const char* firstLevels = "derived:QQQ";
constexpr double fastestRoll = 1.0 / 120;  // real seconds; no more often than the display is rebuilt

std::string trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n\v\f";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(blanks) - first + 1));
}
}  // namespace

void AppModel::openChart(std::string_view candlesArgument, std::string_view levelsArgument) {
    const std::string candles = trimmed(candlesArgument);
    const std::string derived = trimmed(levelsArgument);
    if (candles.empty()) return;
    const NoticeGate::Hold hold(gate_);
    if (channels->isOpen()) session.relay().unsubscribe(channels->subscribedChans);
    work_.openNext();
    channels =
        chartChannels({candles, derived, catalog, config->gexSource, config->vixMode, at_.hfScales, channels->hfScale});
    sim_.open(channels->simRoot, candles.substr(candles.find(':') + 1));
    bars.open();
    options.open();
    markers.open();
    oscillator.open();
    sessionLevels.open();
    overlays.open();
    hfp.open();
    surface.open();
    if (!barRollTimer_.active() && !ended_)
        barRollTimer_.every(
            1, [this] { rollForwardBarIfNeeded(); }, fastestRoll);
    session.relay().subscribe(channels->subscribedChans);
    if (presence.started())
        presence.send("heartbeat");
    else if (!ended_ && session.isSignedIn)
        presence.start();
    std::string line = "→ chart: " + candles;
    if (!derived.empty()) line += " + " + derived;
    if (!channels->srChannel.empty()) line += " + " + channels->srChannel;
    log.append(line);
    // also where the same chart was opened anew and nothing else differs
    contentChanged();
    autoApplyPreferredTemplate();
}

void AppModel::reloadChart() {
    if (channels->isOpen()) openChart(std::string(channels->chartChannel), std::string(channels->levelsChannel));
}

void AppModel::openFirstChart() {
    std::optional<std::string> wanted;
    if (restorePane_) {
        if (!restorePane_->gexSource.empty()) {
            GexConfig changed = config;
            changed.gexSource = restorePane_->gexSource;
            setConfig(changed);
        }
        wanted = restorePane_->symbol;
    } else {
        wanted = at_.preferences.get(ConfigIO::lastSymbolKey);
    }
    if (wanted && (catalog.isStock(*wanted) || isBuiltInStock(*wanted) || builtInFuture(*wanted)))
        switchSymbol(*wanted);
    else
        openChart(firstChart, firstLevels);
    restorePane_.reset();
    if (wanted && currentSymbol() != *wanted) restorePane_ = PaneState{*wanted, 0, ""};
}

// The catalog knows more than the program is built with; what was wanted at first may be in it.
void AppModel::openWantedSymbol() {
    const auto wanted = std::exchange(restorePane_, std::nullopt);
    if (wanted && (catalog.isStock(wanted->symbol) || catalog.effectiveContract(wanted->symbol)))
        switchSymbol(wanted->symbol);
}

void AppModel::switchSymbol(const std::string& sym) {
    at_.preferences.set(ConfigIO::lastSymbolKey, sym);
    if (catalog.isStock(sym) || catalog.effectiveContract(sym)) noteRecentSymbol(at_.preferences, sym);
    if (catalog.isStock(sym)) return openChart("stocks:" + sym, "derived:" + sym);
    const auto contract = catalog.effectiveContract(sym);
    if (!contract) return;
    std::optional<std::string> source;
    if (config->gexSource == "INDEX") source = catalog.indexSourceFor(sym);
    if (!source) source = catalog.defaultSourceFor(sym);
    openChart("futures:" + *contract, "derived:" + source.value_or(sym));
}

void AppModel::applyRestore(const PaneState& pane) {
    if (!channels->isOpen()) {
        restorePane_ = pane;
        if (pane.timeframe >= 1 && pane.timeframe <= INT32_MAX) bars.timeframe = static_cast<int>(pane.timeframe);
        return;
    }
    if (!pane.gexSource.empty()) {
        GexConfig changed = config;
        changed.gexSource = pane.gexSource;
        setConfig(changed);
    }
    setTimeframe(pane.timeframe);
    switchSymbol(pane.symbol);
}

void AppModel::setTimeframe(std::int64_t minutes) {
    bars.setTimeframe(minutes);
    at_.preferences.set(ConfigIO::timeframeKey, std::to_string(bars.timeframe.get()));
}

void AppModel::setExpiration(const std::string& iso) {
    const NoticeGate::Hold hold(gate_);
    if (options.setExpiration(iso)) log.append("→ exp: " + (iso.empty() ? "all" : iso));
}

void AppModel::cycleGexSource() {
    GexConfig changed = config;
    if (changed.gexSource == "INDEX")
        changed.gexSource = "BOTH";
    else
        changed.gexSource = changed.gexSource == "BOTH" ? "ETF" : "INDEX";
    setConfig(changed);
    showGexSource();
}

void AppModel::showGexSource() {
    const std::string sym = currentSymbol();
    if (!sym.empty() && !isBuiltInStock(sym)) switchSymbol(sym);
}

std::string AppModel::symbolSource() const {
    const std::string sym = currentSymbol();
    if (sym.empty() || isBuiltInStock(sym)) return sym;
    const BuiltInFuture* row = builtInFuture(sym);
    const std::string etf(row ? row->etf : std::string_view());
    const auto index = builtInIndexSource(sym);
    if (config->gexSource == "INDEX") return sym + "_" + index.value_or(etf);
    if (config->gexSource == "BOTH") return sym + "_" + etf + index.value_or("");
    return sym + "_" + etf;
}

void AppModel::rollForwardBar(double now) {
    if (!session.connected || !bars.rollForward(now, channels->isStock())) return;
    sessionLevels.rebuildIfBarChanged(bars.candles, sessionHHMM());
    bars.rebuildDisplay();
}

}  // namespace vmr
