#include "model/Catalog.h"

#include <algorithm>

#include "base/Log.h"
#include "market/Coerce.h"
#include "market/Roots.h"
#include "model/HfScales.h"

namespace vmr {

namespace {
std::optional<CatalogFut> readFuture(JsonView entry) {
    if (!entry["sym"].isString()) return std::nullopt;
    CatalogFut fut;
    // the names stand in menus, and whoever runs the server can put anything there
    fut.sym = harmlessText(entry["sym"].string());
    for (const JsonView source : entry["sources"].items())
        if (source.isString()) fut.sources.push_back(harmlessText(source.string()));
    if (const JsonView source = entry["defaultSource"]; source.isString())
        fut.defaultSource = harmlessText(source.string());
    else
        fut.defaultSource = fut.sources.empty() ? fut.sym : fut.sources.front();
    if (const JsonView pair = entry["pair"]; pair.isString()) fut.pair = harmlessText(pair.string());
    fut.tick = coerce::dbl(entry["tick"]).value_or(fut.tick);
    fut.tickValue = coerce::dbl(entry["tickValue"]).value_or(fut.tickValue);
    fut.hfScale = coerce::dbl(entry["hfScale"]).value_or(fut.hfScale);
    return fut;
}

const CatalogFut* find(const std::vector<CatalogFut>& futures, const std::string& sym) {
    const auto found = std::find_if(futures.begin(), futures.end(), [&](const CatalogFut& f) { return f.sym == sym; });
    return found == futures.end() ? nullptr : &*found;
}
}  // namespace

std::vector<std::pair<std::string, std::string>> Catalog::futuresList() const {
    std::vector<std::pair<std::string, std::string>> list;
    if (catFutures->empty())
        for (const auto& row : builtInInstruments) list.emplace_back(row.sym, row.etf);
    for (const auto& fut : catFutures.get()) list.emplace_back(fut.sym, fut.defaultSource);
    return list;
}

std::vector<std::string> Catalog::stockList() const {
    if (!catStocks->empty()) return catStocks;
    return {builtInStocks.begin(), builtInStocks.end()};
}

bool Catalog::isStock(const std::string& sym) const {
    if (catStocks->empty()) return isBuiltInStock(sym);
    return std::find(catStocks->begin(), catStocks->end(), sym) != catStocks->end();
}

std::optional<std::string> Catalog::pairFor(const std::string& root) const {
    if (const CatalogFut* fut = find(catFutures, root)) return fut->pair;
    if (const auto pair = pairedInstrument(root)) return pair->sym;
    return std::nullopt;
}

std::optional<std::string> Catalog::effectiveContract(const std::string& sym) const {
    if (const auto set = contractOverrides->find(sym); set != contractOverrides->end()) return set->second;
    if (const BuiltInFuture* row = builtInFuture(sym)) return std::string(row->contract);
    if (find(catFutures, sym)) return sym;
    return std::nullopt;
}

std::optional<std::string> Catalog::indexSourceFor(const std::string& sym) const {
    if (const CatalogFut* fut = find(catFutures, sym); fut && fut->sources.size() >= 2) return fut->sources[1];
    return builtInIndexSource(sym);
}

std::optional<std::string> Catalog::defaultSourceFor(const std::string& sym) const {
    if (const CatalogFut* fut = find(catFutures, sym)) return fut->defaultSource;
    if (const BuiltInFuture* row = builtInFuture(sym)) return std::string(row->etf);
    return std::nullopt;
}

bool Catalog::applyCatalog(JsonView catalog, HfScales& scales) {
    std::vector<CatalogFut> futures;
    for (const JsonView entry : catalog["futures"].items())
        if (auto fut = readFuture(entry)) futures.push_back(std::move(*fut));
    std::vector<std::string> stocks;
    for (const auto& fut : futures) scales.set(fut.sym, fut.hfScale);
    for (const JsonView entry : catalog["stocks"].items()) {
        const std::string_view sym = entry["sym"].string();
        if (sym.empty()) continue;
        stocks.push_back(harmlessText(sym));
        if (const auto scale = coerce::dbl(entry["hfScale"])) scales.set(std::string(sym), *scale);
    }
    if (!stocks.empty()) catStocks = std::move(stocks);
    if (futures.empty()) return false;
    catFutures = std::move(futures);
    return true;
}

std::optional<std::string> Catalog::applyContracts(JsonView map, const std::string& shown) {
    std::map<std::string, std::string> changed;
    for (const auto& [root, contract] : map.members()) changed.emplace(root, contract.string());
    const auto contractIn = [&shown](const auto& contracts) {
        const auto found = contracts.find(shown);
        return found == contracts.end() ? std::nullopt : std::optional<std::string>(found->second);
    };
    const auto before = contractIn(contractOverrides.get());
    const auto now = contractIn(changed);
    contractOverrides = std::move(changed);
    return now == before ? std::nullopt : now;
}

}  // namespace vmr
