#include "workspace/SymbolList.h"

#include <algorithm>

#include "model/AppModel.h"
#include "workspace/ShellWindows.h"

namespace vmr {

namespace {
// What the panes on the screen show and its paired instrument; the pane that asks first.
std::vector<const AppModel*> panesOf(const ActionContext& at) {
    std::vector<const AppModel*> out{at.pane};
    if (!at.windows) return out;
    for (const WindowPanes* window : at.windows->all())
        for (const AppModel* pane :
             {static_cast<const AppModel*>(&window->primary()), static_cast<const AppModel*>(window->dual())})
            if (pane && pane != at.pane) out.push_back(pane);
    return out;
}

std::optional<double> lastOf(const std::string& sym, const std::vector<const AppModel*>& panes) {
    for (const AppModel* pane : panes) {
        if (pane->currentSymbol() == sym && !pane->bars.candles.empty()) return pane->bars.candles.back().close;
        if (pane->channels->secondSymbol == sym && !pane->bars.secondaryCandles.empty())
            return pane->bars.secondaryCandles.back().close;
    }
    return std::nullopt;
}
}  // namespace

std::vector<SymbolRow> symbolRows(const ActionContext& at, const std::vector<std::string>& recent) {
    std::vector<SymbolRow> out;
    if (!at.pane) return out;
    const auto panes = panesOf(at);
    const auto add = [&](SymbolGroup group, const std::string& sym) {
        const Catalog& catalog = at.pane->catalog;
        const bool stock = catalog.isStock(sym);
        const auto contract = stock ? std::optional<std::string>("") : catalog.effectiveContract(sym);
        if (contract) out.push_back({group, sym, *contract, lastOf(sym, panes)});
    };
    for (const std::string& sym : recent) add(SymbolGroup::recent, sym);
    for (const auto& future : at.pane->catalog.futuresList()) add(SymbolGroup::futures, future.first);
    for (const std::string& stock : at.pane->catalog.stockList()) add(SymbolGroup::stocks, stock);
    return out;
}

}  // namespace vmr
